#include "service/outbox.h"

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <mutex>
#include <set>
#include <sstream>
#include <thread>

#include "service/running_service.h"
#include "service/secrets.h"
#include "support/scripted_http_server.h"

namespace orvalo::test {
namespace {

namespace outbox = service::outbox;
using service::PartEvent;
using service::PartState;
using testing::HasSubstr;

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
      ++polls_;
      return {.body =
                  "<gateway><status>running" + Uptime() + "</status><smscs><smsc><status>" +
                  std::string(link_) + "</status><queued>0</queued></smsc>" +
                  (has_dead_link_ ? "<smsc><status>dead</status><queued>0</queued></smsc>" : "") +
                  "</smscs></gateway>"};
    }
    return {.status = answer_,
            .body = answer_ == 202 ? "0: Accepted for delivery" : answer_text_,
            .wait = before_reply_};
  }
  std::string Uptime() const {
    const int up = uptime_;
    return up < 0 ? "" : fmt::format(", uptime {}d 0h 0m {}s", up / 86'400, up % 86'400);
  }
  // Time passes; the status page is read, and what it says has been dealt with.
  void PollWithUptime(int uptime, int seconds) {
    uptime_ = uptime;
    for (const int pause : {seconds, 2}) {
      ASSERT_TRUE(running_.clock.AwaitWaiters(2));  // who reads ahead, and who reads the page
      const int before = polls_;
      running_.clock.Advance(pause * 1'000);
      for (int i = 0; i < 1'000 && polls_ == before; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
      }
      uptime_ = uptime_ + 2;
    }
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

  std::string Operations(const std::string& path, int* status = nullptr) {
    platform::HttpClient client;
    platform::HttpRequest request;
    request.url = "http://127.0.0.1:" + std::to_string(running_.service().operations_port()) + path;
    const auto reply = client.Perform(request);
    if (status != nullptr) *status = reply.status;
    return reply.body;
  }
  // A delivery report under the key of what was asked for the number: the reply's status.
  int Report(const std::string& asked, const std::string& query) {
    std::string path;
    for (const auto& request : Asked()) {
      if (request.header("x-kannel-to").find(asked) == std::string::npos) continue;
      const auto url = request.header("x-kannel-dlr-url");
      path = url.substr(url.find("/reports/"), 9 + 32);
    }
    int status = 0;
    Operations(path + "?" + query, &status);
    return status;
  }

  std::mutex mutex_;
  std::string log_;
  std::atomic<const char*> link_ = "online 5s";
  std::atomic<bool> has_dead_link_ = false;
  std::atomic<int> answer_ = 202, uptime_ = -1, polls_ = 0;
  std::string answer_text_;
  std::function<void()> before_reply_;  // of the engine
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
  EXPECT_TRUE(AwaitStatus(ann, id, 1));
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

// The engine tells a report again until it is told 200.
TEST_F(OutboxTest, AcknowledgesWhatIsOnTheDiskAndWhatIsNotKnownHere) {
  auto ann = running_.Caller();
  const auto id = ann.Message("27821110001").body.value("id", "");
  ASSERT_TRUE(AwaitAsked(1));
  ASSERT_TRUE(AwaitStatus(ann, id, 2));
  const auto status = [&] { return ann.Get("/v1/messages/" + id).body.value("status", 0); };
  const auto forged = "/reports/" + std::string(32, '0') + "?to=27821110001&type=1";
  int reply = 0;
  for (int i = 0; i < 3; ++i) {
    Operations(forged, &reply);
    EXPECT_EQ(reply, 200);
  }
  EXPECT_EQ(Report("27821110001", "to=27821110002&type=1"), 200) << "somebody else's";
  for (const char* malformed : {"to=27821110001&type=99", "to=27821110001&type=1x", "type=1",
                                "to=27821110001", "to=27821110001&type=0"}) {
    EXPECT_EQ(Report("27821110001", malformed), 404) << malformed;
  }
  Operations("/reports/00?to=27821110001&type=1", &reply);
  EXPECT_EQ(reply, 404);
  EXPECT_EQ(status(), 2);

  const auto change = [&](const char* sql) {
    running_.service().database().Write(
        [sql](service::Connection& connection) { connection.database().exec(sql); });
  };
  change("CREATE TRIGGER broken BEFORE UPDATE ON outbox BEGIN SELECT RAISE(ABORT,'broken'); END");
  EXPECT_EQ(Report("27821110001", "to=27821110001&type=8"), 500) << "it must be told again";
  change("DROP TRIGGER broken");
  EXPECT_EQ(status(), 2);
  EXPECT_EQ(Report("27821110001", "to=27821110001&type=8"), 200);
  EXPECT_EQ(status(), 3);

  // A receipt may be long, within reason; and what it says beyond a screen is not kept.
  EXPECT_GE(Report("27821110001", "to=27821110001&type=2&detail=" + std::string(20'000, 'x')), 400);
  EXPECT_EQ(status(), 3);
  EXPECT_EQ(Report("27821110001", "to=27821110001&type=2&detail=" + std::string(400, 'x') +
                                      "+stat%3ADELETED+" + std::string(5'000, 'y')),
            200);
  EXPECT_EQ(status(), 6);
  running_.service().database().Read([](service::Connection& connection) {
    service::outbox::ForEach(connection, false, [](const auto& row) {
      EXPECT_THAT(row.reason, HasSubstr("stat:DELETED"));
      EXPECT_EQ(row.reason.size(), 1'024u);
    });
  });
  EXPECT_EQ(Report("27821110001", "to=27821110001&type=8"), 200);
  EXPECT_EQ(Report("27821110001", "to=27821110001&type=4"), 200);

  const auto metrics = Operations("/metrics");
  for (const char* line :
       {"{outcome=\"unknown\"} 4\n", "{outcome=\"malformed\"} 6\n", "{outcome=\"failed\"} 1\n",
        "{outcome=\"applied\"} 2\n", "{outcome=\"repeated\"} 1\n", "{outcome=\"late\"} 1\n"}) {
    EXPECT_THAT(metrics, HasSubstr(std::string("orvalo_reports_total") + line));
  }
  EXPECT_THAT(log_, HasSubstr("\"event\":\"reports_unknown\",\"reports\":\"1\""));
  const auto line = log_.find("reports_unknown");
  EXPECT_EQ(log_.find("reports_unknown", line + 1), std::string::npos) << "one a minute";
}

TEST_F(OutboxTest, TellsAMonitorWhatItDoesByNamesThatNeverGrow) {
  auto ann = running_.Caller();
  auto bob = running_.Caller("bob");
  ann.Post("/v1/messages", {{"to", "27821110001"}, {"text", std::string(200, 'x')}, {"concat", 2}});
  ann.Post("/v1/messages", {{"to", "27821110001"}, {"text", "Hi"}, {"delivery_minutes", 10}});
  EXPECT_EQ(bob.Message("12").status, 422);
  EXPECT_EQ(bob.Get("/v1/nothing").status, 404);
  const auto batch = bob.Post("/v1/batches", {{"text", "Hi"}}).body.value("batch", "");
  const nlohmann::json numbers{
      {"to", {"27821110002", "x", "27821110003", "27821110004", "27821110005"}}};
  const auto key = NewKey();
  for (int i = 0; i < 2; ++i) bob.Post("/v1/batches/" + batch + "/recipients", numbers, key);
  ASSERT_TRUE(AwaitAsked(3));
  constexpr const char* kTaken = "orvalo_outbox_parts{state=\"taken\"} ";
  for (int i = 0;
       i < 500 && Operations("/metrics").find(kTaken + std::string("4")) == std::string::npos;
       ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  EXPECT_EQ(Report("27821110002", "to=27821110002&type=16&detail=NACK%2F0x0000000b"), 200);

  const auto metrics = Operations("/metrics");
  for (const char* line :
       {"orvalo_messages_accepted_total 4\n", "orvalo_parts_accepted_total 5\n",
        "orvalo_refusals_total{reason=\"bad_number\"} 2\n",
        "orvalo_refusals_total{reason=\"no_credit\"} 2\n",
        "orvalo_refusals_total{reason=\"no_such_path\"} 1\n", "orvalo_refunded_parts_total 1\n",
        "orvalo_refunded_credits_total 0.8\n",
        "orvalo_reported_parts_total{state=\"unroutable\"} 1\n",
        "orvalo_outbox_parts{state=\"held\"} 1\n", "orvalo_outbox_parts{state=\"waiting\"} 0\n",
        "orvalo_outbox_parts{state=\"taken\"} 3\n", "orvalo_engine_links_usable 1\n",
        "orvalo_engine_parts_total{answer=\"taken\"} 4\n", "orvalo_carrier_healthy 1\n"}) {
    EXPECT_THAT(metrics, HasSubstr(line));
  }
  // Each name is introduced once, and its lines follow.
  std::set<std::string> names;
  std::string name, type;
  std::istringstream lines(metrics);
  for (std::string line; std::getline(lines, line);) {
    std::istringstream words(line);
    std::string hash, word, of;
    if (line.starts_with("# HELP ")) {
      words >> hash >> word >> name;
      EXPECT_TRUE(names.insert(name).second) << name;
      EXPECT_FALSE((words >> word).fail()) << name << " is not explained";
      continue;
    }
    if (line.starts_with("# TYPE ")) {
      words >> hash >> word >> of >> type;
      EXPECT_EQ(of, name);
      EXPECT_EQ(type == "counter", name.ends_with("_total")) << name;
      continue;
    }
    EXPECT_EQ(line.substr(0, line.find_first_of("{ ")), name);
  }
  EXPECT_GT(names.size(), 10u);
}

TEST_F(OutboxTest, IsReadyOnlyWhileALinkIsOnline) {
  const auto ready = [this] { return Operations("/ready"); };
  PollWithUptime(100, 10);
  EXPECT_EQ(ready(), "ready\n");
  for (const char* link : {"re-connecting", "connecting", "disconnected", "dead"}) {
    link_ = link;
    PollWithUptime(uptime_, 10);
    EXPECT_EQ(ready(), "the network is not available\n") << link;
    EXPECT_THAT(Operations("/metrics"), HasSubstr("orvalo_carrier_healthy 0\n"));
    EXPECT_THAT(Operations("/metrics"), HasSubstr("orvalo_engine_links_usable 0\n"));
    EXPECT_THAT(log_, HasSubstr("no link to a network is up"));
  }
  link_ = "online 1s";
  PollWithUptime(uptime_, 10);
  EXPECT_EQ(ready(), "ready\n");
}

TEST_F(OutboxTest, DoubtsWhatAnEngineHadThatWasRestarted) {
  PollWithUptime(86'400 * 3, 10);
  auto ann = running_.Caller();
  const auto status = [&](const std::string& id) {
    return ann.Get("/v1/messages/" + id).body.value("status", 0);
  };
  const auto first = ann.Message("27821110001").body.value("id", "");
  ASSERT_TRUE(AwaitAsked(1));
  // The engine's clock is set back, and forth: it runs on all the same.
  for (const int uptime : {86'400 * 2, 90'000, 300, 40}) {
    PollWithUptime(uptime, 30);
    EXPECT_EQ(status(first), 2) << uptime;
  }
  PollWithUptime(4, 30);
  EXPECT_TRUE(AwaitStatus(ann, first, 1));
  const auto second = ann.Message("27821110002").body.value("id", "");
  ASSERT_TRUE(AwaitAsked(2));
  PollWithUptime(44, 36);
  EXPECT_EQ(status(second), 2) << "the new one has it";
  EXPECT_EQ(Report("27821110001", "type=8&to=27821110001&detail="), 200);
  EXPECT_EQ(status(first), 3) << "its report was on the way";
  EXPECT_EQ(ann.Balance(), "98.4");
  uptime_ = 3;
  running_.clock.Advance(60'000);
  running_.Restart();  // neither saw the other end
  auto later = running_.Caller();
  EXPECT_TRUE(AwaitStatus(later, second, 1));
  EXPECT_EQ(Asked().size(), 2u) << "nothing is handed over again by itself";
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
  const auto asked = Asked().size();
  answer_ = 202;  // too late, also for a service that was away meanwhile
  running_.Restart(48 * 3'600);
  auto later = running_.Caller();
  ASSERT_TRUE(running_.clock.AwaitWaiters(2));  // who reads ahead has looked
  std::this_thread::sleep_for(std::chrono::milliseconds(300));
  EXPECT_EQ(Asked().size(), asked);
  for (int i = 0; i < 500 && later.Balance() != "100.0"; ++i) Pass(0);  // not while it is asked
  EXPECT_EQ(later.Balance(), "100.0") << "nothing was used";
  EXPECT_TRUE(AwaitStatus(later, first, 10));
  EXPECT_THAT(log_, HasSubstr("\"event\":\"parts_reconciled\""));
  EXPECT_EQ(log_.find("27821110001"), std::string::npos);
  EXPECT_TRUE(running_.LedgerAddsUp());
}

// A message of two parts, neither of which anybody knows about; one then turns out to be refused.
TEST_F(OutboxTest, SendsNoHalfOfAMessageThatWasRefusedAndGivesItsPriceBackOnce) {
  answer_ = 500;
  auto ann = running_.Caller();
  const nlohmann::json message{
      {"to", "27821110001"}, {"text", std::string(200, 'x')}, {"concat", 2}};
  const auto id = ann.Post("/v1/messages", message).body.value("id", "");
  ASSERT_TRUE(AwaitStatus(ann, id, 1));
  ASSERT_TRUE(AwaitAsked(2));
  const auto happen = [this](int part, PartEvent event) {
    std::optional<outbox::Moved> moved;
    running_.service().database().Write([&](service::Connection& connection) {
      moved = outbox::Happen(connection, {1, part}, event, running_.clock.Now(), "");
    });
    return moved ? moved->after : PartState::kDelivered;
  };
  EXPECT_EQ(happen(1, PartEvent::kReportRefused), PartState::kRefused);
  EXPECT_EQ(ann.Balance(), "99.2");
  EXPECT_EQ(happen(0, PartEvent::kDecidedAgain), PartState::kWithdrawn);
  EXPECT_EQ(ann.Balance(), "100.0");
  // It was at the network after all, and comes to the same end there.
  EXPECT_EQ(happen(0, PartEvent::kReportAtNetwork), PartState::kAtNetwork);
  EXPECT_EQ(happen(0, PartEvent::kReportRefused), PartState::kRefused);
  EXPECT_EQ(ann.Balance(), "100.0");
  EXPECT_EQ(ann.Get("/v1/messages/" + id).body.value("charge", ""), "0.0");
  EXPECT_THAT(Operations("/metrics"), HasSubstr("orvalo_refunded_parts_total 2\n"));
  EXPECT_TRUE(running_.LedgerAddsUp());
  EXPECT_EQ(Asked().size(), 2u);
}

// Reports may overtake the reply to the request that they are about.
TEST_F(OutboxTest, LetsNoLateReplyOverwriteAReport) {
  running_.options.kannel->connections = 1;
  running_.Restart();
  answer_ = 400;
  before_reply_ = [this] { Report("27821110001", "type=1&to=27821110001"); };
  auto ann = running_.Caller();
  const auto first = ann.Message("27821110001").body.value("id", "");
  ASSERT_TRUE(AwaitStatus(ann, first, 4));
  const auto second = ann.Message("27821110002").body.value("id", "");
  ASSERT_TRUE(AwaitStatus(ann, second, 5)) << "so the first one's reply has been written, too";
  EXPECT_EQ(ann.Get("/v1/messages/" + first).body.value("status", 0), 4);
  EXPECT_EQ(ann.Balance(), "99.2");

  // A reply to the first request about a part that has been asked again meanwhile.
  ann.Post("/v1/messages", {{"to", "27821110003"}, {"text", "Hi"}, {"delivery_minutes", 10}});
  const auto now = running_.clock.Now();
  running_.service().database().Write([&](service::Connection& connection) {
    const outbox::PartId part{3, 0};
    const std::string one(16, '1'), two(16, '2');
    EXPECT_TRUE(outbox::Ask(connection, part, one, now));
    EXPECT_FALSE(outbox::Ask(connection, part, two, now));
    EXPECT_TRUE(outbox::Happen(connection, part, PartEvent::kReportNoLink, now + 9, ""));
    EXPECT_TRUE(outbox::Ask(connection, part, two, now));
    outbox::Answer(connection, part, one, PartEvent::kAnswerMalformed, now, "");
    EXPECT_EQ(outbox::CountOpen(connection, PartState::kAsked), 1);
    outbox::Answer(connection, part, two, PartEvent::kAnswerTaken, now, "");
    EXPECT_EQ(outbox::CountOpen(connection, PartState::kTaken), 1);
  });
}

// Engines say the same of a number without a route and of one whose only link is down.
TEST_F(OutboxTest, BelievesThatThereIsNoRouteWhenAllLinksAreUp) {
  answer_text_ = "Not routable. Do not try again.";
  answer_ = 403;
  has_dead_link_ = true;
  auto ann = running_.Caller();
  const auto id = ann.Message("27821110001").body.value("id", "");
  const auto batch = ann.Post("/v1/batches", {{"text", "Hi"}}).body.value("batch", "");
  const auto results =
      ann.Post("/v1/batches/" + batch + "/recipients", {{"to", {"27821110002", "27821110003"}}})
          .body.at("results");
  ASSERT_TRUE(AwaitAsked(2));
  const auto refuse = [this](const std::string& number) {
    return Report(number, "type=16&to=" + number + "&detail=NACK%2Fno+SMSC");
  };
  for (const char* number : {"27821110001", "27821110002", "27821110003"}) {
    EXPECT_EQ(refuse(number), 200) << number;
  }
  EXPECT_EQ(ann.Get("/v1/messages/" + id).body.value("status", 0), 2);
  EXPECT_EQ(ann.Balance(), "97.6");
  has_dead_link_ = false;
  for (int i = 0; i < 500 && Asked().size() < 4; ++i) {
    running_.clock.Advance(1'000);
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  EXPECT_EQ(Asked().size(), 4u) << "each once more, whichever way it was told";
  EXPECT_TRUE(AwaitStatus(ann, id, 9));
  for (const auto& result : results) {
    EXPECT_EQ(ann.Get("/v1/messages/" + result.value("id", "")).body.value("status", 0), 2);
  }
  for (const char* number : {"27821110002", "27821110003"}) EXPECT_EQ(refuse(number), 200);
  for (const auto& result : results) EXPECT_TRUE(AwaitStatus(ann, result.at("id"), 9));
  EXPECT_EQ(ann.Balance(), "100.0");
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
  // A number that is given twice gets two messages whose parts no phone can mix up.
  std::set<std::string> keys;
  std::set<std::pair<std::string, std::string>> parts;
  for (const auto& request : Asked()) {
    EXPECT_TRUE(keys.insert(request.header("x-kannel-dlr-url")).second);
    std::istringstream words(request.header("x-kannel-to"));
    int receivers_of_one = 0;
    for (std::string number; words >> number; ++receivers_of_one) {
      EXPECT_TRUE(parts.emplace(number, request.header("x-kannel-udh")).second) << number;
    }
    EXPECT_LE(receivers_of_one, running_.options.kannel->receivers);
  }

  // A full queue turns some of several away, and never tells which.
  answer_text_ = "Temporal failure, try again later.";
  answer_ = 503;
  const auto before = Asked().size();
  const auto two = ann.Post("/v1/batches", {{"text", "Hi"}}).body.value("batch", "");
  const auto results =
      ann.Post("/v1/batches/" + two + "/recipients", {{"to", {"27821110001", "27821110002"}}})
          .body.at("results");
  for (const auto& result : results) EXPECT_TRUE(AwaitStatus(ann, result.at("id"), 1));
  EXPECT_EQ(Asked().size(), before + 1);
}

}  // namespace
}  // namespace orvalo::test
