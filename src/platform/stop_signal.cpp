#include "platform/stop_signal.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
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

constexpr std::array kWatchedSignals{SIGINT, SIGTERM};
constexpr char kWatchEnds = 0;  // in place of a signal's number

// Where the handler writes: a handler can be given nothing else. -1 while nobody watches.
std::atomic<int> stop_wish_pipe{-1};
static_assert(std::atomic<int>::is_always_lock_free);

void OnStopWish(int number) {
  const int saved_errno = errno;
  const int pipe = stop_wish_pipe;
  const char byte = static_cast<char>(number);
  if (pipe >= 0 && write(pipe, &byte, 1) < 0) {
    // A full pipe already holds a wish.
  }
  errno = saved_errno;
}

void EndPipe(const std::array<int, 2>& pipe) {
  for (const int end : pipe) close(end);
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
  std::array<int, 2> pipe{-1, -1};
  std::array<struct sigaction, kWatchedSignals.size()> before{};
  std::thread thread;

  void Run() {
    bool told = false;
    for (char byte = 0;;) {
      const auto got = read(pipe[0], &byte, 1);
      if (got < 0 && errno == EINTR) continue;
      if (got != 1 || byte == kWatchEnds) return;
      if (std::exchange(told, true)) EndProcess(byte);
      on_stop();
    }
  }

  static void EndProcess(int number) {
    std::signal(number, SIG_DFL);
    kill(getpid(), number);
  }
};

StopWatcher::StopWatcher(std::function<void()> on_stop) {
  auto watch = std::make_unique<Watch>();
  watch->on_stop = std::move(on_stop);
  if (pipe2(watch->pipe.data(), O_CLOEXEC) != 0) return;
  // The signals go to the other threads: a handler that interrupts the wait for what it writes
  // itself may be held back until that wait is over.
  const auto signals = StopSignals();
  sigset_t before{};
  pthread_sigmask(SIG_BLOCK, &signals, &before);
  try {
    watch->thread = std::thread([running = watch.get()] { running->Run(); });
  } catch (const std::system_error&) {
    EndPipe(watch->pipe);
  }
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
  if (!watch->thread.joinable()) return;
  stop_wish_pipe = watch->pipe[1];
  struct sigaction action {};
  action.sa_handler = OnStopWish;
  action.sa_flags = SA_RESTART;
  for (std::size_t i = 0; i < kWatchedSignals.size(); ++i) {
    sigaction(kWatchedSignals[i], &action, &watch->before[i]);
  }
  watch_ = std::move(watch);
}

StopWatcher::~StopWatcher() {
  if (watch_ == nullptr) return;
  for (std::size_t i = 0; i < kWatchedSignals.size(); ++i) {
    sigaction(kWatchedSignals[i], &watch_->before[i], nullptr);
  }
  stop_wish_pipe = -1;
  while (write(watch_->pipe[1], &kWatchEnds, 1) < 0 && errno == EINTR) {
  }
  watch_->thread.join();
  EndPipe(watch_->pipe);
}

}  // namespace orvalo::platform
