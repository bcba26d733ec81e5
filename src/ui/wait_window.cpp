#include "ui/wait_window.h"

#include <QCoreApplication>

#include "platform/clock.h"
#include "ui/form_loader.h"

namespace orvalo::ui {

namespace {

constexpr int kWaitDialog = 141;
constexpr int kFrames = 50;
constexpr int kFrameMilliseconds = 20;

}  // namespace

WaitWindow::WaitWindow(const Kit& kit, platform::Clock& clock, QWidget& over)
    : QWidget(over.window(), Qt::Dialog | Qt::FramelessWindowHint) {
  kit.forms.LoadInto(*this, kWaitDialog);
  setWindowModality(Qt::ApplicationModal);
  setAttribute(Qt::WA_ShowWithoutActivating);  // the focus stays where the operator works
  adjustSize();
  move(over.mapToGlobal(over.rect().center()) - rect().center());
  show();
  for (int frame = 0; frame < kFrames; ++frame) {
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
    clock.Sleep(kFrameMilliseconds);
  }
}

}  // namespace orvalo::ui
