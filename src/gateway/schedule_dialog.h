#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "gateway/occurrences.h"

namespace orvalo {

class AppSettings;
class DataFile;
class Texts;

// What the scheduling dialog returns.
struct Schedule {
  std::vector<Occurrence> occurrences;
  // Days before each occurrence at which the message is handed to the gateway, 1 to 7; 0: it is
  // held here until its time.
  std::int32_t days_before = 0;
};

// The choices of the MESSAGE SCHEDULE dialog and its rules, without its window. Made for one
// showing of the dialog with the last choices restored; main thread. The window draws the lists
// from the item operations, hands every choice on, and shows the controls of the current recurrence
// only.
class ScheduleDialog {
 public:
  ScheduleDialog(DataFile& file, const AppSettings& settings, const Texts& texts,
                 const platform::Clock& clock);

  const ScheduleChoices& choices() const { return choices_; }

  // --- The items of the lists, by position.
  std::vector<std::string> MonthItems() const;
  std::vector<std::string> DayItems() const;  // of the chosen month
  std::vector<std::string> HourItems() const;
  std::vector<std::string> MinuteItems() const;
  std::vector<std::string> OrdinalItems() const;
  std::vector<std::string> WeekdayItems() const;

  // --- What the operator chooses. A place that the list does not have changes nothing.
  // `list` is the member of ScheduleChoices that holds the list's position. After a month was
  // chosen, DayItems and the chosen day may have changed.
  void Choose(std::int32_t ScheduleChoices::*list, std::int32_t position);
  void ChooseRecurrence(Recurrence recurrence) { choices_.recurrence = recurrence; }
  void ChooseDailyForm(bool every_weekday);
  void ChooseMonthlyForm(bool weekday);
  void TickWeekday(int weekday_from_monday, bool ticked);

  // --- Uploading: enabled only when scheduled messages are kept on the server at all.
  bool UploadEnabled() const { return upload_enabled_; }
  bool UploadTicked() const { return upload_ticked_; }
  std::int32_t UploadPosition() const { return upload_position_; }  // days before, less 1
  void TickUpload(bool ticked);
  void ChooseUploadDays(std::int32_t position);

  // As with nothing chosen before.
  void StartAfresh() { choices_ = {}; }

  // The schedule of the choices as they are. Nothing while they are incomplete: weekly without a
  // weekday.
  std::optional<Schedule> Plan() const;

  // OK: stores the choices under kSchedulingKey (they reach the disk with the next save) and gives
  // the plan. While there is none nothing is stored, and the dialog stays open.
  std::optional<Schedule> Accept();

 private:
  int ThisYear() const;

  DataFile& file_;
  const Texts& texts_;
  const platform::Clock& clock_;
  ScheduleChoices choices_;
  const bool upload_enabled_;
  bool upload_ticked_;
  std::int32_t upload_position_;
};

}  // namespace orvalo
