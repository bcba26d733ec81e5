#include "support/fake_clock.h"

#include <algorithm>
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
  std::list<Waiter>::iterator place;
  {
    std::lock_guard guard(mutex_);
    place = waiting_.insert(waiting_.end(), {&condition});
  }
  waiters_changed_.notify_all();
  // A short real time-out covers an Advance that falls between the check and the wait.
  while (!ready() && Tick() < tick) {
    {
      std::lock_guard guard(mutex_);
      ++place->looks;
    }
    waiters_changed_.notify_all();
    condition.wait_for(lock, std::chrono::milliseconds(5));
  }
  std::lock_guard guard(mutex_);
  waiting_.erase(place);
  return ready();
}

void FakeClock::Advance(std::int64_t milliseconds) {
  std::lock_guard guard(mutex_);
  now_ms_ += milliseconds;
  for (const Waiter& waiter : waiting_) waiter.condition->notify_all();
}

void FakeClock::SetWallClock(std::int64_t now) {
  std::lock_guard guard(mutex_);
  wall_ms_ = now * 1000 - now_ms_;
}

// A look that is under way may have been taken before the last thing was handed over; the one after
// the next was not.
bool FakeClock::AwaitWaiters(int count) {
  const auto give_up = std::chrono::steady_clock::now() + std::chrono::seconds(10);
  std::unique_lock lock(mutex_);
  const auto wait_at_all = [&] { return static_cast<int>(waiting_.size()) >= count; };
  while (waiters_changed_.wait_until(lock, give_up, wait_at_all)) {
    for (Waiter& waiter : waiting_) waiter.looks = 0;
    const bool gone = waiters_changed_.wait_until(lock, give_up, [&] {
      return !wait_at_all() ||
             std::count_if(waiting_.begin(), waiting_.end(),
                           [](const Waiter& waiter) { return waiter.looks >= 2; }) >= count;
    });
    if (!gone) return false;
    if (wait_at_all()) return true;
  }
  return false;
}

}  // namespace orvalo::test
