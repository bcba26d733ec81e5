#pragma once
#include <QWidget>

#include "ui/kit.h"

namespace orvalo::ui {

// The "Shutting down ..." window (dialog 238): the steps of the program's end. It cannot be closed
// by the operator; it goes with its object. Main thread.
class ShutdownWindow : public QWidget {
 public:
  // The steps, in their order.
  enum Row { kSending, kStopping, kSaving, kCompleted };
  static constexpr int kRows = 4;

  explicit ShutdownWindow(const Kit& kit);  // the first step is current; throws FormError

  // The steps before `row` are done, `row` is current, those after it are greyed.
  void Mark(int row);

 protected:
  void closeEvent(QCloseEvent* event) override;

 private:
  const Kit& kit_;
};

}  // namespace orvalo::ui
