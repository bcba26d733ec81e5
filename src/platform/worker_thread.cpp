#include "platform/worker_thread.h"

#include <algorithm>
#include <limits>
#include <system_error>
#include <utility>

namespace orvalo::platform {
namespace {

// The tick `milliseconds` from now; a time too far to count never comes.
std::int64_t TickAfter(const Clock& clock, std::int64_t milliseconds) {
  const std::int64_t now = clock.Tick();
  const std::int64_t longest = std::numeric_limits<std::int64_t>::max() - now;
  return now + std::clamp<std::int64_t>(milliseconds, 0, longest);
}

}  // namespace

WorkerThread::~WorkerThread() {
  Signal();
  if (thread_.joinable()) thread_.join();
}

bool WorkerThread::Start(std::function<void()> body) {
  std::lock_guard guard(mutex_);
  if (running_) return false;
  if (thread_.joinable()) thread_.join();  // it has given up the lock for good
  running_ = true;
  try {
    thread_ = std::thread([this, body = std::move(body)]() mutable {
      body();
      body = nullptr;  // what it holds goes before the end is announced
      std::lock_guard end_guard(mutex_);
      running_ = false;
      changed_.notify_all();
    });
  } catch (const std::system_error&) {
    running_ = false;
  }
  return running_;
}

bool WorkerThread::QueueCall(std::function<void()> call) {
  std::lock_guard guard(mutex_);
  if (!running_) return false;
  calls_.push_back(std::move(call));
  changed_.notify_all();
  return true;
}

void WorkerThread::Signal() {
  std::lock_guard guard(mutex_);
  signalled_ = true;
  changed_.notify_all();
}

bool WorkerThread::IsRunning() const {
  std::lock_guard guard(mutex_);
  return running_;
}

WaitResult WorkerThread::WaitAlertable(std::int64_t milliseconds) {
  const std::int64_t deadline = TickAfter(clock_, milliseconds);
  std::unique_lock lock(mutex_);
  const auto ready = [this] { return signalled_ || !calls_.empty(); };
  if (!clock_.WaitUntil(lock, changed_, deadline, ready)) return WaitResult::kTimedOut;
  if (signalled_) return WaitResult::kEvent;
  while (!calls_.empty()) {
    // One at a time, so that the calls behind one that throws stay queued.
    auto call = std::move(calls_.front());
    calls_.pop_front();
    lock.unlock();
    call();
    call = nullptr;
    lock.lock();
  }
  return WaitResult::kCallsRan;
}

bool WorkerThread::WaitForEnd(std::int64_t milliseconds) {
  const std::int64_t deadline = TickAfter(clock_, milliseconds);
  std::unique_lock lock(mutex_);
  if (!clock_.WaitUntil(lock, changed_, deadline, [this] { return !running_; })) return false;
  std::thread ended = std::move(thread_);
  lock.unlock();
  if (ended.joinable()) ended.join();
  return true;
}

}  // namespace orvalo::platform
