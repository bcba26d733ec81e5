#pragma once
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <condition_variable>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "app/texts.h"
#include "cli/orvaloctl.h"
#include "component/register_component.h"
#include "platform/automation.h"
#include "store/sms_database.h"
#include "support/fake_clock.h"
#include "support/scoped_variable.h"
#include "support/temporary_folder.h"

namespace orvalo::test {

// What a run of orvaloctl left on its way out.
struct Outcome {
  int code = -1;
  std::string out, err;

  // The first element of the JSON array on the output.
  nlohmann::json First() const { return nlohmann::json::parse(out).at(0); }
  nlohmann::json All() const { return nlohmann::json::parse(out); }
};

inline void PrintTo(const Outcome& outcome, std::ostream* stream) {
  *stream << "exit status " << outcome.code << "\n" << outcome.out << outcome.err;
}

MATCHER_P(EndsWith, code, "") { return arg.code == code; }
MATCHER_P2(FailsWith, code, reason, "") {
  return arg.code == code && arg.err.find(reason) != std::string::npos;
}

// A clock on which a short wait takes only as long as the others need to get something done: the
// seconds between a command's questions pass at once, the engine's minute does not.
class HurryingClock : public FakeClock {
 public:
  bool WaitUntil(std::unique_lock<std::mutex>& lock, std::condition_variable& condition,
                 std::int64_t tick, const std::function<bool()>& ready) override {
    constexpr std::int64_t kShort = 2000;
    if (tick - Tick() > kShort) return FakeClock::WaitUntil(lock, condition, tick, ready);
    condition.wait_for(lock, std::chrono::milliseconds(20), ready);
    if (!ready() && tick > Tick()) Advance(tick - Tick());
    return ready();
  }
};

// A data folder of its own and whole runs of orvaloctl on it. The gateway's address leads nowhere
// unless a test gives another one.
class OrvaloctlTest : public testing::Test {
 protected:
  OrvaloctlTest() { component::RegisterComponent(registry_); }

  const std::string& folder() const { return folder_.path(); }
  std::string Outside(const std::string& name) const { return outside_.File(name); }

  Outcome RunWith(const std::string& input, std::vector<std::string> args,
                  platform::Clock& clock) const {
    args.insert(args.begin(), {"--data", folder()});
    std::istringstream in(input);
    std::ostringstream out, err;
    Outcome outcome;
    outcome.code = cli::RunOrvaloctl(args, {in, out, err}, registry_, clock);
    outcome.out = out.str();
    outcome.err = err.str();
    return outcome;
  }
  Outcome Run(std::vector<std::string> args) { return RunWith("", std::move(args), clock_); }
  Outcome Json(std::vector<std::string> args) {
    args.insert(args.begin(), "--json");
    return Run(std::move(args));
  }
  void Init(const std::string& gateway = "http://127.0.0.1:1") {
    ASSERT_THAT(Run({"init", "--gateway", gateway}), EndsWith(0));
  }

  // The store as the runs have left it.
  std::vector<MessageRow> StoredMessages() {
    return SmsDatabase(folder(), texts_, clock_, true).AllSms();
  }

  FakeClock clock_;
  Texts texts_;
  platform::ClassRegistry registry_;

 private:
  ScopedVariable no_password_{"ORVALO_PASSWORD", nullptr};
  TemporaryFolder folder_;
  TemporaryFolder outside_;
};

}  // namespace orvalo::test
