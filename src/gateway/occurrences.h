#pragma once
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/clock.h"

namespace orvalo {

// One time at which a scheduled message is to be sent.
struct Occurrence {
  std::int32_t time = 0;  // seconds since 1970-01-01 UTC
};

// Kinds of recurrence; the values never change.
enum class Recurrence : std::int32_t { kOnce = 1, kDaily = 2, kWeekly = 3, kMonthly = 4 };

inline constexpr int kWeekDays = 7;

// The choices of the scheduling dialog. Members that name a position hold the place of the chosen
// item in its list, counted from 0.
struct ScheduleChoices {
  std::int32_t month = 0;   // position; 0: the current month, else January is 1
  std::int32_t day = 0;     // position; 0: the current day, else the day of the month
  std::int32_t hour = 0;    // position; 0: the current hour, else the hour plus 1
  std::int32_t minute = 0;  // position; 0: the current minute, else the minute plus 1
  Recurrence recurrence = Recurrence::kOnce;

  bool daily_every = true;  // every so many days
  std::int32_t days = 0;    // position; 1 to 14 days
  bool every_weekday = false;

  std::int32_t weeks = 0;           // position; 1 to 4 weeks
  bool weekly_on[kWeekDays] = {};   // Monday to Sunday
  bool monthly_day = true;          // a day of the month
  std::int32_t month_day = 0;       // position; 1 to 30
  std::int32_t day_months = 0;      // position; every 1 to 12 months
  bool monthly_weekday = false;     // the first to fourth weekday of the month
  std::int32_t ordinal = 0;         // position; first to fourth
  std::int32_t weekday = 0;         // position; Monday to Sunday
  std::int32_t weekday_months = 0;  // position; every 1 to 12 months
  std::int32_t recurrences = 0;     // position; ends after 1 to 12

  bool AnyWeekday() const;
  // Chooses an item; `list` is one of the positions above. A place that its list does not have
  // changes nothing.
  void SetPosition(std::int32_t ScheduleChoices::*list, std::int32_t position);
};

// The choices as they stand in the data file under kSchedulingKey: 27 decimal integers joined by
// commas, whose order never changes.
inline constexpr std::string_view kSchedulingKey = "SchedulingInfo";
std::string FormatSchedule(const ScheduleChoices& choices);

// Takes over the fields for which `text` has a value and leaves the others as they are. A position
// that its list does not have is passed over; the day is held within the chosen month of `year`.
void RestoreSchedule(std::string_view text, int year, ScheduleChoices* choices);

// Days that the day list offers: of the month at a list position (0: any, 31) in `year`.
int DaysOffered(std::int32_t month_position, int year);

// The first time: what is not chosen is taken from now, the seconds are 0. A time more than an hour
// past is meant for next year.
std::int64_t SendOnTime(const ScheduleChoices& choices, const platform::Clock& clock);

// All times of the choices, earliest first: one for "once", else as many as recurrences are chosen,
// without those beyond the last second that a message's time can hold (in January 2038). Recurring
// times lie whole days of 24 hours apart, so a change to or from summer time shows in the local
// hour; the days are counted on the calendar, so such a change neither skips nor repeats one. Weeks
// begin on Monday: of every so many, from that of the first time, the ticked days count. Empty for
// weekly choices without a weekday.
std::vector<Occurrence> OccurrencesOf(const ScheduleChoices& choices, const platform::Clock& clock);

}  // namespace orvalo
