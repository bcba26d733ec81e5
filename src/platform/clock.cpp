#include "platform/clock.h"

#include <algorithm>
#include <chrono>
#include <ctime>
#include <thread>

namespace orvalo::platform {
namespace {

// The longest single wait on a condition: far deadlines are reached in several, so that none
// overflows the clock's nanoseconds.
constexpr std::int64_t kLongestWaitMs = 3'600'000;

class MachineClock : public Clock {
 public:
  std::int64_t Now() const override {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::floor<std::chrono::seconds>(now).count();
  }

  std::int64_t Tick() const override {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::floor<std::chrono::milliseconds>(now).count();
  }

  LocalTime ToLocal(std::int64_t seconds) const override {
    const std::time_t time = seconds;
    std::tm parts{};
    tzset();  // localtime_r alone would never see that the machine's time zone has changed
    if (localtime_r(&time, &parts) == nullptr) return {};
    return {parts.tm_year + 1900, parts.tm_mon + 1, parts.tm_mday, parts.tm_hour,
            parts.tm_min,         parts.tm_sec,     parts.tm_wday};
  }

  void Sleep(std::int64_t milliseconds) override {
    const std::int64_t end = Tick() + std::max<std::int64_t>(milliseconds, 0);
    for (std::int64_t left = milliseconds; left > 0; left = end - Tick()) {
      std::this_thread::sleep_for(std::chrono::milliseconds(std::min(left, kLongestWaitMs)));
    }
  }

  bool WaitUntil(std::unique_lock<std::mutex>& lock, std::condition_variable& condition,
                 std::int64_t tick, const std::function<bool()>& ready) override {
    while (!ready()) {
      const std::int64_t now = Tick();
      if (now >= tick) return false;
      condition.wait_for(lock, std::chrono::milliseconds(std::min(tick - now, kLongestWaitMs)));
    }
    return true;
  }
};

}  // namespace

Clock& SystemClock() {
  static Clock& clock = *new MachineClock;
  return clock;
}

}  // namespace orvalo::platform
