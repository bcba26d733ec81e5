#include <unistd.h>

#include <chrono>
#include <csignal>
#include <functional>
#include <thread>

#include "orvaloctl_fixture.h"

namespace orvalo::test {
namespace {

// Runs of the engine without a gateway: offline, where it only makes due messages Pending.
class EngineTest : public OrvaloctlTest {
 protected:
  void SetUp() override {
    Init();
    ASSERT_THAT(Run({"settings", "WorkingOnLine", "0"}), EndsWith(0));
    SmsDatabase database(folder(), texts_, clock_);
    NewSms sms;
    sms.status = SmsStatus::kScheduled;
    sms.time = static_cast<std::int32_t>(clock_.Now() + 30);
    sms.to = ",27820000001";
    sms.msg = "due soon";
    database.AddSms(sms);
  }

  // Looks into the store from outside until the engine has made the message Pending; for 10
  // seconds.
  bool BecomesPending() {
    SmsDatabase database(folder(), texts_, clock_, true);
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (database.PendingSms(1).empty()) {
      if (std::chrono::steady_clock::now() > end) return false;
      std::this_thread::yield();
    }
    return true;
  }

  // Runs a command, and `meanwhile` once the engine and the command wait for each other.
  Outcome RunMeanwhile(const std::vector<std::string>& args,
                       const std::function<void()>& meanwhile) {
    std::thread other([&] {
      // A signal that this thread sends is for the others: it ends before it would handle one.
      sigset_t signals;
      sigemptyset(&signals);
      sigaddset(&signals, SIGTERM);
      sigaddset(&signals, SIGINT);
      pthread_sigmask(SIG_BLOCK, &signals, nullptr);
      if (clock_.AwaitWaiters(2)) meanwhile();
    });
    Outcome outcome = Json(args);
    other.join();
    return outcome;
  }
};

TEST_F(EngineTest, EndsWhenItsTimeIsUp) {
  const Outcome outcome = RunMeanwhile({"run", "--for", "20"}, [&] { clock_.Advance(20'000); });
  EXPECT_THAT(outcome, FailsWith(0, "offline"));
  EXPECT_EQ(outcome.out, "[]\n");
  EXPECT_EQ(StoredMessages().at(0).stat, static_cast<int>(SmsStatus::kScheduled));
}

TEST_F(EngineTest, EndsOnASignalWithAllItHasDoneInTheStore) {
  for (const int signal : {SIGTERM, SIGINT}) {
    EXPECT_THAT(RunMeanwhile({"run"}, [&] { kill(getpid(), signal); }), EndsWith(0));
  }
  EXPECT_EQ(StoredMessages().at(0).stat, static_cast<int>(SmsStatus::kScheduled));
  const Outcome outcome = RunMeanwhile({"run"}, [&] {
    clock_.Advance(60'000);  // the engine's minute
    EXPECT_TRUE(BecomesPending());
    kill(getpid(), SIGTERM);
  });
  EXPECT_THAT(outcome, FailsWith(9, "Queued, but not sent: 1 message"));
  EXPECT_EQ(StoredMessages().at(0).stat, static_cast<int>(SmsStatus::kPending));
  EXPECT_THAT(Run({"run", "--for", "0"}), EndsWith(2));
}

}  // namespace
}  // namespace orvalo::test
