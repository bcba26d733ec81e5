// Programs that are killed, stopped and cut off in the middle of sending: nobody gets a message
// twice, nothing that was reported is lost, and no recipient vanishes.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <chrono>
#include <map>
#include <nlohmann/json.hpp>
#include <set>
#include <thread>

#include "app/texts.h"
#include "cli/exit_code.h"
#include "store/sms_database.h"
#include "support/fake_clock.h"
#include "support/gateway_program.h"
#include "support/scoped_variable.h"
#include "support/temporary_folder.h"

namespace orvalo::test {
namespace {

using ::testing::HasSubstr;

class FaultsTest : public ::testing::Test {
 protected:
  void Serve(const std::vector<std::string>& options, int port = 0) {
    std::vector<std::string> all{"--demo", "--sim-delivery-seconds", "0"};
    all.insert(all.end(), options.begin(), options.end());
    service_ = std::make_unique<GatewayProgram>(service_folder_.path(), all, port);
    ASSERT_NE(service_->port(), 0);
  }
  void LogIn() {
    ASSERT_EQ(Ctl({"init", "--gateway", service_->url()}).status, 0);
    ASSERT_EQ(Ctl({"login", "demo", "--remember"}).status, 0);
    ASSERT_EQ(Ctl({"settings", "WriteLog", "1"}).status, 0);
  }
  ProgramResult Ctl(const std::vector<std::string>& arguments) {
    return RunProgram(Words(arguments));
  }
  std::unique_ptr<ChildProcess> StartCtl(const std::vector<std::string>& arguments) {
    return std::make_unique<ChildProcess>(Words(arguments), "/dev/null", "/dev/null");
  }
  std::vector<std::string> Words(const std::vector<std::string>& arguments) {
    std::vector<std::string> words{ORVALOCTL, "--data", client_.path()};
    words.insert(words.end(), arguments.begin(), arguments.end());
    return words;
  }

  static std::string Numbers(int count) {
    std::string numbers;
    for (int i = 0; i < count; ++i)
      numbers += (i == 0 ? "" : ",") + std::to_string(27820000000LL + 10LL * i);
    return numbers;
  }
  // How often each number stands in the ledger, and the ids that it was given.
  void ReadLedger() {
    times_.clear();
    ids_.clear();
    for (const std::string& line : service_->Ledger()) {
      const auto entry = nlohmann::json::parse(line);
      ++times_[entry.at("number").get<std::string>()];
      ids_.insert(entry.at("id").get<std::string>());
    }
  }
  // All done, or some messages are still on their way when the time is up.
  static auto EndsInTime() {
    return testing::AnyOf(static_cast<int>(cli::ExitCode::kDone),
                          static_cast<int>(cli::ExitCode::kNoFinalStatus));
  }
  bool AwaitAccepted(std::size_t count) {
    for (int tries = 0; tries < 200; ++tries) {
      if (service_->Ledger().size() >= count) return true;
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return false;
  }
  void ExpectNobodyTwice() {
    for (const auto& [number, times] : times_) EXPECT_EQ(times, 1) << number;
  }
  std::vector<MessageRow> Rows() {
    return SmsDatabase(client_.path(), texts_, clock_, /*read_only=*/true).AllSms();
  }
  std::map<int, int> Statuses() {
    std::map<int, int> count;
    for (const MessageRow& row : Rows()) ++count[row.stat];
    return count;
  }

  // The gateway's ids in the outbox.
  static std::set<std::string> IdsOf(const std::vector<MessageRow>& rows) {
    std::set<std::string> ids;
    for (const MessageRow& row : rows) {
      if (row.api_msg_id.size() > 5) ids.insert(row.api_msg_id.substr(5));
    }
    return ids;
  }

  ScopedVariable password_{"ORVALO_PASSWORD", "demo"};
  TemporaryFolder client_, service_folder_;
  std::unique_ptr<GatewayProgram> service_;
  std::map<std::string, int> times_;
  std::set<std::string> ids_;
  Texts texts_;
  FakeClock clock_;
};

// However often it dies in the middle, also with a contact edited in between.
TEST_F(FaultsTest, AKilledClientGoesOnWhereItWas) {
  Serve({"--sim-latency-ms", "10"});
  LogIn();
  ASSERT_EQ(Ctl({"group", "add", "Friends"}).status, 0);
  ASSERT_EQ(
      Ctl({"contact", "add", "--name", "Ann", "--mobile", "27839999990", "--group", "Friends"})
          .status,
      0);
  auto sending = StartCtl({"send", "--to", Numbers(99), "--contact", "1", "--type", "flash",
                           "--text", "x", "--wait", "100"});
  for (std::size_t kills = 1; kills <= 3; ++kills) {
    ASSERT_TRUE(AwaitAccepted(20 * kills));
    sending->Signal(SIGKILL);
    EXPECT_EQ(sending->Wait(), -1);
    ASSERT_EQ(Rows().size(), 1u);
    EXPECT_EQ(Rows()[0].stat, static_cast<int>(SmsStatus::kProcessing));
    if (kills == 1) {
      ASSERT_EQ(Ctl({"contact", "edit", "1", "--mobile", "27838888880"}).status, 0);
    }
    sending = StartCtl({"run", "--for", "100"});
  }
  ASSERT_TRUE(AwaitAccepted(100));
  sending->Signal(SIGTERM);
  sending->Wait();
  EXPECT_THAT(Ctl({"run", "--for", "2"}).status, EndsInTime());
  ReadLedger();
  ExpectNobodyTwice();
  EXPECT_EQ(times_.size(), 100u);
  EXPECT_EQ(times_.count("27839999990"), 1u) << "who gets it was fixed when the sending began";
  EXPECT_EQ(Rows().size(), 101u);
  EXPECT_EQ(Statuses()[static_cast<int>(SmsStatus::kFailed)], 0);
  EXPECT_EQ(IdsOf(Rows()), ids_);
  EXPECT_THAT(Slurp(client_.File("SMS.log")),
              HasSubstr("Sending was interrupted and goes on: SMS_ID (1)"));
}

// A service that is down for a while, and one that dies: nobody is told "Failed".
TEST_F(FaultsTest, AnOutageFailsNobody) {
  Serve({"--sim-latency-ms", "20"});
  LogIn();
  auto sending =
      StartCtl({"send", "--to", Numbers(40), "--type", "flash", "--text", "x", "--wait", "60"});
  ASSERT_TRUE(AwaitAccepted(10));
  EXPECT_EQ(service_->Stop(SIGKILL), -1);
  Serve({}, service_->port());
  sending->Wait();
  ReadLedger();
  ExpectNobodyTwice();
  EXPECT_EQ(times_.size(), 40u);
  EXPECT_EQ(Rows().size(), 41u);
  EXPECT_EQ(Statuses()[static_cast<int>(SmsStatus::kFailed)], 0);
  EXPECT_EQ(IdsOf(Rows()), ids_);
}

TEST_F(FaultsTest, AStopInTheMiddleOfABatchLeavesTheRestPending) {
  Serve({"--sim-latency-ms", "100"});
  LogIn();
  auto sending = StartCtl({"send", "--to", Numbers(400), "--text", "x", "--wait", "100"});
  ASSERT_TRUE(AwaitAccepted(40));
  sending->Signal(SIGTERM);
  sending->Wait();
  auto statuses = Statuses();
  EXPECT_EQ(statuses[static_cast<int>(SmsStatus::kExpanded)], 1);
  EXPECT_GT(statuses[static_cast<int>(SmsStatus::kPending)], 0);
  EXPECT_EQ(Rows().size(), 401u);

  service_->Stop(SIGTERM);
  Serve({});
  ASSERT_EQ(Ctl({"settings", "COMBaseURL", service_->url()}).status, 0);
  for (int runs = 0; runs < 10 && times_.size() < 400; ++runs) {  // one will do, but on a slow disk
    EXPECT_THAT(Ctl({"run", "--for", "3"}).status, EndsInTime());
    ReadLedger();
    ExpectNobodyTwice();
  }
  EXPECT_EQ(times_.size(), 400u);
}

TEST_F(FaultsTest, LostRepliesSendNothingTwice) {
  Serve({"--sim-drop-reply", "0.1"});
  LogIn();
  Ctl({"send", "--to", Numbers(60), "--text", "batch", "--wait", "60"});
  ReadLedger();
  ExpectNobodyTwice();
  EXPECT_EQ(times_.size(), 60u);
  auto statuses = Statuses();
  EXPECT_EQ(statuses[static_cast<int>(SmsStatus::kDelivered)], 60);
}

}  // namespace
}  // namespace orvalo::test
