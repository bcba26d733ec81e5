#include <gtest/gtest.h>

#include "ui/application.h"

// The windows' tests need no display, and their downloads no proxy: they go to this machine
// whatever its desktop is set to.
int main(int count, char** values) {
  qputenv("all_proxy", "http://127.0.0.1:1");
  qputenv("no_proxy", "localhost,127.0.0.1");
  if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  ::testing::InitGoogleTest(&count, values);
  orvalo::ui::Application application(count, values);
  return RUN_ALL_TESTS();
}
