#pragma once
#include <list>

#include "platform/clock.h"

namespace orvalo::test {

// A clock that stands still until the test moves it. Waits end when Advance has moved the clock
// past their deadline, or their condition has come true; Sleep returns at once, moving nothing.
class FakeClock : public platform::Clock {
 public:
  explicit FakeClock(std::int64_t now = 1'000'000'000) : now_ms_(now * 1000) {}

  std::int64_t Now() const override;
  std::int64_t Tick() const override;
  platform::LocalTime ToLocal(
      std::int64_t seconds) const override;  // UTC, so that results are the same everywhere
  void Sleep(std::int64_t milliseconds) override;
  bool WaitUntil(std::unique_lock<std::mutex>& lock, std::condition_variable& condition,
                 std::int64_t tick, const std::function<bool()>& ready) override;

  void Advance(std::int64_t milliseconds);
  void SetWallClock(std::int64_t now);  // as an operator does: Tick knows nothing of it
  // Blocks (in real time, at most 10 s) until `count` threads wait on this clock for what has not
  // come: whatever had been handed to them by now is done. False when they do not.
  bool AwaitWaiters(int count);

 private:
  struct Waiter {
    std::condition_variable* condition;
    int looks = 0;  // how often it has found that what it waits for has not come
  };

  mutable std::mutex mutex_;
  std::condition_variable waiters_changed_;
  std::list<Waiter> waiting_;
  std::int64_t now_ms_;
  std::int64_t wall_ms_ = 0;  // how far the wall clock is set forth
};

}  // namespace orvalo::test
