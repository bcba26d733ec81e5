#include <gtest/gtest.h>

#include <QApplication>

#include "ui/theme.h"

// The windows' tests need no display.
int main(int count, char** values) {
  if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  ::testing::InitGoogleTest(&count, values);
  QApplication application(count, values);
  QApplication::setQuitOnLastWindowClosed(false);
  orvalo::ui::ApplyTheme(orvalo::ui::Theme(QApplication::palette()));
  return RUN_ALL_TESTS();
}
