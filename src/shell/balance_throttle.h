#pragma once
#include <cstdint>

#include "shell/shell_timers.h"

namespace orvalo::platform {
class Clock;
class Mailbox;
}  // namespace orvalo::platform

namespace orvalo {

// Turns bursts of requests for the balance into at most one query in ten seconds: the first request
// is answered ten seconds later, all that come meanwhile by one query ten seconds after that. Main
// thread.
class BalanceThrottle {
 public:
  static constexpr std::int64_t kInterval = 10'000;  // milliseconds

  // The query is asked of `compose_page` by kWmQueryBalance. What was requested meanwhile comes
  // back to `main_window` as kWmBalance.
  BalanceThrottle(const platform::Clock& clock, ShellTimers& timers, platform::Mailbox& main_window,
                  platform::Mailbox& compose_page)
      : clock_(clock), timers_(timers), main_window_(main_window), compose_page_(compose_page) {}

  void Request();
  // ShellTimer::kBalance has fired; one that comes early waits for the rest.
  void OnTimer();
  bool IsWaiting() const { return running_ || again_; }  // for a query that was asked for

 private:
  const platform::Clock& clock_;
  ShellTimers& timers_;
  platform::Mailbox& main_window_;
  platform::Mailbox& compose_page_;
  bool running_ = false;
  bool again_ = false;    // another request has come while the timer ran
  std::int64_t due_ = 0;  // tick
};

}  // namespace orvalo
