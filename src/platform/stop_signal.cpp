#include "platform/stop_signal.h"

#include <pthread.h>
#include <signal.h>

#include <atomic>
#include <csignal>
#include <system_error>
#include <thread>
#include <utility>

namespace orvalo::platform {
namespace {

sigset_t StopSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGTERM);
  sigaddset(&signals, SIGINT);
  return signals;
}

constexpr int kWatchEnds = SIGUSR2;  // sent to the watching thread by the object's own end

sigset_t WatchedSignals() {
  sigset_t signals = StopSignals();
  sigaddset(&signals, kWatchEnds);
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

struct StopWatcher::Watch {
  std::function<void()> on_stop;
  sigset_t before{};  // the main thread's signal mask
  std::atomic<bool> ending = false;
  std::thread thread;

  void Run() {
    const auto signals = WatchedSignals();
    bool told = false;
    for (int number = 0;;) {
      if (sigwait(&signals, &number) != 0) continue;
      if (ending) return;
      if (number == kWatchEnds) continue;
      if (std::exchange(told, true)) EndProcess(number);
      on_stop();
    }
  }

  static void EndProcess(int number) {
    std::signal(number, SIG_DFL);
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, number);
    pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
    raise(number);
  }
};

// The signals are kept from every thread that starts from here on, and waited for by one of them:
// no handler ever runs.
StopWatcher::StopWatcher(std::function<void()> on_stop) {
  auto watch = std::make_unique<Watch>();
  watch->on_stop = std::move(on_stop);
  const auto signals = WatchedSignals();
  pthread_sigmask(SIG_BLOCK, &signals, &watch->before);
  try {
    watch->thread = std::thread([running = watch.get()] { running->Run(); });
  } catch (const std::system_error&) {
    pthread_sigmask(SIG_SETMASK, &watch->before, nullptr);
    return;
  }
  watch_ = std::move(watch);
}

StopWatcher::~StopWatcher() {
  if (watch_ == nullptr) return;
  watch_->ending = true;
  pthread_kill(watch_->thread.native_handle(), kWatchEnds);
  watch_->thread.join();
  pthread_sigmask(SIG_SETMASK, &watch_->before, nullptr);
}

}  // namespace orvalo::platform
