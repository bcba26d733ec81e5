#pragma once
#include <QtGlobal>

QT_BEGIN_NAMESPACE
class QWidget;
QT_END_NAMESPACE

namespace orvalo::ui {

// The mouse wheel over `control` scrolls the page below it instead of choosing another entry: some
// choices take effect at once. Main thread.
void GuardFromWheel(QWidget& control);

}  // namespace orvalo::ui
