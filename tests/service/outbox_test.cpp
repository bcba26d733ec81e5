#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <mutex>
#include <set>
#include <sstream>
#include <thread>

#include "service/part_state.h"
#include "service/running_service.h"
#include "service/secrets.h"
#include "support/scripted_http_server.h"

namespace orvalo::test {
namespace {

using service::PartState;
using testing::HasSubstr;

TEST(PartStates, FollowReportsInAnyOrder) {
  const struct {
    std::vector<std::pair<int, const char*>> reports;
    PartState after;
  } cases[] = {
      {{{8, ""}}, PartState::kAtNetwork},
      {{{4, ""}, {8, ""}}, PartState::kAtNetwork},
      {{{1, ""}, {8, ""}}, PartState::kDelivered},
      {{{8, ""}, {2, "stat:UNDELIV"}, {8, ""}}, PartState::kUndelivered},
      {{{2, "stat:UNDELIV"}, {1, ""}, {2, ""}}, PartState::kDelivered},
      {{{34, "stat:EXPIRED"}, {4, ""}}, PartState::kExpired},
      {{{2, "stat:DELETED"}}, PartState::kDeleted},
      {{{16, "NACK/0x0000000b/Invalid Destination Address"}, {8, ""}}, PartState::kUnroutable},
      {{{16, "NACK/no SMSC"}}, PartState::kUnroutable},
      {{{16, "NACK/0x00000045/Submit failed"}}, PartState::kRefused},
      {{{9, ""}}, PartState::kDelivered},  // bits, not numbers
  };
  for (const auto start : {PartState::kAsked, PartState::kInDoubt, PartState::kTaken,
                           PartState::kWrittenOff, PartState::kOutdated}) {
    for (const auto& one : cases) {
      auto state = start;
      for (const auto& [bits, detail] : one.reports) {
        state = service::AfterReport(state, bits, detail);
      }
      EXPECT_EQ(state, one.after) << NameOf(start) << " " << one.reports.front().first;
    }
  }
}

// An engine that takes everything and reports nothing, in place of a real one: what the clock does
// to messages.
class OutboxTest : public testing::Test {
 protected:
  OutboxTest() {
    service::KannelOptions kannel;
    kannel.urls = {engine_.address() + "/sendsms"};
    kannel.user = "orvalo";
    kannel.password = "secret";
    kannel.status_url = engine_.address() + "/status.xml";
    kannel.sender = "Orvalo";
    kannel.connections = 2;
    running_.options.kannel = kannel;
    running_.options.operations.emplace();
    running_.options.report = [this](const std::string& line) {
      std::lock_guard guard(mutex_);
      log_ += line + "\n";
    };
    running_.Restart();
  }

  ScriptedReply Answer(const RecordedRequest& request) {
    if (request.path.starts_with("/status.xml")) {
      return {.body =
                  "<gateway><status>running</status><smscs><smsc><status>online 5s</status>"
                  "<queued>0</queued></smsc></smscs></gateway>"};
    }
    return {.status = answer_, .body = answer_ == 202 ? "0: Accepted for delivery" : answer_text_};
  }
  std::vector<RecordedRequest> Asked() {
    auto requests = engine_.requests();
    std::erase_if(requests, [](const auto& request) { return request.method != "POST"; });
    return requests;
  }
  bool AwaitAsked(std::size_t count) {
    for (int i = 0; i < 1'000 && Asked().size() < count; ++i) {
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return Asked().size() == count;
  }
  bool AwaitStatus(GatewayCaller& caller, const std::string& id, int status) {
    for (int i = 0; i < 1'000; ++i) {
      if (caller.Get("/v1/messages/" + id).body.value("status", 0) == status) return true;
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return false;
  }
  void Pass(std::int64_t seconds) {
    running_.clock.Advance(seconds * 1000);
    running_.service().kannel()->warden().Reconcile();
  }

  std::mutex mutex_;
  std::string log_;
  std::atomic<int> answer_ = 202;
  std::string answer_text_;
  ScriptedHttpServer engine_{[this](const RecordedRequest& request) { return Answer(request); }};
  RunningService running_;
};

TEST_F(OutboxTest, HoldsALaterDeliveryAndLetsTimeDecideWhatIsNeverReported) {
  auto ann = running_.Caller();
  const auto id =
      ann.Post("/v1/messages", {{"to", "27821110001"}, {"text", "Hi"}, {"delivery_minutes", 10}})
          .body.value("id", "");
  EXPECT_TRUE(AwaitStatus(ann, id, 11));
  running_.clock.Advance(599'000);
  EXPECT_EQ(ann.Get("/v1/messages/" + id).body.value("status", 0), 11);
  EXPECT_TRUE(Asked().empty());
  running_.clock.Advance(1'000);
  ASSERT_TRUE(AwaitAsked(1));
  const auto request = Asked().front();
  EXPECT_EQ(request.header("x-kannel-password"), "secret");
  EXPECT_EQ(request.path.find("secret"), std::string::npos);
  ASSERT_TRUE(AwaitStatus(ann, id, 2));
  const auto report = request.header("x-kannel-dlr-url");
  const auto key = report.substr(report.find("/reports/") + 9, 32);

  Pass(500);
  EXPECT_EQ(ann.Get("/v1/messages/" + id).body.value("status", 0), 2);
  Pass(200);  // an idle engine owes no report for so long
  EXPECT_EQ(ann.Get("/v1/messages/" + id).body.value("status", 0), 1);
  EXPECT_TRUE(running_.service().kannel()->TakeReport(service::FromHex(key), "27821110001", 8, ""));
  EXPECT_EQ(ann.Get("/v1/messages/" + id).body.value("status", 0), 3);
  Pass(49 * 3'600 + 1);
  auto later = running_.Caller();
  EXPECT_EQ(later.Get("/v1/messages/" + id).body.value("status", 0), 10);
  EXPECT_EQ(later.Get("/v1/messages/" + id).body.value("charge", ""), "0.8");
  running_.Restart();
  EXPECT_TRUE(running_.service().kannel()->TakeReport(service::FromHex(key), "27821110001", 1, ""));
  auto again = running_.Caller();
  EXPECT_EQ(again.Get("/v1/messages/" + id).body.value("status", 0), 4) << "late, but true";
  EXPECT_TRUE(running_.LedgerAddsUp());
}

TEST_F(OutboxTest, KeepsWhatABusyEngineTurnsAwayUntilItsTimeHasPassed) {
  answer_text_ = "Temporal failure, try again later.";
  answer_ = 503;
  auto ann = running_.Caller();
  const auto first = ann.Message("27821110001").body.value("id", "");
  ASSERT_TRUE(AwaitAsked(1));
  for (std::size_t attempt = 2; attempt <= 4; ++attempt) {
    for (int i = 0; i < 200 && Asked().size() < attempt; ++i) {
      running_.clock.Advance(1'000);
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    EXPECT_EQ(Asked().size(), attempt);
    EXPECT_TRUE(AwaitStatus(ann, first, 2));
  }
  EXPECT_EQ(ann.Balance(), "99.2");
  running_.clock.Advance(48 * 3'600 * 1'000);
  auto later = running_.Caller();
  for (int i = 0; i < 500 && later.Balance() != "100.0"; ++i) Pass(0);  // not while it is asked
  EXPECT_EQ(later.Balance(), "100.0") << "nothing was used";
  EXPECT_TRUE(AwaitStatus(later, first, 10));
  EXPECT_THAT(log_, HasSubstr("\"event\":\"parts_reconciled\""));
  EXPECT_EQ(log_.find("27821110001"), std::string::npos);
  EXPECT_TRUE(running_.LedgerAddsUp());
}

TEST_F(OutboxTest, AsksForManyReceiversAtOnceAndForNoneTwice) {
  auto ann = running_.Caller();
  nlohmann::json numbers = nlohmann::json::array();
  for (int i = 0; i < 110; ++i) numbers.push_back(std::to_string(2782000000 + i % 105));
  const auto batch = ann.Post("/v1/batches", {{"text", std::string(161, 'x')}, {"concat", 3}})
                         .body.value("batch", "");
  running_.service().accounts().AddCredit("ann", 1'000'000);
  ASSERT_EQ(ann.Post("/v1/batches/" + batch + "/recipients", {{"to", numbers}}).status, 200);
  std::size_t receivers = 0;
  const auto total = [&] {
    receivers = 0;
    for (const auto& request : Asked()) {
      const auto to = request.header("x-kannel-to");
      receivers += static_cast<std::size_t>(std::count(to.begin(), to.end(), ' ')) + 1;
    }
    return receivers;
  };
  for (int i = 0; i < 1'000 && total() < 220; ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  EXPECT_EQ(receivers, 220u);
  EXPECT_LT(Asked().size(), 10u);
  std::set<std::string> keys;
  for (const auto& request : Asked()) {
    EXPECT_TRUE(keys.insert(request.header("x-kannel-dlr-url")).second);
    std::istringstream words(request.header("x-kannel-to"));
    std::set<std::string> seen;
    for (std::string number; words >> number;) EXPECT_TRUE(seen.insert(number).second) << number;
  }
}

}  // namespace
}  // namespace orvalo::test
