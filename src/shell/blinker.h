#pragma once
#include <cstdint>
#include <functional>
#include <utility>

#include "shell/shell_timers.h"

namespace orvalo {

// Something that blinks while it is on: an indicator, the balance lines. Main thread.
class Blinker {
 public:
  // `draw` is told whether it is on, and whether this half of the blinking shows it (always true
  // when it is off).
  Blinker(ShellTimers& timers, ShellTimer timer, std::int64_t period,
          std::function<void(bool on, bool lit)> draw)
      : timers_(timers), timer_(timer), period_(period), draw_(std::move(draw)) {}

  // Does nothing to what is on already: its rhythm goes on.
  void Start();
  void Stop();
  void OnTimer();  // the other half; a timer that was on its way when it was stopped does nothing

 private:
  ShellTimers& timers_;
  ShellTimer timer_;
  std::int64_t period_;  // milliseconds of each half
  std::function<void(bool, bool)> draw_;
  bool on_ = false;
  bool lit_ = true;
};

}  // namespace orvalo
