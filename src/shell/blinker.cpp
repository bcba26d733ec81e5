#include "shell/blinker.h"

namespace orvalo {

void Blinker::Start() {
  if (on_) return;
  on_ = true;
  lit_ = true;
  draw_(on_, lit_);
  timers_.StartTimer(timer_, period_);
}

void Blinker::Stop() {
  if (!on_) return;
  on_ = false;
  lit_ = true;
  timers_.StopTimer(timer_);
  draw_(on_, lit_);
}

void Blinker::OnTimer() {
  if (!on_) return;
  lit_ = !lit_;
  draw_(on_, lit_);
}

}  // namespace orvalo
