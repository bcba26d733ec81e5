#include "gateway/send_pass.h"

#include <algorithm>
#include <exception>
#include <span>
#include <utility>
#include <vector>

#include "app/log_file.h"
#include "app/settings.h"
#include "gateway/engine_notices.h"
#include "gateway/engine_requests.h"
#include "gateway/gateway_client.h"
#include "gateway/message_submissions.h"
#include "platform/clock.h"
#include "store/sms_database.h"

namespace orvalo {
namespace {

// Between tries of what nobody has answered, in milliseconds. A little less than the time between
// two wakes of the engine, so that the first of them counts.
constexpr std::int64_t kShortestPause = 55'000;
constexpr std::int64_t kLongestPause = 15 * 60'000;

}  // namespace

SendPass::SendPass(const EngineParts& parts, std::mutex& pass_lock)
    : parts_(parts),
      pass_lock_(pass_lock),
      journal_(parts.database),
      planner_(parts_, journal_),
      step_(parts_),
      batch_(parts_, step_),
      recorder_(parts_, journal_) {}

void SendPass::SendQueuedSMSs(std::int32_t id) {
  parts_.notices.ToMainWindow(kWmSending);
  const bool online = parts_.settings.Flag(FlagSetting::kWorkingOnLine);
  if (!online && !in_hand_) return;
  Guarded([&] {
    const bool recorded = RecordInHand();
    if (!online) return recorded;
    const bool any = parts_.gateway.KeepsKeys() ? WalkJournal(id) : WalkPending(id);
    return any || recorded;
  });
}

void SendPass::Finish() {
  if (in_hand_) Guarded([this] { return RecordInHand(); });
}

void SendPass::Guarded(const std::function<bool()>& work) {
  std::lock_guard guard(pass_lock_);
  try {
    if (work()) parts_.notices.TellOutbox(0);
  } catch (const std::exception& problem) {
    // What stands in the journal is taken up from there.
    if (in_hand_ && !in_hand_->complete && parts_.gateway.KeepsKeys()) in_hand_.reset();
    TellStoreRefusal(parts_, problem);
    if (parts_.log.Enabled()) {
      parts_.log.Write("CRITICAL ERROR: Catch in SendQueuedSMSs");
      parts_.log.Write("%s", problem.what());
    }
    parts_.notices.TellOutbox(0);
  }
}

bool SendPass::RecordInHand() {
  if (!in_hand_) return false;
  recorder_.Record(in_hand_->row, in_hand_->delay, in_hand_->outcome);
  in_hand_.reset();
  return true;
}

bool SendPass::WalkPending(std::int32_t id) {
  const std::vector<std::int32_t> pending = parts_.database.PendingSms(id);
  bool any = false;
  for (std::size_t position = pending.size(); position > 0 && !parts_.notices.Stopping();
       --position) {
    PlannedMessage message;
    if (!TakeRow(pending[position - 1], &message.row)) continue;
    message.entry = planner_.Fix(message.row);
    any = true;
    if (SendPlanned(message, static_cast<std::int32_t>(position)) == After::kGiveUp) break;
  }
  return any;
}

bool SendPass::WalkJournal(std::int32_t id) {
  const bool too_early = parts_.clock.Tick() < next_try_;
  if (too_early && nobody_there_) return false;
  const std::vector<std::int32_t> unfinished = UnfinishedFrom(id);
  const std::vector<std::int32_t> pending = parts_.database.PendingSms(id);
  std::span<const std::int32_t> left(pending);
  auto position = static_cast<std::int32_t>(pending.size() + unfinished.size());
  waiting_ = 0;
  nobody_there_ = false;
  bool any = false;
  After after = After::kGoOn;
  while (!left.empty() && after == After::kGoOn && !parts_.notices.Stopping()) {
    auto planned = planner_.Plan(&left);
    while (!planned.empty() && after == After::kGoOn && !parts_.notices.Stopping()) {
      PlannedMessage message = std::move(planned.front());
      planned.pop_front();
      const std::int32_t index = position--;
      // The row may have been deleted or opened for editing meanwhile, its entry with it.
      if (!journal_.Take(message.row.id, message.entry.key)) continue;
      any = true;
      after = SendPlanned(message, index);
    }
    ForgetPlanned(planned);
  }
  for (const std::int32_t next : unfinished) {
    if (too_early || after != After::kGoOn || parts_.notices.Stopping()) break;
    auto message = planner_.Resume(next);
    const std::int32_t index = position--;
    if (!message) continue;
    any = true;
    after = SendPlanned(*message, index);
  }
  if (!too_early) SetNextTry();
  return any;
}

// Newest first, but those before which the last pass gave up come first: two messages that are
// never answered do not keep the others.
std::vector<std::int32_t> SendPass::UnfinishedFrom(std::int32_t id) {
  std::vector<std::int32_t> ids = journal_.Unfinished();
  if (id != kEveryMessage) std::erase_if(ids, [id](std::int32_t other) { return other != id; });
  std::reverse(ids.begin(), ids.end());
  const auto first = std::find_if(ids.begin(), ids.end(),
                                  [this](std::int32_t other) { return other < next_unfinished_; });
  if (next_unfinished_ != 0 && first != ids.end()) std::rotate(ids.begin(), first, ids.end());
  return ids;
}

void SendPass::SetNextTry() {
  pause_ = waiting_ == 0 ? 0 : std::clamp(2 * pause_, kShortestPause, kLongestPause);
  next_try_ = parts_.clock.Tick() + pause_;
}

// Nothing of them has gone out: the next pass plans them anew. An entry that stays behind does no
// harm.
void SendPass::ForgetPlanned(const std::deque<PlannedMessage>& planned) {
  if (planned.empty()) return;
  SmsDatabase::Transaction transaction(parts_.database);
  for (const PlannedMessage& message : planned) {
    if (message.entry.answers.empty()) journal_.Close(message.row.id);
  }
  transaction.Commit();
}

// The row may have been deleted or opened for editing since the selection was made. One flush of
// the disk a message: marks of several at once would be cheaper, but a killed run would then leave
// messages as failed that it had not begun to send.
bool SendPass::TakeRow(std::int32_t id, MessageRow* row) {
  SmsDatabase::Transaction transaction(parts_.database, SmsDatabase::Transaction::Reach::kDisk);
  if (!parts_.database.ChangeStatus(id, SmsStatus::kPending, SmsStatus::kProcessing)) return false;
  auto found = parts_.database.GetSms(id);
  transaction.Commit();
  *row = std::move(*found);
  return true;
}

SendPass::After SendPass::SendPlanned(const PlannedMessage& message, std::int32_t progress_index) {
  parts_.notices.TellOutbox(message.row.id);
  const After after = SendRow(message, progress_index);
  parts_.notices.ToMainWindow(kWmBalance);
  return after;
}

// A failure on the way leaves in hand what the gateway has taken so far.
SendPass::After SendPass::SendRow(const PlannedMessage& planned, std::int32_t progress_index) {
  OutgoingMessage message = Outgoing(planned.row, progress_index);
  MessageSubmissions submissions(parts_, journal_, planned.entry, planned.taken);
  message.submissions = &submissions;
  auto& in_hand = in_hand_.emplace(InHand{planned.row, message.delay, {}});
  SendOutcome& outcome = in_hand.outcome;
  SendToAll(planned, message, &outcome);
  if (outcome.waiting) {
    submissions.KeepAnswers();
    const SendOutcome left = std::move(outcome);
    in_hand_.reset();
    return LeaveWaiting(planned, left);
  }
  in_hand.complete = true;
  const bool online = !outcome.no_session;
  if (online && outcome.recipients > 0) parts_.notices.SendingGoesOn();
  if (!online && outcome.successes.empty() && outcome.failures.empty()) {
    parts_.database.ChangeStatus(planned.row.id, SmsStatus::kProcessing, SmsStatus::kPending);
    in_hand_.reset();
  } else {
    RecordInHand();
  }
  return online ? After::kGoOn : After::kGiveUp;
}

// The journal has what was answered so far, and the keys of the rest. The row stays Processing also
// when nobody is logged in: a try before may have arrived.
SendPass::After SendPass::LeaveWaiting(const PlannedMessage& message, const SendOutcome& outcome) {
  if (!outcome.why_waiting.empty()) parts_.notices.SendingWaits(outcome.why_waiting);
  ++waiting_;
  nobody_there_ = outcome.no_session || IsUnreachable(outcome.highest_error);
  if (!nobody_there_ && waiting_ < 2) return After::kGoOn;
  if (!nobody_there_) next_unfinished_ = message.row.id;
  return After::kGiveUp;
}

OutgoingMessage SendPass::Outgoing(const MessageRow& row, std::int32_t progress_index) const {
  OutgoingMessage message;
  message.type = row.type;
  message.text = row.msg;
  message.sender_id = row.sender_id;
  message.delay = row.delay;
  if (row.delay > 0) {
    message.delay =
        static_cast<std::int32_t>(std::max<std::int64_t>(row.time - parts_.clock.Now(), 0));
  }
  message.progress_index = progress_index;
  return message;
}

void SendPass::SendToAll(const PlannedMessage& planned, const OutgoingMessage& message,
                         SendOutcome* outcome) {
  outcome->all.reserve(planned.entry.recipients.size());
  for (const JournalRecipient& recipient : planned.entry.recipients) {
    RecipientRecord& record = outcome->all.emplace_back();
    record.contact_id = recipient.contact_id;
    record.number = recipient.number;
    record.entry = recipient.entry;
  }
  outcome->recipients = static_cast<std::int32_t>(outcome->all.size());
  if (planner_.IsPlain(planned.row) && outcome->recipients >= 2) {
    batch_.Send(message, outcome);
  } else {
    SendOneByOne(planned, message, outcome);
  }
}

void SendPass::SendOneByOne(const PlannedMessage& planned, const OutgoingMessage& message,
                            SendOutcome* outcome) {
  const bool unicode = IsUnicodeType(message.type);
  const auto kind =
      planner_.IsPlain(planned.row) ? SendStep::Kind::kPlain : SendStep::Kind::kPersonalised;
  for (std::int32_t position = 0; position < outcome->recipients; ++position) {
    const auto at = static_cast<std::size_t>(position);
    const JournalRecipient& recipient = planned.entry.recipients[at];
    const std::string& text = recipient.has_own_text ? recipient.text : message.text;
    // Each anew: the component takes only what it has encoded last for an encoded text.
    const std::u16string wire = WireText::Of(text, unicode, parts_.gateway);
    step_.Send(kind, message, text, wire, outcome->all[at], position, outcome);
  }
}

}  // namespace orvalo
