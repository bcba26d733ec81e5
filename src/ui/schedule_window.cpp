#include "ui/schedule_window.h"

#include <QCheckBox>
#include <QComboBox>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalBlocker>
#include <QStackedWidget>
#include <array>
#include <utility>

#include "ui/form_loader.h"

namespace orvalo::ui {

namespace {

constexpr int kScheduleForm = 136;

struct RecurrenceButton {
  Recurrence recurrence;
  const char* name;
};
constexpr std::array<RecurrenceButton, 4> kRecurrenceButtons{
    {{Recurrence::kOnce, "recurOnce"},
     {Recurrence::kDaily, "recurDaily"},
     {Recurrence::kWeekly, "recurWeekly"},
     {Recurrence::kMonthly, "recurMonthly"}}};
constexpr std::array<const char*, kWeekDays> kWeekdayTicks{
    "weeklyMonday", "weeklyTuesday",  "weeklyWednesday", "weeklyThursday",
    "weeklyFriday", "weeklySaturday", "weeklySunday"};

std::vector<std::string> Numbers(int last) {
  std::vector<std::string> items;
  items.reserve(static_cast<std::size_t>(last));
  for (int number = 1; number <= last; ++number) items.push_back(std::to_string(number));
  return items;
}

void Fill(QComboBox& list, const std::vector<std::string>& items, int position) {
  const QSignalBlocker quiet(list);
  list.clear();
  for (const std::string& item : items) list.addItem(Qt8(item));
  list.setCurrentIndex(position);
}

}  // namespace

ScheduleWindow::ScheduleWindow(const Kit& kit, ScheduleDialog& logic, QWidget& owner)
    : QDialog(&owner), logic_(logic) {
  kit.forms.LoadInto(*this, kScheduleForm);
  WireLists();
  WireRecurrence();
  WireWeekdays();
  WireUpload();
  connect(&Child<QPushButton>(*this, "scheduleOk"), &QPushButton::clicked, this,
          [this] { Accept(); });
  connect(&Child<QPushButton>(*this, "scheduleCancel"), &QPushButton::clicked, this,
          [this] { reject(); });
}

void ScheduleWindow::WireList(const char* name, std::int32_t ScheduleChoices::*position,
                              const Items& items, QRadioButton* form) {
  auto& list = Child<QComboBox>(*this, name);
  Fill(list, items, logic_.choices().*position);
  connect(&list, &QComboBox::currentIndexChanged, this, [this, position, form](int chosen) {
    logic_.Choose(position, chosen);
    if (form != nullptr) form->setChecked(true);
    if (position == &ScheduleChoices::month) FillDays();
  });
}

void ScheduleWindow::WireLists() {
  using Choices = ScheduleChoices;
  auto& every_days = Child<QRadioButton>(*this, "dailyEvery");
  auto& on_day = Child<QRadioButton>(*this, "monthlyDay");
  auto& on_weekday = Child<QRadioButton>(*this, "monthlyThe");
  WireList("scheduleMonth", &Choices::month, logic_.MonthItems());
  WireList("scheduleDay", &Choices::day, logic_.DayItems());
  WireList("scheduleHour", &Choices::hour, logic_.HourItems());
  WireList("scheduleMinute", &Choices::minute, logic_.MinuteItems());
  WireList("dailyDays", &Choices::days, Numbers(14), &every_days);
  WireList("weeklyWeeks", &Choices::weeks, Numbers(4));
  WireList("monthlyDayList", &Choices::month_day, Numbers(30), &on_day);
  WireList("monthlyDayMonths", &Choices::day_months, Numbers(12), &on_day);
  WireList("monthlyOrdinal", &Choices::ordinal, logic_.OrdinalItems(), &on_weekday);
  WireList("monthlyWeekday", &Choices::weekday, logic_.WeekdayItems(), &on_weekday);
  WireList("monthlyTheMonths", &Choices::weekday_months, Numbers(12), &on_weekday);
  WireList("endAfter", &Choices::recurrences, Numbers(12));
  days_ = &Child<QComboBox>(*this, "scheduleDay");
}

// The days of the chosen month; the chosen day stays as far as the month has it.
void ScheduleWindow::FillDays() { Fill(*days_, logic_.DayItems(), logic_.choices().day); }

void ScheduleWindow::WireRecurrence() {
  auto& end_after = Child<QWidget>(*this, "endAfterRow");
  QSizePolicy policy = end_after.sizePolicy();
  policy.setRetainSizeWhenHidden(true);
  end_after.setSizePolicy(policy);
  for (const RecurrenceButton& button : kRecurrenceButtons) {
    auto& radio = Child<QRadioButton>(*this, button.name);
    radio.setChecked(logic_.choices().recurrence == button.recurrence);
    connect(&radio, &QRadioButton::toggled, this,
            [this, recurrence = button.recurrence](bool chosen) {
              if (!chosen) return;
              logic_.ChooseRecurrence(recurrence);
              ShowRecurrence();
            });
  }
  auto& weekdays = Child<QRadioButton>(*this, "dailyWeekdays");
  Child<QRadioButton>(*this, "dailyEvery").setChecked(true);
  weekdays.setChecked(logic_.choices().every_weekday);
  connect(&weekdays, &QRadioButton::toggled, this,
          [this](bool chosen) { logic_.ChooseDailyForm(chosen); });
  auto& on_weekday = Child<QRadioButton>(*this, "monthlyThe");
  Child<QRadioButton>(*this, "monthlyDay").setChecked(true);
  on_weekday.setChecked(logic_.choices().monthly_weekday);
  connect(&on_weekday, &QRadioButton::toggled, this,
          [this](bool chosen) { logic_.ChooseMonthlyForm(chosen); });
  ShowRecurrence();
}

void ScheduleWindow::ShowRecurrence() {
  const Recurrence recurrence = logic_.choices().recurrence;
  Child<QStackedWidget>(*this, "recurrencePages")
      .setCurrentIndex(static_cast<int>(recurrence) - static_cast<int>(Recurrence::kOnce));
  Child<QWidget>(*this, "endAfterRow").setVisible(recurrence != Recurrence::kOnce);
}

void ScheduleWindow::WireWeekdays() {
  const Items names = logic_.WeekdayItems();
  for (int day = 0; day < kWeekDays; ++day) {
    const auto place = static_cast<std::size_t>(day);
    auto& tick = Child<QCheckBox>(*this, kWeekdayTicks[place]);
    tick.setText(Qt8(names[place]));
    tick.setChecked(logic_.choices().weekly_on[place]);
    connect(&tick, &QCheckBox::toggled, this,
            [this, day](bool ticked) { logic_.TickWeekday(day, ticked); });
  }
}

void ScheduleWindow::WireUpload() {
  auto& tick = Child<QCheckBox>(*this, "uploadToServer");
  auto& list = Child<QComboBox>(*this, "uploadDays");
  tick.setChecked(logic_.UploadTicked());
  tick.setEnabled(logic_.UploadEnabled());
  Fill(list, Numbers(7), logic_.UploadPosition());
  list.setEnabled(logic_.UploadEnabled());
  connect(&tick, &QCheckBox::toggled, this, [this](bool ticked) { logic_.TickUpload(ticked); });
  connect(&list, &QComboBox::currentIndexChanged, this,
          [this](int position) { logic_.ChooseUploadDays(position); });
}

void ScheduleWindow::Accept() {
  schedule_ = logic_.Accept();
  if (schedule_) accept();
}

std::optional<Schedule> ScheduleWindow::Ask() {
  return exec() == QDialog::Accepted ? std::move(schedule_) : std::nullopt;
}

}  // namespace orvalo::ui
