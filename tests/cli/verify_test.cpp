#include <csignal>
#include <functional>
#include <map>
#include <memory>

#include "component/component.h"
#include "gateway/books_check.h"
#include "served_fixture.h"
#include "support/fake_component.h"

namespace orvalo::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::UnorderedElementsAre;

// The outbox against the books of the real service.
class VerifyTest : public ServedTest {
 protected:
  // Its pauses after a busy gateway take no time.
  VerifyTest() {
    registry_.Register("SMS_COMAPI.SMS",
                       [this] { return std::make_unique<component::Component>(clock_); });
  }
  void Change(const std::function<void(SmsDatabase&)>& change) {
    SmsDatabase database(folder(), texts_, clock_);
    change(database);
  }
  static std::vector<std::string> Kinds(const Outcome& outcome) {
    std::vector<std::string> kinds;
    const auto all = outcome.All();
    for (const auto& difference : all.at("Differences")) kinds.push_back(difference.at("Kind"));
    return kinds;
  }
};

TEST_F(VerifyTest, TheOutboxAgreesWithTheGatewayOrTheDifferenceIsNamed) {
  EXPECT_THAT(Hurry({"verify"}), EndsWith(0)) << "nothing on either side";
  ASSERT_THAT(Hurry({"send", "--to", "27830000001,27830000002,27830009909", "--text", "x", "--wait",
                     "500"}),
              EndsWith(7));
  ASSERT_THAT(
      Hurry({"send", "--to", "27830000003", "--type", "flash", "--text", "x", "--wait", "500"}),
      EndsWith(0));
  const Outcome well = Hurry({"verify"});
  ASSERT_THAT(well, EndsWith(0));
  EXPECT_EQ(well.All().at("Counts").at("Listed"), 4);
  EXPECT_EQ(well.All().at("Counts").at("Matched"), 4);
  Money debited;
  for (const std::string& line : gateway_.Ledger())
    debited.Add(*Money::Of(nlohmann::json::parse(line).at("charge").get<std::string>()));
  EXPECT_EQ(well.All().at("Totals").at("Charges"), debited.Text());
  const Outcome all = Hurry({"verify", "--since", "@0"});
  ASSERT_THAT(all, EndsWith(0));
  EXPECT_EQ(all.All().at("Totals").at("Checked"), true);
  EXPECT_EQ(well.All().at("Totals").at("Balance"),
            nlohmann::json::parse(Hurry({"balance"}).out).at("balance"));

  Change([&](SmsDatabase& database) {
    const auto rows = database.AllSms();  // the expanded one and its three, the flash message
    ASSERT_EQ(rows.size(), 5u);
    ASSERT_TRUE(database.SetQueryAnswer(rows[1].id, SmsStatus::kDelivered, {{}, "9.9"}));
    ASSERT_TRUE(
        database.ChangeStatus(rows[2].id, SmsStatus::kDelivered, SmsStatus::kMessageExpired));
    database.DeleteSms(rows[3].id);
    ASSERT_TRUE(database.SetApiMsgId(rows[4].id, ",ID: " + std::string(32, 'f')));
  });
  EXPECT_THAT(Kinds(Hurry({"verify", "--since", "@2000000000"})), ElementsAre())
      << "nothing was accepted since then";
  const Outcome differs = Hurry({"verify"});
  EXPECT_THAT(differs, FailsWith(12,
                                 "2 missing here, 1 missing there, 1 other charge, 1 other "
                                 "status"));
  EXPECT_THAT(Kinds(differs), UnorderedElementsAre("missing-here", "missing-here", "missing-there",
                                                   "other-charge", "other-status"));
  const Outcome words = RunWith("", {"verify"}, hurrying_clock_);
  EXPECT_THAT(words.out, HasSubstr("Other charge: message 2 to 27830000001"));
  EXPECT_THAT(words.out, HasSubstr("here 9.9, there "));
  EXPECT_THAT(words.out, HasSubstr("here Message expired, there Delivered"));
  EXPECT_THAT(words.out, HasSubstr("of another installation, or of a deleted message"));

  EXPECT_THAT(Hurry({"verify", "--mend"}), FailsWith(12, "2 of them mended"));
  EXPECT_THAT(Kinds(Hurry({"verify"})),
              UnorderedElementsAre("missing-here", "missing-here", "missing-there"));
  EXPECT_EQ(gateway_.Ledger().size(), 4u) << "nothing is sent";
}

// Of ten recipients the gateway takes four, and dies.
TEST_F(VerifyTest, AMessageThatWaitsIsNamedAndCanBeStopped) {
  gateway_.Stop(SIGTERM);
  const auto serve = [&](std::vector<std::string> options) {
    options.insert(options.begin(), {"--demo", "--sim-delivery-seconds", "0"});
    return std::make_unique<GatewayProgram>(gateway_folder_.path(), options, gateway_.port());
  };
  auto service = serve({"--sim-fail-after", "4"});
  ASSERT_NE(service->port(), 0);
  std::string numbers = "27830000010";
  for (int i = 11; i < 20; ++i) numbers += ",278300000" + std::to_string(i);
  Hurry({"send", "--to", numbers, "--type", "flash", "--text", "x", "--wait", "60"});
  ASSERT_THAT(StoredMessages(), testing::SizeIs(1));
  EXPECT_THAT(Run({"outbox", "--reasons"}).out,
              HasSubstr("Waits for the gateway: 4 of 10 answered"));
  EXPECT_THAT(Hurry({"outbox", "delete", "1"}), FailsWith(1, "Message 1 is on its way"));
  service.reset();
  EXPECT_THAT(Hurry({"outbox", "stop", "1"}), FailsWith(4, "Nothing more is sent, but"));
  EXPECT_THAT(Run({"outbox", "--reasons"}).out, HasSubstr("Stopped, but the gateway is still"));

  service = serve({});
  ASSERT_NE(service->port(), 0);
  const Outcome waits = Hurry({"verify"});
  EXPECT_THAT(waits, FailsWith(12, "1 not yet answered"));
  EXPECT_THAT(Kinds(waits), ElementsAre("unanswered"));
  EXPECT_THAT(Hurry({"outbox", "stop", "1", "9"}), FailsWith(1, "no message 9"));
  const Outcome stopped = Hurry({"outbox", "stop", "1"});
  ASSERT_THAT(stopped, EndsWith(0));
  std::map<std::string, int> count;
  for (const MessageRow& row : StoredMessages()) ++count[row.reason + std::to_string(row.stat)];
  EXPECT_EQ(count, (std::map<std::string, int>{
                       {"12", 1}, {"11", 4}, {"Not sent: stopped by the operator.14", 6}}));
  EXPECT_EQ(service->Ledger().size(), 4u);
  EXPECT_THAT(Hurry({"outbox", "stop", "1"}), FailsWith(1, "does not wait"));
  EXPECT_THAT(Hurry({"query"}), EndsWith(0));
  EXPECT_THAT(Hurry({"verify", "--since", "@0"}), EndsWith(0));
}

TEST_F(VerifyTest, SaysWhenItCannotCompare) {
  EXPECT_THAT(Hurry({"verify", "--since", "soon"}), FailsWith(2, "soon is no time"));
  gateway_.Stop(SIGTERM);
  EXPECT_THAT(Hurry({"verify"}), FailsWith(4, "cannot be reached"));
  ASSERT_THAT(Run({"settings", "WorkingOnLine", "0"}), EndsWith(0));
  EXPECT_THAT(Hurry({"verify"}), FailsWith(1, "Working offline"));
  ASSERT_THAT(Run({"settings", "WorkingOnLine", "1"}), EndsWith(0));
  for (const bool old_service : {true, false}) {
    FakeGateway fake;
    if (old_service) fake.TellMessages();
    fake.On("ListMessages", "ERR: 102", 102);
    fake.Register(registry_);
    EXPECT_THAT(Hurry({"verify"}), FailsWith(1, "does not list what it has accepted"));
  }
}

}  // namespace
}  // namespace orvalo::test
