#pragma once
#include <QWidget>

#include "ui/kit.h"

namespace orvalo::platform {
class Clock;
}

namespace orvalo::ui {

// "Processing, please wait ..." (dialog 141), over the window that is busy. Shown from its making
// to its end. Main thread.
class WaitWindow : public QWidget {
 public:
  // Returns after a second, in which the window has moved; the work may begin then. Keys and clicks
  // wait meanwhile. Throws FormError.
  WaitWindow(const Kit& kit, platform::Clock& clock, QWidget& over);
};

}  // namespace orvalo::ui
