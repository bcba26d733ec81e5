#include "cli/error_output.h"

#include <ostream>
#include <utility>

#include "cli/table.h"

namespace orvalo::cli {

namespace {

constexpr std::string_view kEraseLine = "\r\033[K";

}  // namespace

ErrorOutput::~ErrorOutput() { TakeProgressAway(); }

void ErrorOutput::Line(std::string_view text) {
  const std::lock_guard lock(mutex_);
  TakeProgressAway();
  stream_ << OneLine(text) << '\n' << std::flush;
}

void ErrorOutput::Progress(std::string_view text) {
  if (!terminal_) return;
  const std::lock_guard lock(mutex_);
  TakeProgressAway();
  if (text.empty()) return;
  stream_ << OneLine(text) << std::flush;
  in_progress_ = true;
}

void ErrorOutput::TakeProgressAway() {
  if (std::exchange(in_progress_, false)) stream_ << kEraseLine << std::flush;
}

}  // namespace orvalo::cli
