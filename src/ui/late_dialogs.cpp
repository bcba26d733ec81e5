#include "ui/late_dialogs.h"

#include <QCoreApplication>
#include <QDialog>
#include <QEvent>

namespace orvalo::ui {

LateDialogs::LateDialogs() { QCoreApplication::instance()->installEventFilter(this); }

// Not before the dialog's own event loop runs, which is then ended.
bool LateDialogs::eventFilter(QObject* watched, QEvent* event) {
  auto* dialog = qobject_cast<QDialog*>(watched);
  if (event->type() == QEvent::Show && dialog != nullptr && dialog->isModal()) {
    QMetaObject::invokeMethod(
        dialog, [dialog] { dialog->close(); }, Qt::QueuedConnection);
  }
  return false;
}

}  // namespace orvalo::ui
