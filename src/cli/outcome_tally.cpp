#include "cli/outcome_tally.h"

#include "cli/command.h"
#include "cli/error_output.h"

namespace orvalo::cli {

std::string Counted(std::size_t count, const std::string& one, const std::string& several) {
  const std::string& word = count == 1 ? one : several;
  return std::to_string(count) + " " + (word.empty() ? one + "s" : word);
}

void OutcomeTally::Add(const MessageRow& row) {
  switch (static_cast<SmsStatus>(row.stat)) {
    case SmsStatus::kExpanded:
      return;
    case SmsStatus::kFailed:
      ++refused_;
      return;
    case SmsStatus::kErrorWithMessage:
    case SmsStatus::kCancelled:
    case SmsStatus::kDeliveryError:
    case SmsStatus::kRoutingError:
    case SmsStatus::kMessageExpired:
      ++undelivered_;
      return;
    case SmsStatus::kPending:
    case SmsStatus::kProcessing:
    case SmsStatus::kEditing:
    case SmsStatus::kScheduled:
    case SmsStatus::kDelayScheduled:
      ++waiting_;
      return;
    case SmsStatus::kDelivered:
      ++arrived_;
      return;
    case SmsStatus::kSent:
      ++(row.query_time > 0 ? open_ : arrived_);
      return;
    default:
      ++open_;
  }
}

ExitCode OutcomeTally::Status() const {
  if (refused_ > 0) {
    const bool all = arrived_ + undelivered_ + open_ + waiting_ == 0;
    return all ? ExitCode::kRefused : ExitCode::kSomeRefused;
  }
  if (undelivered_ > 0) return ExitCode::kNotDelivered;
  if (open_ > 0) return ExitCode::kNoFinalStatus;
  return waiting_ > 0 ? ExitCode::kQueued : ExitCode::kDone;
}

std::string OutcomeTally::Line(ExitCode code) const {
  const auto line = [](const char* what, std::size_t count) {
    return count == 0 ? std::string() : what + Counted(count, "message");
  };
  switch (code) {
    case ExitCode::kRefused:
    case ExitCode::kSomeRefused:
      return line("Not accepted by the gateway: ", refused_);
    case ExitCode::kNotDelivered:
      return line("Accepted, but not delivered: ", undelivered_);
    case ExitCode::kNoFinalStatus:
      return line("No final status yet: ", open_);
    case ExitCode::kQueued:
      return line("Queued, but not sent: ", waiting_);
    default:
      return {};
  }
}

void OutcomeTally::SayAllBut(ExitCode code, ErrorOutput& errors) const {
  for (const ExitCode other : {ExitCode::kSomeRefused, ExitCode::kNotDelivered,
                               ExitCode::kNoFinalStatus, ExitCode::kQueued}) {
    const std::string text = Line(other);
    if (!text.empty() && text != Line(code)) errors.Line(text);
  }
}

void OutcomeTally::End(ErrorOutput& errors) const {
  const ExitCode code = Status();
  if (code == ExitCode::kDone) return;
  SayAllBut(code, errors);
  throw CommandError(code, Line(code));
}

}  // namespace orvalo::cli
