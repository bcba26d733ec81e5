#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <memory>
#include <string>
#include <vector>

#include "blackbox/accessible_window.h"
#include "support/child_process.h"
#include "support/gateway_program.h"
#include "support/scoped_variable.h"
#include "support/temporary_folder.h"

namespace orvalo::test {
namespace {

// The real program on a real display, known only by what it shows to assistive tools.
class DesktopJourney : public ::testing::Test {
 protected:
  DesktopJourney()
      : gateway_(folder_.path(), {"--demo", "--sim-delivery-seconds", "0"}),
        data_("ORVALO_DATA_PATH", folder_.File("client").c_str()),
        ids_("ORVALO_TEST_IDS", "1"),
        accessible_("QT_LINUX_ACCESSIBILITY_ALWAYS_ON", "1") {
    Ctl({"init", "--gateway", gateway_.url()});
    Ctl({"group", "add", "Friends"});
    Ctl({"contact", "add", "--name", "Ann", "--surname", "Archer", "--mobile", "27821110001",
         "--group", "Friends"});
    Ctl({"contact", "add", "--name", "Bob", "--surname", "Brewer", "--mobile", "27821110002",
         "--group", "Friends"});
  }

  void Ctl(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), ORVALOCTL);
    const auto result = RunProgram(arguments);
    ASSERT_EQ(result.status, 0) << result.out << result.err;
  }

  TemporaryFolder folder_;
  GatewayProgram gateway_;
  ScopedVariable data_, ids_, accessible_;
};

TEST_F(DesktopJourney, AGroupGetsItsMessageAndTheProgramEndsInOrder) {
  ChildProcess program({ORVALO_DESKTOP}, "/dev/null", "/dev/null");
  const AccessibleWindow window("Orvalo");

  window.Type("loginUser", "demo");
  window.Type("loginPassword", "wrong");
  window.Press("loginOk");
  EXPECT_TRUE(AccessibleWindow::Until(
      [&] { return window.TextOf("loginMessage") == "Unknown username or password!"; }));
  window.Type("loginPassword", "demo");
  window.Press("loginOk");
  ASSERT_TRUE(AccessibleWindow::Until([&] { return window.IsShowing("messageText"); }));

  window.Type("messageText", "See you tonight");
  window.Open("recipientTree", "ADDRESS BOOK");
  window.Tick("recipientTree", "Friends");
  EXPECT_TRUE(AccessibleWindow::Until(
      [&] { return window.TextOf("recipientCount").find('2') != std::string::npos; }));
  window.Press("sendButton");

  window.Press("tabOutbox");
  // The message to both, expanded, and one row each.
  EXPECT_TRUE(AccessibleWindow::Until([&] { return window.RowsOf("outboxList") == 3; }));
  EXPECT_EQ(window.Cell("outboxList", 0, 4), "See you tonight");
  EXPECT_EQ(gateway_.Ledger().size(), 2u);

  program.Signal(SIGTERM);
  EXPECT_EQ(program.Wait(), 0);
}

TEST_F(DesktopJourney, AProcessorFaultIsToldByAFreshStart) {
  for (const int fault : {SIGSEGV, SIGABRT}) {
    ChildProcess program({ORVALO_DESKTOP}, "/dev/null", "/dev/null");
    const AccessibleWindow window("Orvalo");
    ASSERT_TRUE(AccessibleWindow::Until([&] { return window.IsShowing("loginUser"); }));
    program.Signal(fault);
    ASSERT_TRUE(AccessibleWindow::Until([&] { return window.IsShowing("linkMessage"); }));
    program.Signal(SIGTERM);
    EXPECT_EQ(program.Wait(), 1);
  }
}

}  // namespace
}  // namespace orvalo::test

int main(int count, char** values) {
  ::testing::InitGoogleTest(&count, values);
  if (atspi_init() > 1) return 1;
  return RUN_ALL_TESTS();
}
