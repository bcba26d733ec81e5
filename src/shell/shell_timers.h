#pragma once
#include <cstdint>

namespace orvalo {

// The timers of the main window.
enum class ShellTimer { kBalance = 1, kBalanceBlink, kBusyBlink, kOfflineBlink };

// Whoever keeps the timers: the window. Main thread. A running timer calls MainShell::OnTimer again
// and again until it is stopped; starting it anew begins its period anew.
class ShellTimers {
 public:
  virtual ~ShellTimers() = default;
  virtual void StartTimer(ShellTimer timer, std::int64_t milliseconds) = 0;
  virtual void StopTimer(ShellTimer timer) = 0;
};

}  // namespace orvalo
