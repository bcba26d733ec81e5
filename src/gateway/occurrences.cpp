#include "gateway/occurrences.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <limits>
#include <utility>

#include "platform/number.h"

namespace orvalo {

namespace {

using std::chrono::sys_days;
using std::chrono::year_month_day;

constexpr std::int64_t kDaySeconds = 86'400;
constexpr std::int64_t kLateSeconds = 3'600;  // a first time that is later than this is past
constexpr int kAnyMonthDays = 31;
constexpr std::size_t kStoredFields = 27;

// One stored field: a list's position, a tick, or one of the four recurrences.
struct StoredField {
  std::int32_t* position = nullptr;
  std::int32_t items = 0;  // of the list
  bool* tick = nullptr;
  Recurrence recurrence = Recurrence::kOnce;
};

StoredField List(std::int32_t& position, std::int32_t items) { return {&position, items}; }
StoredField Tick(bool& tick) { return {nullptr, 0, &tick}; }
StoredField Kind(Recurrence recurrence) { return {nullptr, 0, nullptr, recurrence}; }

std::array<StoredField, kStoredFields> FieldsOf(ScheduleChoices& c) {
  return {List(c.month, 13),          List(c.day, kAnyMonthDays + 1),
          List(c.hour, 25),           List(c.minute, 61),
          Kind(Recurrence::kOnce),    Kind(Recurrence::kDaily),
          Kind(Recurrence::kWeekly),  Kind(Recurrence::kMonthly),
          List(c.days, 14),           Tick(c.daily_every),
          Tick(c.every_weekday),      List(c.weeks, 4),
          Tick(c.weekly_on[0]),       Tick(c.weekly_on[1]),
          Tick(c.weekly_on[2]),       Tick(c.weekly_on[3]),
          Tick(c.weekly_on[4]),       Tick(c.weekly_on[5]),
          Tick(c.weekly_on[6]),       Tick(c.monthly_day),
          List(c.month_day, 30),      List(c.day_months, 12),
          Tick(c.monthly_weekday),    List(c.ordinal, 4),
          List(c.weekday, kWeekDays), List(c.weekday_months, 12),
          List(c.recurrences, 12)};
}

// A time that moves by whole days, and the calendar day it stands for.
struct DayWalk {
  std::int64_t time;
  sys_days date;

  void Forward(int days) {
    time += days * kDaySeconds;
    date += std::chrono::days(days);
  }
  int Weekday() const {  // 0 is Sunday
    return static_cast<int>(std::chrono::weekday(date).c_encoding());
  }
  int WeekdayFromMonday() const { return (Weekday() + kWeekDays - 1) % kWeekDays; }
  year_month_day Calendar() const { return year_month_day(date); }
  int MonthDay() const { return static_cast<int>(static_cast<unsigned>(Calendar().day())); }
};

sys_days DateOf(const platform::LocalTime& local) {
  return std::chrono::year(local.year) / local.month / local.day;
}

// Collects the times of one recurrence.
class OccurrenceList {
 public:
  explicit OccurrenceList(std::int32_t count) : left_(count) {}
  bool Wanting() const { return left_ > 0; }
  void Record(std::int64_t time) {
    --left_;
    if (time > std::numeric_limits<std::int32_t>::max()) left_ = 0;
    if (left_ >= 0 && time >= 0 && time <= std::numeric_limits<std::int32_t>::max()) {
      times_.push_back({static_cast<std::int32_t>(time)});
    }
  }
  std::vector<Occurrence> Take() { return std::move(times_); }

 private:
  std::int32_t left_;
  std::vector<Occurrence> times_;
};

void RecurDaily(const ScheduleChoices& choices, DayWalk day, OccurrenceList& list) {
  while (list.Wanting()) {
    if (choices.every_weekday) {
      if (day.Weekday() == 0) day.Forward(1);
      if (day.Weekday() == 6) day.Forward(2);
    }
    list.Record(day.time);
    day.Forward(choices.every_weekday ? 1 : choices.days + 1);
  }
}

void RecurWeekly(const ScheduleChoices& choices, DayWalk day, OccurrenceList& list) {
  if (!choices.AnyWeekday()) return;
  const auto to_ticked = [&] {
    while (!choices.weekly_on[day.WeekdayFromMonday()]) day.Forward(1);
  };
  to_ticked();
  while (list.Wanting()) {
    list.Record(day.time);
    const DayWalk sent = day;
    day.Forward(1);
    to_ticked();
    if (day.WeekdayFromMonday() <= sent.WeekdayFromMonday()) {  // another week has begun
      day.Forward(choices.weeks * kWeekDays);
    }
  }
}

void RecurOnMonthDay(const ScheduleChoices& choices, DayWalk day, OccurrenceList& list) {
  const int wanted = choices.month_day + 1;
  const auto to_wanted = [&] {
    while (day.MonthDay() != wanted) day.Forward(1);
  };
  to_wanted();
  while (list.Wanting()) {
    list.Record(day.time);
    for (std::int32_t month = 0; month <= choices.day_months; ++month) {
      day.Forward(1);
      to_wanted();  // months without that day are passed over
    }
  }
}

void RecurOnMonthWeekday(const ScheduleChoices& choices, DayWalk first, OccurrenceList& list,
                         const platform::Clock& clock) {
  const int wanted = (choices.weekday + 1) % kWeekDays;
  // From the first day of a month to its k-th such weekday.
  const auto to_wanted = [&](DayWalk& day) {
    day.Forward((wanted - day.Weekday() + kWeekDays) % kWeekDays + choices.ordinal * kWeekDays);
  };
  DayWalk day = first;
  day.Forward(1 - first.MonthDay());
  to_wanted(day);
  if (day.time < first.time) {
    do {  // from the month's first day too, when that is the weekday
      day.Forward(1);
    } while (day.MonthDay() != 1);
    to_wanted(day);
  }
  while (list.Wanting()) {
    list.Record(day.time);
    const platform::LocalTime local = clock.ToLocal(day.time);
    const std::int64_t time_of_day = (local.hour * 60 + local.minute) * 60 + local.second;
    const year_month_day next = day.Calendar().year() / day.Calendar().month() / 1 +
                                std::chrono::months(choices.weekday_months + 1);
    platform::LocalTime midnight;
    midnight.year = static_cast<int>(next.year());
    midnight.month = static_cast<int>(static_cast<unsigned>(next.month()));
    day = {clock.FromLocal(midnight) + time_of_day, sys_days(next)};
    to_wanted(day);
  }
}

}  // namespace

bool ScheduleChoices::AnyWeekday() const {
  return std::any_of(std::begin(weekly_on), std::end(weekly_on),
                     [](bool ticked) { return ticked; });
}

void ScheduleChoices::SetPosition(std::int32_t ScheduleChoices::*list, std::int32_t position) {
  for (const StoredField& field : FieldsOf(*this)) {
    if (field.position != &(this->*list)) continue;
    if (position >= 0 && position < field.items) this->*list = position;
  }
}

std::string FormatSchedule(const ScheduleChoices& choices) {
  ScheduleChoices copy = choices;
  std::string text;
  for (const StoredField& field : FieldsOf(copy)) {
    if (!text.empty()) text += ',';
    if (field.position != nullptr) {
      text += std::to_string(*field.position);
    } else {
      const bool ticked =
          field.tick != nullptr ? *field.tick : field.recurrence == choices.recurrence;
      text += ticked ? '1' : '0';
    }
  }
  return text;
}

void RestoreSchedule(std::string_view text, int year, ScheduleChoices* choices) {
  const auto fields = FieldsOf(*choices);
  for (std::size_t i = 0; i < fields.size() && !text.empty(); ++i) {
    const std::string_view piece = text.substr(0, text.find(','));
    text.remove_prefix(std::min(piece.size() + 1, text.size()));
    const std::int32_t value = platform::ParseInteger(piece);
    const StoredField& field = fields[i];
    if (field.position != nullptr) {
      if (value >= 0 && value < field.items) *field.position = value;
    } else if (field.tick != nullptr) {
      *field.tick = value != 0;
    } else if (value != 0) {
      choices->recurrence = field.recurrence;
    }
  }
  choices->day = std::min(choices->day, DaysOffered(choices->month, year));
}

int DaysOffered(std::int32_t month_position, int year) {
  if (month_position < 1 || month_position > 12) return kAnyMonthDays;
  const std::chrono::year_month_day_last last =
      std::chrono::year(year) / month_position / std::chrono::last;
  return static_cast<int>(static_cast<unsigned>(last.day()));
}

std::int64_t SendOnTime(const ScheduleChoices& choices, const platform::Clock& clock) {
  const std::int64_t now = clock.Now();
  platform::LocalTime local = clock.ToLocal(now);
  if (choices.month > 0) local.month = choices.month;
  if (choices.day > 0) local.day = choices.day;
  if (choices.hour > 0) local.hour = choices.hour - 1;
  if (choices.minute > 0) local.minute = choices.minute - 1;
  local.second = 0;
  const std::int64_t time = clock.FromLocal(local);
  if (time >= now - kLateSeconds) return time;
  local = clock.ToLocal(time);  // a day beyond its month's end has become one of the next month
  ++local.year;
  return clock.FromLocal(local);
}

std::vector<Occurrence> OccurrencesOf(const ScheduleChoices& choices,
                                      const platform::Clock& clock) {
  const std::int64_t time = SendOnTime(choices, clock);
  const DayWalk first{time, DateOf(clock.ToLocal(time))};
  const bool once = choices.recurrence == Recurrence::kOnce;
  OccurrenceList list(once ? 1 : choices.recurrences + 1);
  switch (choices.recurrence) {
    case Recurrence::kOnce:
      list.Record(time);
      break;
    case Recurrence::kDaily:
      RecurDaily(choices, first, list);
      break;
    case Recurrence::kWeekly:
      RecurWeekly(choices, first, list);
      break;
    case Recurrence::kMonthly:
      if (choices.monthly_weekday) {
        RecurOnMonthWeekday(choices, first, list, clock);
      } else {
        RecurOnMonthDay(choices, first, list);
      }
      break;
  }
  return list.Take();
}

}  // namespace orvalo
