#pragma once
#include <iosfwd>
#include <mutex>
#include <string>
#include <string_view>

namespace orvalo::cli {

// The error output: whole lines, and on a terminal one progress line that the next line or progress
// replaces. Any thread.
class ErrorOutput {
 public:
  ErrorOutput(std::ostream& stream, bool terminal) : stream_(stream), terminal_(terminal) {}
  ~ErrorOutput();  // takes the progress line away
  ErrorOutput(const ErrorOutput&) = delete;
  ErrorOutput& operator=(const ErrorOutput&) = delete;

  void Line(std::string_view text);  // control characters are shown as blanks
  // Nothing unless on a terminal. An empty text takes the progress line away, as is due before
  // results are printed.
  void Progress(std::string_view text);

 private:
  void TakeProgressAway();

  std::mutex mutex_;
  std::ostream& stream_;
  const bool terminal_;
  bool in_progress_ = false;
};

}  // namespace orvalo::cli
