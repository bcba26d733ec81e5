#pragma once
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>

#include "platform/clock.h"

namespace orvalo::service {

// Keeps guesses at passwords from taking the processor away from those who are served. The tries of
// strangers come one at a time, and after wrong ones the next waits until they took a quarter of
// the time at most, but for a quarter of a second's work. Any thread.
class HashingPace {
 public:
  explicit HashingPace(platform::Clock& clock) : clock_(clock) {}

  // Runs `work` in its turn; it says whether the secret was right. False, and it did not run: so
  // many wait already that nobody else should.
  bool Run(const std::function<bool()>& work);

 private:
  void Pay(std::int64_t began, bool was_right);

  platform::Clock& clock_;
  std::mutex mutex_;
  std::condition_variable changed_;
  bool busy_ = false;
  int waiting_ = 0;
  std::int64_t paid_ = 0;  // the tick at which what was done has taken its share and no more
};

}  // namespace orvalo::service
