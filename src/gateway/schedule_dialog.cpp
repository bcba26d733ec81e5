#include "gateway/schedule_dialog.h"

#include <algorithm>

#include "app/data_file.h"
#include "app/settings.h"
#include "app/texts.h"

namespace orvalo {

namespace {

constexpr int kMonthsTextId = 1456;  // "Month", then the twelve names
constexpr int kDayTextId = 1469;
constexpr int kHourTextId = 1470;
constexpr int kMinuteTextId = 1471;
constexpr int kWeekdaysTextId = 1472;
constexpr int kOrdinalsTextId = 1479;
constexpr int kMonths = 12;
constexpr int kOrdinals = 4;
constexpr std::int32_t kMostUploadDays = 7;

std::vector<std::string> LoadRange(const Texts& texts, int first_id, int count) {
  std::vector<std::string> items;
  items.reserve(static_cast<std::size_t>(count));
  for (int i = 0; i < count; ++i) items.push_back(texts.Load(first_id + i));
  return items;
}

// A title, then `count` numbers of two digits from 0.
std::vector<std::string> TwoDigitItems(std::string title, int count) {
  std::vector<std::string> items;
  items.push_back(std::move(title));
  for (int i = 0; i < count; ++i) items.push_back((i < 10 ? "0" : "") + std::to_string(i));
  return items;
}

}  // namespace

ScheduleDialog::ScheduleDialog(DataFile& file, const AppSettings& settings, const Texts& texts,
                               const platform::Clock& clock)
    : file_(file),
      texts_(texts),
      clock_(clock),
      upload_enabled_(settings.Flag(FlagSetting::kScheduleToServer)),
      upload_ticked_(upload_enabled_),
      upload_position_(std::clamp(settings.Number(NumberSetting::kUploadToServerDaysBefore), 1,
                                  kMostUploadDays) -
                       1) {
  std::string stored;
  file_.GetString(kSchedulingKey, &stored, "");
  RestoreSchedule(stored, ThisYear(), &choices_);
}

int ScheduleDialog::ThisYear() const { return clock_.ToLocal(clock_.Now()).year; }

std::vector<std::string> ScheduleDialog::MonthItems() const {
  return LoadRange(texts_, kMonthsTextId, kMonths + 1);
}

std::vector<std::string> ScheduleDialog::DayItems() const {
  std::vector<std::string> items{texts_.Load(kDayTextId)};
  const int days = DaysOffered(choices_.month, ThisYear());
  for (int day = 1; day <= days; ++day) items.push_back(std::to_string(day));
  return items;
}

std::vector<std::string> ScheduleDialog::HourItems() const {
  return TwoDigitItems(texts_.Load(kHourTextId), 24);
}

std::vector<std::string> ScheduleDialog::MinuteItems() const {
  return TwoDigitItems(texts_.Load(kMinuteTextId), 60);
}

std::vector<std::string> ScheduleDialog::OrdinalItems() const {
  return LoadRange(texts_, kOrdinalsTextId, kOrdinals);
}

std::vector<std::string> ScheduleDialog::WeekdayItems() const {
  return LoadRange(texts_, kWeekdaysTextId, kWeekDays);
}

void ScheduleDialog::Choose(std::int32_t ScheduleChoices::*list, std::int32_t position) {
  const int days = DaysOffered(choices_.month, ThisYear());
  if (list == &ScheduleChoices::day && position > days) return;
  choices_.SetPosition(list, position);
  choices_.day = std::min(choices_.day, DaysOffered(choices_.month, ThisYear()));
}

void ScheduleDialog::ChooseDailyForm(bool every_weekday) {
  choices_.daily_every = !every_weekday;
  choices_.every_weekday = every_weekday;
}

void ScheduleDialog::ChooseMonthlyForm(bool weekday) {
  choices_.monthly_day = !weekday;
  choices_.monthly_weekday = weekday;
}

void ScheduleDialog::TickWeekday(int weekday_from_monday, bool ticked) {
  if (weekday_from_monday < 0 || weekday_from_monday >= kWeekDays) return;
  choices_.weekly_on[weekday_from_monday] = ticked;
}

void ScheduleDialog::TickUpload(bool ticked) {
  if (upload_enabled_) upload_ticked_ = ticked;
}

void ScheduleDialog::ChooseUploadDays(std::int32_t position) {
  if (upload_enabled_ && position >= 0 && position < kMostUploadDays) upload_position_ = position;
}

std::optional<Schedule> ScheduleDialog::Plan() const {
  if (choices_.recurrence == Recurrence::kWeekly && !choices_.AnyWeekday()) return std::nullopt;
  return Schedule{OccurrencesOf(choices_, clock_), upload_ticked_ ? upload_position_ + 1 : 0};
}

std::optional<Schedule> ScheduleDialog::Accept() {
  auto plan = Plan();
  if (plan) file_.SetString(kSchedulingKey, FormatSchedule(choices_));
  return plan;
}

}  // namespace orvalo
