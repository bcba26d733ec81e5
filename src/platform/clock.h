#pragma once
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>

namespace orvalo::platform {

// Local calendar time, as people read it.
struct LocalTime {
  int year = 1970;  // four digits
  int month = 1;    // 1 to 12
  int day = 1;      // 1 to 31
  int hour = 0;     // 0 to 23
  int minute = 0;
  int second = 0;
  int weekday = 4;  // 0 is Sunday
};

// Time as an input: everything that asks for the time or waits for it does so through a Clock, so
// that a test can be its master. Any thread.
class Clock {
 public:
  virtual ~Clock() = default;
  virtual std::int64_t Now() const = 0;   // seconds since 1970-01-01 UTC
  virtual std::int64_t Tick() const = 0;  // monotonic milliseconds, from an arbitrary start
  // In the machine's time zone; a time beyond the calendar is the default LocalTime.
  virtual LocalTime ToLocal(std::int64_t seconds) const = 0;
  // The inverse of ToLocal, as mktime reads a calendar time: months, days, hours, minutes and
  // seconds beyond their range carry over (day 31 of April is the first of May; day 0 the last of
  // March), the weekday is ignored. A time that the change to summer time skips is moved forward by
  // what is skipped; of a time that comes twice the first is taken. Years 1 to 9999.
  std::int64_t FromLocal(const LocalTime& local) const;
  virtual void Sleep(std::int64_t milliseconds) = 0;

  // Waits on `condition` (with `lock` held, as std::condition_variable wants it) until ready() is
  // true or Tick() has reached `tick`. Returns ready(). ready() runs with the lock held.
  virtual bool WaitUntil(std::unique_lock<std::mutex>& lock, std::condition_variable& condition,
                         std::int64_t tick, const std::function<bool()>& ready) = 0;
};

// The machine's own clock. One instance for the process; never destroyed.
Clock& SystemClock();

}  // namespace orvalo::platform
