#pragma once
#include "orvaloctl_fixture.h"
#include "support/gateway_program.h"

namespace orvalo::test {

// orvaloctl, logged in at the real service with the simulated network, which delivers at once.
class ServedTest : public OrvaloctlTest {
 protected:
  void SetUp() override {
    ASSERT_NE(gateway_.port(), 0);
    Init(gateway_.url());
    ASSERT_THAT(RunWith("demo\n", {"login", "demo", "--remember"}, hurrying_clock_), EndsWith(0));
  }
  Outcome Hurry(std::vector<std::string> args) {
    args.insert(args.begin(), "--json");
    return RunWith("", std::move(args), hurrying_clock_);
  }

  TemporaryFolder gateway_folder_;
  GatewayProgram gateway_{gateway_folder_.path(), {"--demo", "--sim-delivery-seconds", "0"}};
  HurryingClock hurrying_clock_;
};

}  // namespace orvalo::test
