#include "shell/balance_throttle.h"

#include "gateway/engine_notices.h"
#include "platform/clock.h"
#include "shell/shell_messages.h"

namespace orvalo {

void BalanceThrottle::Request() {
  if (running_) {
    again_ = true;
    return;
  }
  running_ = true;
  again_ = false;
  due_ = clock_.Tick() + kInterval;
  timers_.StartTimer(ShellTimer::kBalance, kInterval);
}

void BalanceThrottle::OnTimer() {
  if (!running_) return;
  if (const std::int64_t left = due_ - clock_.Tick(); left > 0) {
    timers_.StartTimer(ShellTimer::kBalance, left);
    return;
  }
  running_ = false;
  timers_.StopTimer(ShellTimer::kBalance);
  compose_page_.Post(kWmQueryBalance, 0, 0);
  if (again_) main_window_.Post(kWmBalance, 0, 0);
}

}  // namespace orvalo
