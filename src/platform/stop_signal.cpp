#include "platform/stop_signal.h"

#include <csignal>

namespace orvalo::platform {
namespace {

sigset_t StopSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGTERM);
  sigaddset(&signals, SIGINT);
  return signals;
}

}  // namespace

StopSignal::StopSignal() {
  const auto signals = StopSignals();
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
}

void StopSignal::Wait() {
  const auto signals = StopSignals();
  int signal = 0;
  while (sigwait(&signals, &signal) != 0) {
  }
}

}  // namespace orvalo::platform
