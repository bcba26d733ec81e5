#include "support/fake_clock.h"

#include <chrono>
#include <ctime>

namespace orvalo::test {

std::int64_t FakeClock::Now() const {
  std::lock_guard guard(mutex_);
  return (now_ms_ + wall_ms_) / 1000;
}

std::int64_t FakeClock::Tick() const {
  std::lock_guard guard(mutex_);
  return now_ms_;
}

platform::LocalTime FakeClock::ToLocal(std::int64_t seconds) const {
  const std::time_t time = seconds;
  std::tm parts{};
  gmtime_r(&time, &parts);
  return {parts.tm_year + 1900, parts.tm_mon + 1, parts.tm_mday, parts.tm_hour,
          parts.tm_min,         parts.tm_sec,     parts.tm_wday};
}

void FakeClock::Sleep(std::int64_t) {}

bool FakeClock::WaitUntil(std::unique_lock<std::mutex>& lock, std::condition_variable& condition,
                          std::int64_t tick, const std::function<bool()>& ready) {
  std::multiset<std::condition_variable*>::iterator place;
  {
    std::lock_guard guard(mutex_);
    place = waiting_.insert(&condition);
  }
  waiters_changed_.notify_all();
  // A short real time-out covers an Advance that falls between the check and the wait.
  while (!ready() && Tick() < tick) condition.wait_for(lock, std::chrono::milliseconds(5));
  std::lock_guard guard(mutex_);
  waiting_.erase(place);
  return ready();
}

void FakeClock::Advance(std::int64_t milliseconds) {
  std::lock_guard guard(mutex_);
  now_ms_ += milliseconds;
  for (auto* condition : waiting_) condition->notify_all();
}

void FakeClock::SetWallClock(std::int64_t now) {
  std::lock_guard guard(mutex_);
  wall_ms_ = now * 1000 - now_ms_;
}

bool FakeClock::AwaitWaiters(int count) {
  std::unique_lock lock(mutex_);
  return waiters_changed_.wait_for(lock, std::chrono::seconds(10),
                                   [&] { return static_cast<int>(waiting_.size()) >= count; });
}

}  // namespace orvalo::test
