#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "gateway/schedule_dialog.h"

namespace CLI {
class App;
}

namespace orvalo::cli {

// When a message is to be sent: the choices of the scheduling dialog on the command line. What is
// not said is as in a dialog that was never used.
class ScheduleArguments {
 public:
  void Define(CLI::App& app);
  // Throws CommandError(kUsage) for options that do not go together and for unknown weekdays.
  void Check() const;
  // Makes the choices in the dialog and returns its plan. Throws CommandError for a day that the
  // month does not have, for handing over to a gateway that the settings do not allow, and when no
  // time is left that a message can have.
  Schedule Plan(ScheduleDialog& dialog) const;

 private:
  bool Recurs() const { return daily_ > 0 || weekdays_ || weekly_ > 0 || monthly_ > 0; }
  void ChooseRecurrence(ScheduleDialog& dialog) const;

  // 0 where nothing was said; hours and minutes are -1 then.
  std::int32_t month_ = 0, day_ = 0, hour_ = -1, minute_ = -1;
  std::int32_t daily_ = 0, weekly_ = 0, monthly_ = 0;
  bool weekdays_ = false;
  std::vector<std::string> on_;
  std::int32_t month_day_ = 0, nth_ = 0;
  std::int32_t times_ = 0;
  std::int32_t days_before_ = -1;
};

}  // namespace orvalo::cli
