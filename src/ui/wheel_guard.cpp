#include "ui/wheel_guard.h"

#include <QEvent>
#include <QWidget>

namespace orvalo::ui {

namespace {

class WheelFilter : public QObject {
 public:
  using QObject::QObject;
  bool eventFilter(QObject*, QEvent* event) override {
    if (event->type() != QEvent::Wheel) return false;
    event->ignore();
    return true;
  }
};

}  // namespace

void GuardFromWheel(QWidget& control) {
  control.setFocusPolicy(Qt::StrongFocus);
  control.installEventFilter(new WheelFilter(&control));
}

}  // namespace orvalo::ui
