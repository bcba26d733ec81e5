#include "cli/schedule_arguments.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <string_view>

#include "cli/command.h"
#include "platform/collation.h"

namespace orvalo::cli {

namespace {

constexpr std::array<std::string_view, kWeekDays> kWeekdayNames{
    "Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday", "Sunday"};
constexpr std::size_t kShortName = 3;  // characters

// 0 is Monday. The whole name or its beginning, from three characters on.
std::int32_t WeekdayFromMonday(const std::string& name) {
  const auto found =
      std::find_if(kWeekdayNames.begin(), kWeekdayNames.end(), [&](std::string_view known) {
        return name.size() >= kShortName &&
               platform::EqualNoCaseAscii(known.substr(0, name.size()), name);
      });
  if (found == kWeekdayNames.end()) {
    throw CommandError(ExitCode::kUsage, name + " is no weekday, such as Monday or Mon");
  }
  return static_cast<std::int32_t>(found - kWeekdayNames.begin());
}

void Require(bool met, const char* what) {
  if (!met) throw CommandError(ExitCode::kUsage, what);
}

}  // namespace

void ScheduleArguments::Define(CLI::App& app) {
  const auto number = [&app](const char* name, std::int32_t& value, int lowest, int highest,
                             const char* type, const char* description) {
    app.add_option(name, value, description)
        ->type_name(type)
        ->check(CLI::Range(lowest, highest).description(""));
  };
  number("--month", month_, 1, 12, "1-12", "The first time: its month (else this one)");
  number("--day", day_, 1, 31, "1-31", "its day (else today)");
  number("--hour", hour_, 0, 23, "0-23", "its hour (else this one)");
  number("--minute", minute_, 0, 59, "0-59", "its minute (else this one)");
  number("--daily", daily_, 1, 14, "1-14", "Every so many days");
  app.add_flag("--weekdays", weekdays_, "Every day from Monday to Friday");
  number("--weekly", weekly_, 1, 4, "1-4", "Every so many weeks, on the days of --on");
  number("--monthly", monthly_, 1, 12, "1-12",
         "Every so many months, on --month-day, or on --nth with --on");
  app.add_option("--on", on_, "Weekdays, such as Mon,Thu")
      ->type_name("DAY[,DAY...]")
      ->delimiter(',')
      ->allow_extra_args(false);
  number("--month-day", month_day_, 1, 30, "1-30", "The day of the month");
  number("--nth", nth_, 1, 4, "1-4", "The first to fourth weekday of --on in the month");
  number("--times", times_, 1, 12, "1-12", "How many times in all");
  number("--days-before", days_before_, 0, 7, "0-7",
         "Hand the message to the gateway so many days before; 0 keeps it here (else as the "
         "settings say)");
}

void ScheduleArguments::Check() const {
  const int kinds =
      (daily_ > 0 ? 1 : 0) + (weekdays_ ? 1 : 0) + (weekly_ > 0 ? 1 : 0) + (monthly_ > 0 ? 1 : 0);
  Require(kinds <= 1, "Only one of --daily, --weekdays, --weekly and --monthly");
  Require(Recurs() == (times_ > 0),
          "A message that is sent again and again needs --times, no other has it");
  Require(weekly_ == 0 || !on_.empty(), "--weekly needs weekdays: --on Mon,Thu");
  Require(monthly_ == 0 || (month_day_ > 0) != (nth_ > 0),
          "--monthly needs either --month-day or --nth with --on");
  Require(monthly_ > 0 || (month_day_ == 0 && nth_ == 0),
          "--month-day and --nth belong to --monthly");
  Require((nth_ > 0 && on_.size() == 1) || weekly_ > 0 || (nth_ == 0 && on_.empty()),
          "--on belongs to --weekly, and with one day to --nth");
  for (const std::string& day : on_) WeekdayFromMonday(day);
}

Schedule ScheduleArguments::Plan(ScheduleDialog& dialog) const {
  using C = ScheduleChoices;
  dialog.StartAfresh();
  dialog.Choose(&C::month, month_);
  dialog.Choose(&C::day, day_);
  Require(dialog.choices().day == day_, "The month does not have that day");
  dialog.Choose(&C::hour, hour_ + 1);
  dialog.Choose(&C::minute, minute_ + 1);
  ChooseRecurrence(dialog);
  if (days_before_ > 0 && !dialog.UploadEnabled()) {
    throw CommandError(ExitCode::kFailed,
                       "Scheduled messages are kept here until their time; to hand them over "
                       "before: `orvaloctl settings ScheduleToServer 1`");
  }
  if (days_before_ >= 0) {
    dialog.TickUpload(days_before_ > 0);
    dialog.ChooseUploadDays(days_before_ - 1);
  }
  const auto plan = dialog.Plan();
  if (!plan || plan->occurrences.empty())
    throw CommandError(ExitCode::kFailed, "No message can be scheduled for that time");
  return *plan;
}

void ScheduleArguments::ChooseRecurrence(ScheduleDialog& dialog) const {
  using C = ScheduleChoices;
  if (!Recurs()) return;
  dialog.Choose(&C::recurrences, times_ - 1);
  if (weekly_ > 0) {
    dialog.ChooseRecurrence(Recurrence::kWeekly);
    dialog.Choose(&C::weeks, weekly_ - 1);
    for (const std::string& day : on_) dialog.TickWeekday(WeekdayFromMonday(day), true);
  } else if (monthly_ > 0) {
    dialog.ChooseRecurrence(Recurrence::kMonthly);
    dialog.ChooseMonthlyForm(nth_ > 0);
    dialog.Choose(&C::month_day, month_day_ - 1);
    dialog.Choose(nth_ > 0 ? &C::weekday_months : &C::day_months, monthly_ - 1);
    if (nth_ == 0) return;
    dialog.Choose(&C::ordinal, nth_ - 1);
    dialog.Choose(&C::weekday, WeekdayFromMonday(on_.front()));
  } else {
    dialog.ChooseRecurrence(Recurrence::kDaily);
    dialog.ChooseDailyForm(weekdays_);
    dialog.Choose(&C::days, daily_ - 1);
  }
}

}  // namespace orvalo::cli
