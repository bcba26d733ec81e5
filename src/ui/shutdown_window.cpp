#include "ui/shutdown_window.h"

#include <QCloseEvent>

#include "ui/form_loader.h"
#include "ui/step_rows.h"

namespace orvalo::ui {

namespace {

constexpr int kShutdownForm = 238;

}  // namespace

ShutdownWindow::ShutdownWindow(const Kit& kit)
    : QWidget(nullptr, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint), kit_(kit) {
  kit_.forms.LoadInto(*this, kShutdownForm);
  Mark(kSending);
}

void ShutdownWindow::Mark(int row) { MarkSteps(kit_, *this, "shutdown", kRows, row); }

void ShutdownWindow::closeEvent(QCloseEvent* event) { event->ignore(); }

}  // namespace orvalo::ui
