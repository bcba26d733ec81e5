#pragma once
#include <QDialog>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "gateway/schedule_dialog.h"
#include "ui/kit.h"

QT_BEGIN_NAMESPACE
class QComboBox;
class QRadioButton;
QT_END_NAMESPACE

namespace orvalo::ui {

// The dialog MESSAGE SCHEDULE (136) over the choices of one showing. Main thread.
class ScheduleWindow : public QDialog {
 public:
  // Throws FormError.
  ScheduleWindow(const Kit& kit, ScheduleDialog& logic, QWidget& owner);

  // Shows the dialog until it is closed; nothing when the operator cancels.
  std::optional<Schedule> Ask();

 private:
  using Items = std::vector<std::string>;
  // Fills a list with the current choice and hands every further choice on. Choosing from a list
  // that belongs to a form also chooses the form.
  void WireList(const char* name, std::int32_t ScheduleChoices::*position, const Items& items,
                QRadioButton* form = nullptr);
  void WireLists();
  void WireRecurrence();
  void WireWeekdays();
  void WireUpload();
  void FillDays();
  void ShowRecurrence();
  void Accept();

  ScheduleDialog& logic_;
  QComboBox* days_ = nullptr;
  std::optional<Schedule> schedule_;
};

}  // namespace orvalo::ui
