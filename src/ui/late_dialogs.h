#pragma once
#include <QObject>

namespace orvalo::ui {

// Cancels every dialog that is opened during its life. What was running when the program was ended
// may have a question left, which would keep the end waiting for an answer. Main thread.
class LateDialogs : public QObject {
 public:
  LateDialogs();

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;
};

}  // namespace orvalo::ui
