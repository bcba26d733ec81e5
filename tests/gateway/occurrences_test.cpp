#include "gateway/occurrences.h"

#include <gtest/gtest.h>

#include <chrono>
#include <ctime>
#include <functional>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "app/data_file.h"
#include "app/settings.h"
#include "app/texts.h"
#include "gateway/schedule_dialog.h"
#include "platform/text_format.h"
#include "support/fake_clock.h"
#include "support/scoped_variable.h"
#include "support/temporary_folder.h"

namespace orvalo {
namespace {

using namespace std::chrono_literals;

constexpr std::int64_t kThursday = 1'736'418'905;  // 2025-01-09 10:35:05, a Thursday

std::string Show(const platform::Clock& clock, std::int64_t time) {
  const platform::LocalTime at = clock.ToLocal(time);
  std::string text = platform::FormatText("%1!d!-%2!02d!-%3!02d! %4!02d!:%5!02d!",
                                          {at.year, at.month, at.day, at.hour, at.minute})
                         .value();
  if (at.second != 0) text += ":" + std::to_string(at.second);
  return text;
}

std::string ShowAll(const ScheduleChoices& choices, const platform::Clock& clock) {
  std::string all;
  for (const Occurrence& occurrence : OccurrencesOf(choices, clock)) {
    all += (all.empty() ? "" : ", ") + Show(clock, occurrence.time);
  }
  return all;
}

TEST(OccurrencesTest, TakeFromNowWhatIsNotChosen) {
  const struct {
    std::int32_t month, day, hour, minute;
    const char* time;
  } cases[] = {
      {0, 0, 0, 0, "2025-01-09 10:35"},    {0, 0, 15, 0, "2025-01-09 14:35"},
      {0, 0, 10, 0, "2026-01-09 09:35"},   // an hour and five seconds past
      {0, 0, 10, 37, "2025-01-09 09:36"},  // less than an hour past
      {0, 0, 0, 1, "2025-01-09 10:00"},    {0, 8, 0, 0, "2026-01-08 10:35"},
      {12, 25, 1, 1, "2025-12-25 00:00"},  {2, 30, 0, 0, "2025-03-02 10:35"},
      {0, 31, 24, 60, "2025-01-31 23:59"},
  };
  const test::FakeClock clock(kThursday);
  for (const auto& c : cases) {
    ScheduleChoices choices;
    choices.month = c.month;
    choices.day = c.day;
    choices.hour = c.hour;
    choices.minute = c.minute;
    EXPECT_EQ(Show(clock, SendOnTime(choices, clock)), c.time);
    choices.recurrences = 5;
    EXPECT_EQ(ShowAll(choices, clock), c.time) << "once only";
  }
}

using Choose = std::function<void(ScheduleChoices&)>;

Choose Daily(std::int32_t days) {
  return [=](ScheduleChoices& c) {
    c.recurrence = Recurrence::kDaily;
    c.days = days - 1;
  };
}

Choose EveryWeekday() {
  return [](ScheduleChoices& c) {
    c.recurrence = Recurrence::kDaily;
    c.daily_every = false;
    c.every_weekday = true;
  };
}

Choose Weekly(std::int32_t weeks, const char* from_monday) {
  return [=](ScheduleChoices& c) {
    c.recurrence = Recurrence::kWeekly;
    c.weeks = weeks - 1;
    for (int day = 0; day < kWeekDays; ++day) c.weekly_on[day] = from_monday[day] == 'x';
  };
}

Choose MonthDay(std::int32_t day, std::int32_t months) {
  return [=](ScheduleChoices& c) {
    c.recurrence = Recurrence::kMonthly;
    c.month_day = day - 1;
    c.day_months = months - 1;
  };
}

Choose MonthWeekday(std::int32_t ordinal, std::int32_t from_monday, std::int32_t months) {
  return [=](ScheduleChoices& c) {
    c.recurrence = Recurrence::kMonthly;
    c.monthly_day = false;
    c.monthly_weekday = true;
    c.ordinal = ordinal - 1;
    c.weekday = from_monday;
    c.weekday_months = months - 1;
  };
}

TEST(OccurrencesTest, FollowTheRecurrence) {
  const struct {
    std::int32_t day;  // of the first time, in January 2025
    Choose choose;
    const char* times;
  } cases[] = {
      {9, Daily(1), "2025-01-09 12:00, 2025-01-10 12:00, 2025-01-11 12:00"},
      {9, Daily(14), "2025-01-09 12:00, 2025-01-23 12:00, 2025-02-06 12:00"},
      {10, EveryWeekday(), "2025-01-10 12:00, 2025-01-13 12:00, 2025-01-14 12:00"},
      {11, EveryWeekday(), "2025-01-13 12:00, 2025-01-14 12:00, 2025-01-15 12:00"},  // a Saturday
      {12, EveryWeekday(), "2025-01-13 12:00, 2025-01-14 12:00, 2025-01-15 12:00"},  // a Sunday
      {9, Weekly(1, "x..x..."), "2025-01-09 12:00, 2025-01-13 12:00, 2025-01-16 12:00"},
      {10, Weekly(3, "x......"), "2025-01-13 12:00, 2025-02-03 12:00, 2025-02-24 12:00"},
      {9, Weekly(2, "xx.x..."), "2025-01-09 12:00, 2025-01-20 12:00, 2025-01-21 12:00"},
      {9, Weekly(3, "x.....x"), "2025-01-12 12:00, 2025-01-27 12:00, 2025-02-02 12:00"},
      {9, Weekly(1, "......."), ""},
      {30, MonthDay(30, 1), "2025-01-30 12:00, 2025-03-30 12:00, 2025-04-30 12:00"},
      {9, MonthDay(8, 2), "2025-02-08 12:00, 2025-04-08 12:00, 2025-06-08 12:00"},
      {9, MonthDay(9, 12), "2025-01-09 12:00, 2026-01-09 12:00, 2027-01-09 12:00"},
      // The first Monday of January has passed.
      {9, MonthWeekday(1, 0, 2), "2025-02-03 12:00, 2025-04-07 12:00, 2025-06-02 12:00"},
      {9, MonthWeekday(2, 3, 1), "2025-01-09 12:00, 2025-02-13 12:00, 2025-03-13 12:00"},
      {9, MonthWeekday(4, 6, 11), "2025-01-26 12:00, 2025-12-28 12:00, 2026-11-22 12:00"},
  };
  const test::FakeClock clock(kThursday);
  for (const auto& c : cases) {
    ScheduleChoices choices;
    choices.day = c.day;
    choices.hour = 13;
    choices.minute = 1;
    choices.recurrences = 2;  // three of them
    c.choose(choices);
    EXPECT_EQ(ShowAll(choices, clock), c.times);
  }
}

// Worked out on a calendar. The first time is chosen by day and hour; three recurrences.
TEST(OccurrencesTest, CrossMonthEndsLeapDaysAndChangesOfTheClock) {
  // Stands still at midnight UTC, in the zone of the environment.
  class StandingClock : public test::FakeClock {
   public:
    using FakeClock::FakeClock;
    platform::LocalTime ToLocal(std::int64_t seconds) const override {
      return platform::SystemClock().ToLocal(seconds);
    }
  };
  constexpr const char* kUtc = "UTC0";
  constexpr const char* kBerlin = "CET-1CEST,M3.5.0,M10.5.0/3";
  constexpr const char* kAuckland = "NZST-12NZDT,M9.5.0,M4.1.0/3";
  const Choose once = [](ScheduleChoices&) {};
  const struct {
    const char* zone;
    std::chrono::year_month_day today;
    std::int32_t month, day, hour;
    Choose choose;
    const char* times;
  } cases[] = {
      // Leap years and month ends.
      {kUtc, 2024y / 2 / 28, 0, 0, 15, Daily(1),
       "2024-02-28 15:30, 2024-02-29 15:30, 2024-03-01 15:30"},
      {kUtc, 2025y / 2 / 28, 0, 0, 15, Daily(1),
       "2025-02-28 15:30, 2025-03-01 15:30, 2025-03-02 15:30"},
      {kUtc, 2024y / 1 / 29, 0, 0, 15, MonthDay(29, 1),
       "2024-01-29 15:30, 2024-02-29 15:30, 2024-03-29 15:30"},
      {kUtc, 2025y / 1 / 29, 0, 0, 15, MonthDay(29, 1),
       "2025-01-29 15:30, 2025-03-29 15:30, 2025-04-29 15:30"},
      // Twelve months with a 29th later; February 2025 is none.
      {kUtc, 2024y / 2 / 29, 0, 0, 15, MonthDay(29, 12),
       "2024-02-29 15:30, 2025-03-29 15:30, 2026-04-29 15:30"},
      {kUtc, 2024y / 12 / 30, 0, 0, 15, MonthDay(30, 2),
       "2024-12-30 15:30, 2025-03-30 15:30, 2025-05-30 15:30"},
      {kUtc, 2024y / 12 / 31, 0, 0, 15, Weekly(1, "x.x...."),
       "2025-01-01 15:30, 2025-01-06 15:30, 2025-01-08 15:30"},
      {kUtc, 2023y / 11 / 30, 0, 0, 15, MonthWeekday(4, 3, 3),
       "2023-12-28 15:30, 2024-03-28 15:30, 2024-06-27 15:30"},
      // A day that has passed and that the next year does not have.
      {kUtc, 2024y / 3 / 10, 2, 29, 15, once, "2025-03-01 15:30"},
      {kUtc, 2027y / 3 / 31, 2, 0, 15, once, "2028-03-03 15:30"},
      // To summer time: days of 24 hours come an hour later by the clock, new months do not.
      {kBerlin, 2024y / 3 / 30, 0, 0, 15, Daily(1),
       "2024-03-30 15:30, 2024-03-31 16:30, 2024-04-01 16:30"},
      {kBerlin, 2024y / 3 / 24, 0, 0, 15, Weekly(1, "......x"),
       "2024-03-24 15:30, 2024-03-31 16:30, 2024-04-07 16:30"},
      {kBerlin, 2024y / 3 / 15, 0, 0, 15, MonthDay(15, 1),
       "2024-03-15 15:30, 2024-04-15 16:30, 2024-05-15 16:30"},
      {kBerlin, 2024y / 3 / 1, 0, 0, 15, MonthWeekday(1, 0, 1),
       "2024-03-04 15:30, 2024-04-01 15:30, 2024-05-06 15:30"},
      {kBerlin, 2027y / 2 / 28, 0, 0, 15, MonthWeekday(4, 6, 1),  // March's is the day of change
       "2027-02-28 15:30, 2027-03-28 16:30, 2027-04-25 16:30"},
      {kBerlin, 2024y / 3 / 30, 0, 31, 2, once, "2024-03-31 03:30"},  // 02:30 is skipped
      // Back, and on the other side of the earth.
      {kBerlin, 2024y / 10 / 26, 0, 0, 15, EveryWeekday(),
       "2024-10-28 14:30, 2024-10-29 14:30, 2024-10-30 14:30"},
      {kAuckland, 2026y / 4 / 4, 0, 0, 23, Daily(2),
       "2026-04-04 23:30, 2026-04-06 22:30, 2026-04-08 22:30"},
      {kAuckland, 2026y / 9 / 20, 0, 26, 23, Daily(1),
       "2026-09-26 23:30, 2026-09-28 00:30, 2026-09-29 00:30"},
      // Near midnight the change moves a time into another day, but no day is lost or comes twice.
      {kBerlin, 2024y / 10 / 26, 0, 27, 0, MonthDay(27, 1),
       "2024-10-27 00:30, 2024-11-26 23:30, 2024-12-26 23:30"},
  };
  for (const auto& c : cases) {
    const test::ScopedVariable zone("TZ", c.zone);
    const StandingClock clock(
        std::chrono::sys_seconds(std::chrono::sys_days(c.today)).time_since_epoch().count());
    ScheduleChoices choices;
    choices.month = c.month;
    choices.day = c.day;
    choices.hour = c.hour + 1;
    choices.minute = 31;
    choices.recurrences = 2;
    c.choose(choices);
    EXPECT_EQ(ShowAll(choices, clock), c.times) << c.zone;
  }
}

// The rules read literally, a day at a time, against the program for thousands of random choices.
class LiteralSchedule {
 public:
  LiteralSchedule(const ScheduleChoices& choices, std::int64_t now)
      : choices_(choices), now_(now) {}

  std::vector<std::int64_t> Times() {
    std::int64_t t = FirstTime();
    const int n = choices_.recurrences + 1;
    std::vector<std::int64_t> times;
    const auto month_weekday = [&](std::int64_t u) {
      for (int seen = 0;; u += kDay) {
        if (At(u).tm_wday == (choices_.weekday + 1) % 7 && ++seen == choices_.ordinal + 1) return u;
      }
    };
    switch (choices_.recurrence) {
      case Recurrence::kOnce:
        return {t};
      case Recurrence::kDaily:
        for (int i = 0; i < n; ++i) {
          if (choices_.every_weekday) {
            while (At(t).tm_wday % 6 == 0) t += kDay;
            times.push_back(t);
            t += kDay;
          } else {
            times.push_back(t + i * (choices_.days + 1) * kDay);
          }
        }
        return times;
      case Recurrence::kWeekly: {
        if (!choices_.AnyWeekday()) return {};
        const auto ticked = [&](std::int64_t u) {
          return choices_.weekly_on[(At(u).tm_wday + 6) % 7];
        };
        while (!ticked(t)) t += kDay;
        const std::int64_t monday = t - (At(t).tm_wday + 6) % 7 * kDay;
        for (; static_cast<int>(times.size()) < n; t += kDay) {
          if (ticked(t) && (t - monday) / (7 * kDay) % (choices_.weeks + 1) == 0)
            times.push_back(t);
        }
        return times;
      }
      case Recurrence::kMonthly:
        break;
    }
    if (!choices_.monthly_weekday) {
      const auto wanted = [&](std::int64_t u) { return At(u).tm_mday == choices_.month_day + 1; };
      while (!wanted(t)) t += kDay;
      while (static_cast<int>(times.size()) < n) {
        times.push_back(t);
        for (int m = 0; m <= choices_.day_months;) {
          t += kDay;
          if (wanted(t)) ++m;
        }
      }
      return times;
    }
    std::int64_t u = month_weekday(t - At(t).tm_mday * kDay + kDay);
    if (u < t) {
      const int month = At(u).tm_mon;
      while (At(u).tm_mon == month) u += kDay;
      u = month_weekday(u);
    }
    for (int i = 0; i < n; ++i) {
      times.push_back(u);
      std::tm next = At(u);
      const std::int64_t time_of_day = (next.tm_hour * 60 + next.tm_min) * 60 + next.tm_sec;
      next.tm_mon += choices_.weekday_months + 1;
      next.tm_mday = 1;
      next.tm_hour = next.tm_min = next.tm_sec = 0;
      u = month_weekday(timegm(&next) + time_of_day);
    }
    return times;
  }

 private:
  static constexpr std::int64_t kDay = 86'400;
  static std::tm At(std::int64_t time) {
    std::tm parts{};
    gmtime_r(&time, &parts);
    return parts;
  }
  std::int64_t FirstTime() const {
    std::tm parts = At(now_);
    if (choices_.month > 0) parts.tm_mon = choices_.month - 1;
    if (choices_.day > 0) parts.tm_mday = choices_.day;
    if (choices_.hour > 0) parts.tm_hour = choices_.hour - 1;
    if (choices_.minute > 0) parts.tm_min = choices_.minute - 1;
    parts.tm_sec = 0;
    const std::int64_t time = timegm(&parts);
    if (time >= now_ - 3600) return time;
    ++parts.tm_year;
    return timegm(&parts);
  }

  const ScheduleChoices& choices_;
  const std::int64_t now_;
};

TEST(OccurrencesTest, AgreeWithALiteralReading) {
  std::mt19937 random(20'261'123);
  const auto below = [&](std::int32_t limit) {
    return static_cast<std::int32_t>(random() % static_cast<std::uint32_t>(limit));
  };
  int differences = 0;
  for (int round = 0; round < 5'000; ++round) {
    const test::FakeClock clock(1'700'000'000 + std::int64_t{below(250'000)} * 1'000);
    ScheduleChoices c;
    if (below(2) == 0) c.month = below(13);
    if (below(2) == 0) c.day = below(DaysOffered(c.month, 2025) + 1);
    c.hour = below(25);
    c.minute = below(61);
    c.recurrence = static_cast<Recurrence>(1 + below(4));
    c.every_weekday = below(3) == 0;
    c.daily_every = !c.every_weekday;
    c.days = below(14);
    c.weeks = below(4);
    for (bool& on : c.weekly_on) on = below(3) == 0;
    c.monthly_weekday = below(2) == 0;
    c.monthly_day = !c.monthly_weekday;
    c.month_day = below(30);
    c.day_months = below(12);
    c.ordinal = below(4);
    c.weekday = below(7);
    c.weekday_months = below(12);
    c.recurrences = below(4);
    std::vector<std::int64_t> times;
    for (const Occurrence& occurrence : OccurrencesOf(c, clock)) times.push_back(occurrence.time);
    if (times == LiteralSchedule(c, clock.Now()).Times()) continue;
    if (++differences > 5) break;
    ADD_FAILURE() << FormatSchedule(c) << " on " << Show(clock, clock.Now()) << " gives "
                  << ShowAll(c, clock);
  }
}

TEST(OccurrencesTest, EndWhereMessageTimesEnd) {
  const test::FakeClock clock(2'145'916'800);  // 2038-01-01
  ScheduleChoices choices;
  choices.recurrence = Recurrence::kDaily;
  choices.days = 13;
  choices.recurrences = 11;
  EXPECT_EQ(ShowAll(choices, clock), "2038-01-01 00:00, 2038-01-15 00:00");
}

// A dialog on a data file of its own.
struct Bench {
  test::TemporaryFolder folder;
  DataFile file{folder.File("SMS.dat"), false};
  AppSettings settings;
  Texts texts;
  test::FakeClock clock{kThursday};
  ScheduleDialog Open() { return ScheduleDialog(file, settings, texts, clock); }
  std::string Stored() {
    std::string text;
    file.GetString(kSchedulingKey, &text, "");
    return text;
  }
};

TEST(ScheduleDialogTest, StoresTheChoicesInTheirOrder) {
  Bench bench;
  ScheduleDialog dialog = bench.Open();
  ASSERT_TRUE(dialog.Accept());
  EXPECT_EQ(bench.Stored(), "0,0,0,0,1,0,0,0,0,1,0,0,0,0,0,0,0,0,0,1,0,0,0,0,0,0,0");

  using C = ScheduleChoices;
  std::int32_t place = 1;
  for (auto list : {&C::month, &C::day, &C::hour, &C::minute, &C::days, &C::month_day,
                    &C::day_months, &C::weekday_months, &C::recurrences, &C::weekday}) {
    dialog.Choose(list, place++ % 7);
  }
  dialog.Choose(&C::weeks, 3);
  dialog.Choose(&C::ordinal, 2);
  dialog.Choose(&C::ordinal, 4);
  dialog.Choose(&C::weeks, -1);
  dialog.ChooseRecurrence(Recurrence::kWeekly);
  dialog.ChooseDailyForm(true);
  dialog.ChooseMonthlyForm(true);
  EXPECT_FALSE(dialog.Accept()) << "no weekday";
  dialog.TickWeekday(1, true);
  dialog.TickWeekday(6, true);
  dialog.TickWeekday(7, true);
  ASSERT_TRUE(dialog.Accept());
  const std::string all = "1,2,3,4,0,0,1,0,5,0,1,3,0,1,0,0,0,0,1,0,6,0,1,2,3,1,2";
  EXPECT_EQ(bench.Stored(), all);

  ScheduleDialog again = bench.Open();
  ASSERT_TRUE(again.Accept());
  EXPECT_EQ(bench.Stored(), all) << "restored and stored again";
}

TEST(ScheduleDialogTest, RestoresWhatIsStoredAndSound) {
  const struct {
    const char* stored;
    const char* read;
  } cases[] = {
      {"", "0,0,0,0,1,0,0,0,0,1,0,0,0,0,0,0,0,0,0,1,0,0,0,0,0,0,0"},
      {"3,7,1,60,0,1", "3,7,1,60,0,1,0,0,0,1,0,0,0,0,0,0,0,0,0,1,0,0,0,0,0,0,0"},
      {"2,31", "2,28,0,0,1,0,0,0,0,1,0,0,0,0,0,0,0,0,0,1,0,0,0,0,0,0,0"},  // February's last
      {"13,-1,25,61,0,5,0,2,14", "0,0,0,0,0,0,0,1,0,1,0,0,0,0,0,0,0,0,0,1,0,0,0,0,0,0,0"},
      {"x,,4,,,,,,,,,,9", "0,0,4,0,1,0,0,0,0,0,0,0,1,0,0,0,0,0,0,1,0,0,0,0,0,0,0"},
  };
  for (const auto& [stored, read] : cases) {
    ScheduleChoices choices;
    RestoreSchedule(stored, 2025, &choices);
    EXPECT_EQ(FormatSchedule(choices), read) << stored;
  }
}

TEST(ScheduleDialogTest, OffersTheDaysOfTheMonth) {
  Bench bench;
  ScheduleDialog dialog = bench.Open();
  dialog.Choose(&ScheduleChoices::day, 31);
  EXPECT_EQ(dialog.DayItems().size(), 32u);
  dialog.Choose(&ScheduleChoices::month, 4);
  EXPECT_EQ(dialog.DayItems().back(), "30");
  EXPECT_EQ(dialog.choices().day, 30);
  dialog.Choose(&ScheduleChoices::day, 31);
  EXPECT_EQ(dialog.choices().day, 30) << "not in the list";
  EXPECT_EQ(dialog.MonthItems().at(12), "December");
  EXPECT_EQ(dialog.HourItems().at(10), "09");
  EXPECT_EQ(dialog.MinuteItems().back(), "59");
  EXPECT_EQ(dialog.OrdinalItems().back(), "4th");
  EXPECT_EQ(dialog.WeekdayItems().back(), "Sunday");
}

TEST(ScheduleDialogTest, HandsToTheServerOnlyWhenAsked) {
  Bench bench;
  bench.settings.SetNumber(NumberSetting::kUploadToServerDaysBefore, 3);
  ScheduleDialog local = bench.Open();
  local.TickUpload(true);
  EXPECT_FALSE(local.UploadEnabled());
  EXPECT_EQ(local.Accept().value().days_before, 0);

  bench.settings.SetFlag(FlagSetting::kScheduleToServer, true);
  ScheduleDialog dialog = bench.Open();
  EXPECT_EQ(dialog.UploadPosition(), 2);
  EXPECT_EQ(dialog.Accept().value().days_before, 3);
  dialog.ChooseUploadDays(6);
  dialog.ChooseUploadDays(7);
  EXPECT_EQ(dialog.Accept().value().days_before, 7);
  dialog.TickUpload(false);
  EXPECT_EQ(dialog.Accept().value().days_before, 0);
}

}  // namespace
}  // namespace orvalo
