#include <gtest/gtest.h>

#include "ui/application.h"

// The windows' tests need no display.
int main(int count, char** values) {
  if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  ::testing::InitGoogleTest(&count, values);
  orvalo::ui::Application application(count, values);
  return RUN_ALL_TESTS();
}
