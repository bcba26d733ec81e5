#pragma once
#include <iosfwd>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "cli/exit_code.h"

namespace orvalo::cli {

// The error output: whole lines, and on a terminal one progress line that the next line or progress
// replaces. With JSON it holds at most one object, printed at the end: "code", "status", "message",
// and in "notes" what would have been lines. Any thread.
class ErrorOutput {
 public:
  struct Style {
    bool terminal = false;  // progress is shown
    bool quiet = false;     // no progress, and no lines but those of problems
    bool json = false;
  };
  ErrorOutput(std::ostream& stream, Style style) : stream_(stream), style_(style) {}
  ~ErrorOutput();  // takes the progress line away
  ErrorOutput(const ErrorOutput&) = delete;
  ErrorOutput& operator=(const ErrorOutput&) = delete;

  void Line(std::string_view text);     // control characters are shown as blanks
  void Problem(std::string_view text);  // a line also when quiet
  // Nothing unless on a terminal. An empty text takes the progress line away, as is due before
  // results are printed.
  void Progress(std::string_view text);

  // The last of a run: how it ended, and why. Without a reason the problems said before tell it.
  void End(ExitCode code, std::string_view reason);

 private:
  void Print(std::string_view text);
  void TakeProgressAway();
  void EndAsJson(ExitCode code, std::string_view reason);

  std::mutex mutex_;
  std::ostream& stream_;
  const Style style_;
  bool in_progress_ = false;
  std::vector<std::string> notes_;  // of JSON
};

}  // namespace orvalo::cli
