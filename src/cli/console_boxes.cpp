#include "cli/console_boxes.h"

#include "cli/error_output.h"

namespace orvalo::cli {

ConsoleBoxes::~ConsoleBoxes() { PrintCount(); }

platform::BoxAnswer ConsoleBoxes::Show(const std::string& text, const std::string& caption,
                                       platform::BoxIcon, platform::BoxButtons) {
  Print(caption + ": " + text);
  return platform::BoxAnswer::kAccepted;
}

platform::BoxAnswer ConsoleBoxes::ShowLink(const std::string& text, const std::string& caption,
                                           const std::string& url) {
  Print(caption + ": " + text + " " + url);
  return platform::BoxAnswer::kAccepted;
}

void ConsoleBoxes::Print(const std::string& line) {
  const std::lock_guard lock(mutex_);
  if (times_ > 0 && line == last_) {
    ++times_;
    return;
  }
  PrintCount();
  last_ = line;
  times_ = 1;
  errors_.Problem(line);
}

void ConsoleBoxes::PrintCount() {
  if (times_ > 1) errors_.Problem("(" + std::to_string(times_) + " times)");
}

}  // namespace orvalo::cli
