#include "cli/error_output.h"

#include <ostream>
#include <utility>

#include "cli/json_output.h"
#include "platform/terminal.h"

namespace orvalo::cli {

namespace {

constexpr std::string_view kEraseLine = "\r\033[K";
constexpr std::size_t kMostNotes = 100;  // a run may last for months

}  // namespace

ErrorOutput::~ErrorOutput() { TakeProgressAway(); }

void ErrorOutput::Line(std::string_view text) {
  if (!style_.quiet) Problem(text);
}

void ErrorOutput::Problem(std::string_view text) {
  const std::lock_guard lock(mutex_);
  Print(text);
}

void ErrorOutput::Print(std::string_view text) {
  TakeProgressAway();
  if (!style_.json) {
    stream_ << platform::PrintableLine(text) << '\n' << std::flush;
  } else if (notes_.size() < kMostNotes) {
    notes_.push_back(platform::PrintableLine(text));
  }
}

void ErrorOutput::Progress(std::string_view text) {
  if (!style_.terminal || style_.quiet || style_.json) return;
  const std::lock_guard lock(mutex_);
  TakeProgressAway();
  if (text.empty()) return;
  stream_ << platform::PrintableLine(text) << std::flush;
  in_progress_ = true;
}

void ErrorOutput::End(ExitCode code, std::string_view reason) {
  const std::lock_guard lock(mutex_);
  TakeProgressAway();
  if (style_.json) {
    if (code != ExitCode::kDone || !notes_.empty()) EndAsJson(code, reason);
  } else if (!reason.empty()) {
    Print("orvaloctl: " + std::string(reason));
  }
}

void ErrorOutput::EndAsJson(ExitCode code, std::string_view reason) {
  const ExitMeaning& end = MeaningOf(code);
  std::string message(reason);
  if (message.empty() && code != ExitCode::kDone && !notes_.empty()) {
    message = std::move(notes_.back());
    notes_.pop_back();
  }
  if (message.empty()) message = end.meaning;
  PrintJson(stream_, {{"code", end.name},
                      {"status", static_cast<int>(code)},
                      {"message", message},
                      {"notes", notes_}});
  stream_.flush();
}

void ErrorOutput::TakeProgressAway() {
  if (std::exchange(in_progress_, false)) stream_ << kEraseLine << std::flush;
}

}  // namespace orvalo::cli
