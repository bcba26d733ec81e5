#pragma once
#include <functional>
#include <memory>

namespace orvalo::platform {

// The wish of the system or of a person at the terminal that a program without windows should end
// (SIGTERM, SIGINT). One object for the process, made on the main thread before any other thread
// starts: from then on the signals no longer kill, they end Wait.
class StopSignal {
 public:
  StopSignal();
  void Wait();  // until the signal comes; main thread
};

// The same wish for a program whose main thread has work of its own. While the object lives, the
// first one calls `on_stop` on a thread of its own, at most once, and the program goes on; a second
// one ends the process at once, as it would without the object.
//
// One object at a time, made and destroyed on the main thread, in a program without a StopSignal;
// threads that run already must not take these signals.
// When the system refuses what it needs, the object does nothing and a wish ends the process as
// usual.
class StopWatcher {
 public:
  explicit StopWatcher(std::function<void()> on_stop);
  ~StopWatcher();  // when it returns, `on_stop` is not running and will not be called
  StopWatcher(const StopWatcher&) = delete;
  StopWatcher& operator=(const StopWatcher&) = delete;

 private:
  struct Watch;
  std::unique_ptr<Watch> watch_;
};

}  // namespace orvalo::platform
