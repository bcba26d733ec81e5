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

constexpr std::int64_t kDay = 86'400;

// Seconds since 1970 of a calendar time in a zone without an offset; parts may exceed their range.
std::int64_t AsUtc(const LocalTime& time) {
  const int months = time.month - 1;
  const int year = time.year + months / 12 - (months % 12 < 0 ? 1 : 0);
  const auto month = static_cast<unsigned>((months % 12 + 12) % 12 + 1);
  const std::chrono::sys_days first =
      std::chrono::year(year) / std::chrono::month(month) / std::chrono::day(1);
  const std::int64_t days = first.time_since_epoch().count() + std::int64_t{time.day} - 1;
  return ((days * 24 + time.hour) * 60 + time.minute) * 60 + time.second;
}

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

// A change of the zone's offset that matters lies within a day of the time asked for, so the
// offsets of the day before and the day after are the only candidates.
std::int64_t Clock::FromLocal(const LocalTime& local) const {
  const std::int64_t wanted = AsUtc(local);
  const auto with_offset_of = [&](std::int64_t moment) {
    return wanted - (AsUtc(ToLocal(moment)) - moment);
  };
  const std::int64_t before = with_offset_of(wanted - kDay);
  if (AsUtc(ToLocal(before)) == wanted) return before;
  const std::int64_t after = with_offset_of(wanted + kDay);
  return AsUtc(ToLocal(after)) == wanted ? after : before;
}

Clock& SystemClock() {
  static Clock& clock = *new MachineClock;
  return clock;
}

}  // namespace orvalo::platform
