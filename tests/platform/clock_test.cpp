#include "platform/clock.h"

#include <gtest/gtest.h>

#include <condition_variable>
#include <limits>
#include <mutex>
#include <thread>
#include <tuple>

#include "support/scoped_variable.h"

namespace orvalo::platform {
namespace {

constexpr std::int64_t kLatest = std::numeric_limits<std::int64_t>::max();

TEST(SystemClockTest, TellsLocalTimeInTheZoneOfTheMoment) {
  using Parts = std::tuple<int, int, int, int, int, int, int>;
  const struct {
    const char* zone;
    std::int64_t seconds;
    Parts parts;
  } cases[] = {
      {"UTC0", 0, {1970, 1, 1, 0, 0, 0, 4}},
      {"UTC0", 951'782'399, {2000, 2, 28, 23, 59, 59, 1}},
      {"UTC0", 4'107'542'400, {2100, 3, 1, 0, 0, 0, 1}},
      {"UTC0", -1, {1969, 12, 31, 23, 59, 59, 3}},
      {"XST-5:30", 0, {1970, 1, 1, 5, 30, 0, 4}},
      // Summer time from the last Sunday of March, 01:00 UTC.
      {"CET-1CEST,M3.5.0,M10.5.0/3", 1'711'846'799, {2024, 3, 31, 1, 59, 59, 0}},
      {"CET-1CEST,M3.5.0,M10.5.0/3", 1'711'846'800, {2024, 3, 31, 3, 0, 0, 0}},
      {"UTC0", kLatest, {1970, 1, 1, 0, 0, 0, 4}},  // beyond the calendar
  };
  for (const auto& [zone, seconds, parts] : cases) {
    const test::ScopedVariable variable("TZ", zone);
    const auto local = SystemClock().ToLocal(seconds);
    EXPECT_EQ(Parts(local.year, local.month, local.day, local.hour, local.minute, local.second,
                    local.weekday),
              parts)
        << zone << " " << seconds;
  }
}

TEST(SystemClockTest, FindsTheMomentOfALocalTime) {
  constexpr const char* kCentralEurope = "CET-1CEST,M3.5.0,M10.5.0/3";
  const struct {
    const char* zone;
    LocalTime local;
    std::int64_t seconds;
  } cases[] = {
      {"UTC0", {2000, 2, 28, 23, 59, 59}, 951'782'399},
      {"UTC0", {1969, 12, 31, 23, 59, 59}, -1},
      {"XST-5:30", {1970, 1, 1, 5, 30, 0}, 0},
      {"UTC0", {2100, 2, 29, 0, 0, 0}, 4'107'542'400},    // the first of March
      {"UTC0", {1999, 14, 28, 23, 59, 59}, 951'782'399},  // month 14 of 1999
      {"UTC0", {2000, 3, -1, 23, 59, 59}, 951'782'399},   // two days before the first
      {"UTC0", {2001, -10, 28, 23, 60, -1}, 951'782'399},
      {kCentralEurope, {2024, 1, 1, 1, 0, 0}, 1'704'067'200},
      {kCentralEurope, {2024, 7, 1, 2, 0, 0}, 1'719'792'000},
      {kCentralEurope, {2024, 3, 31, 1, 59, 59}, 1'711'846'799},
      {kCentralEurope, {2024, 3, 31, 2, 30, 0}, 1'711'848'600},  // skipped: 03:30
      {kCentralEurope, {2024, 3, 31, 3, 0, 0}, 1'711'846'800},
      {kCentralEurope, {2024, 10, 27, 1, 59, 59}, 1'729'987'199},
      {kCentralEurope, {2024, 10, 27, 2, 30, 0}, 1'729'989'000},  // comes twice: the first
      {kCentralEurope, {2024, 10, 27, 3, 0, 0}, 1'729'994'400},
      {"EST5EDT,M3.2.0,M11.1.0", {2024, 11, 3, 1, 30, 0}, 1'730'611'800},
  };
  for (const auto& [zone, local, seconds] : cases) {
    const test::ScopedVariable variable("TZ", zone);
    EXPECT_EQ(SystemClock().FromLocal(local), seconds) << zone << " " << local.month;
  }
}

TEST(SystemClockTest, WaitsForTheConditionOrTheDeadline) {
  Clock& clock = SystemClock();
  std::mutex mutex;
  std::condition_variable condition;
  bool ready = false;
  const auto is_ready = [&ready] { return ready; };
  std::unique_lock lock(mutex);
  for (const std::int64_t past : {std::numeric_limits<std::int64_t>::min(), clock.Tick()}) {
    EXPECT_FALSE(clock.WaitUntil(lock, condition, past, is_ready));
    EXPECT_TRUE(lock.owns_lock());
  }
  const std::int64_t soon = clock.Tick() + 2;
  EXPECT_FALSE(clock.WaitUntil(lock, condition, soon, is_ready));
  EXPECT_GE(clock.Tick(), soon) << "never early";

  std::thread other([&] {
    std::lock_guard guard(mutex);
    ready = true;
    condition.notify_all();
  });
  EXPECT_TRUE(clock.WaitUntil(lock, condition, kLatest, is_ready));
  lock.unlock();
  other.join();
  lock.lock();
  EXPECT_TRUE(clock.WaitUntil(lock, condition, 0, is_ready)) << "ready wins over a past deadline";
}

}  // namespace
}  // namespace orvalo::platform
