#include "gateway/occurrences.h"

#include <gtest/gtest.h>

#include <functional>
#include <optional>
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

TEST(OccurrencesTest, FollowTheRecurrence) {
  using Choose = std::function<void(ScheduleChoices&)>;
  const auto daily = [](std::int32_t days, bool weekdays) {
    return [=](ScheduleChoices& c) {
      c.recurrence = Recurrence::kDaily;
      c.days = days - 1;
      c.daily_every = !weekdays;
      c.every_weekday = weekdays;
    };
  };
  const auto weekly = [](std::int32_t weeks, const char* from_monday) {
    return [=](ScheduleChoices& c) {
      c.recurrence = Recurrence::kWeekly;
      c.weeks = weeks - 1;
      for (int day = 0; day < kWeekDays; ++day) c.weekly_on[day] = from_monday[day] == 'x';
    };
  };
  const auto month_day = [](std::int32_t day, std::int32_t months) {
    return [=](ScheduleChoices& c) {
      c.recurrence = Recurrence::kMonthly;
      c.month_day = day - 1;
      c.day_months = months - 1;
    };
  };
  const auto month_weekday = [](std::int32_t ordinal, std::int32_t from_monday,
                                std::int32_t months) {
    return [=](ScheduleChoices& c) {
      c.recurrence = Recurrence::kMonthly;
      c.monthly_day = false;
      c.monthly_weekday = true;
      c.ordinal = ordinal - 1;
      c.weekday = from_monday;
      c.weekday_months = months - 1;
    };
  };
  const struct {
    std::int32_t day;  // of the first time, in January 2025
    Choose choose;
    const char* times;
  } cases[] = {
      {9, daily(1, false), "2025-01-09 12:00, 2025-01-10 12:00, 2025-01-11 12:00"},
      {9, daily(14, false), "2025-01-09 12:00, 2025-01-23 12:00, 2025-02-06 12:00"},
      {10, daily(3, true), "2025-01-10 12:00, 2025-01-13 12:00, 2025-01-14 12:00"},
      {11, daily(1, true), "2025-01-13 12:00, 2025-01-14 12:00, 2025-01-15 12:00"},  // a Saturday
      {12, daily(1, true), "2025-01-13 12:00, 2025-01-14 12:00, 2025-01-15 12:00"},  // a Sunday
      {9, weekly(1, "x..x..."), "2025-01-09 12:00, 2025-01-13 12:00, 2025-01-16 12:00"},
      {10, weekly(3, "x......"), "2025-01-13 12:00, 2025-01-20 12:00, 2025-01-27 12:00"},
      {9, weekly(3, "x.....x"), "2025-01-12 12:00, 2025-01-27 12:00, 2025-02-02 12:00"},
      {9, weekly(1, "......."), ""},
      {30, month_day(30, 1), "2025-01-30 12:00, 2025-03-30 12:00, 2025-04-30 12:00"},
      {9, month_day(8, 2), "2025-02-08 12:00, 2025-04-08 12:00, 2025-06-08 12:00"},
      {9, month_day(9, 12), "2025-01-09 12:00, 2026-01-09 12:00, 2027-01-09 12:00"},
      // The first Monday of January has passed.
      {9, month_weekday(1, 0, 2), "2025-02-03 12:00, 2025-04-07 12:00, 2025-06-02 12:00"},
      {9, month_weekday(2, 3, 1), "2025-01-09 12:00, 2025-02-13 12:00, 2025-03-13 12:00"},
      {9, month_weekday(4, 6, 11), "2025-01-26 12:00, 2025-12-28 12:00, 2026-11-22 12:00"},
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

TEST(OccurrencesTest, KeepCountingCalendarDaysWhenTheClockIsPutBack) {
  const test::ScopedVariable zone("TZ", "CET-1CEST,M3.5.0,M10.5.0/3");
  class Standing : public test::FakeClock {
   public:
    using FakeClock::FakeClock;
    platform::LocalTime ToLocal(std::int64_t seconds) const override {
      return platform::SystemClock().ToLocal(seconds);
    }
  };
  const Standing clock(1'729'980'000);  // 2024-10-27 00:00, a day of 25 hours
  ScheduleChoices choices;
  choices.minute = 31;
  choices.recurrence = Recurrence::kMonthly;
  choices.month_day = 26;
  choices.recurrences = 1;
  EXPECT_EQ(ShowAll(choices, clock), "2024-10-27 00:30, 2024-11-26 23:30");
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
