#include <cmath>
#include <csignal>
#include <thread>

#include "platform/http.h"
#include "served_fixture.h"

namespace orvalo::test {
namespace {

using testing::HasSubstr;

// Money in tenths, exactly.
std::int64_t Tenths(const std::string& amount) { return std::lround(std::stod(amount) * 10); }

class EndToEndTest : public ServedTest {
 protected:
  std::int64_t Balance() {
    return nlohmann::json::parse(Hurry({"balance"}).out).at("tenths").get<std::int64_t>();
  }
  std::int64_t Charged() {
    std::int64_t sum = 0;
    for (const MessageRow& row : StoredMessages()) {
      if (row.charge != "?" && !row.charge.empty()) sum += Tenths(row.charge);
    }
    return sum;
  }
};

std::vector<std::string> StatusNames(const Outcome& outcome) {
  std::vector<std::string> names;
  for (const auto& row : outcome.All()) names.push_back(row.at("StatName"));
  return names;
}

TEST_F(EndToEndTest, ChargesShownAddUpToTheDebit) {
  const std::int64_t before = Balance();
  ASSERT_THAT(Run({"group", "add", "Friends"}), EndsWith(0));
  for (const char* contact : {"Ann", "Bob"}) {
    ASSERT_THAT(
        Run({"contact", "add", "--name", contact, "--mobile", "27821110001", "--group", "Friends"}),
        EndsWith(0));
  }
  const Outcome batch = Hurry({"send", "--to", "27830000001,27830000002,27830009909", "--text",
                               "The shop opens at nine.", "--wait", "500"});
  EXPECT_THAT(batch, FailsWith(7, "Accepted, but not delivered: 1 message"));
  EXPECT_THAT(StatusNames(batch),
              testing::ElementsAre("Expanded", "Delivered", "Delivered", "Routing error"));
  const Outcome personalised =
      Hurry({"send", "--group", "Friends", "--text", "Dear <<FIRSTNAME>>", "--wait", "500"});
  EXPECT_THAT(StatusNames(personalised),
              testing::ElementsAre("Expanded", "Delivered", "Delivered"));
  const Outcome flash =
      Hurry({"send", "--to", "27840000001", "--type", "flash", "--text", "Hi", "--wait", "500"});
  EXPECT_THAT(StatusNames(flash), testing::ElementsAre("Delivered"));
  EXPECT_EQ(flash.First().at("TypeName"), "Flash");

  std::int64_t debited = 0;
  std::string texts;
  for (const std::string& line : gateway_.Ledger()) {
    const auto entry = nlohmann::json::parse(line);
    debited += Tenths(entry.at("charge"));
    texts += entry.at("text").get<std::string>() + "|";
  }
  EXPECT_THAT(texts, HasSubstr("Dear Ann|"));
  EXPECT_GT(debited, 0);
  EXPECT_EQ(Charged(), debited);
  // What the sends have left, before anything asks the gateway again.
  EXPECT_EQ(Run({"balance", "--offline"}).out,
            "Balance: " + std::to_string((before - debited) / 10) + "." +
                std::to_string((before - debited) % 10) + "?\n");
  EXPECT_EQ(before - Balance(), debited);
}

TEST_F(EndToEndTest, TellsHowFarTheRecipientsCame) {
  const Outcome waiting = Hurry({"send", "--to", "27830009902", "--text", "x", "--wait", "20"});
  EXPECT_THAT(waiting, FailsWith(8, "No final status yet: 1 message"));
  EXPECT_THAT(StatusNames(waiting), testing::ElementsAre("Queued"));
  const Outcome partly =
      Hurry({"send", "--to", "27830000001,27830009900", "--text", "x", "--wait", "500"});
  EXPECT_THAT(partly, FailsWith(6, "Not accepted by the gateway: 1 message"));
  EXPECT_THAT(StatusNames(partly),
              testing::UnorderedElementsAre("Expanded", "Delivered", "Failed"));
  const Outcome refused = Hurry({"send", "--to", "27830009900", "--text", "x", "--wait", "500"});
  EXPECT_THAT(refused, FailsWith(5, "Not accepted"));
}

TEST_F(EndToEndTest, QueuesNowAndSendsAndAsksLater) {
  ASSERT_THAT(Hurry({"send", "--to", "27830000001", "--text", "later"}), EndsWith(0));
  EXPECT_TRUE(gateway_.Ledger().empty()) << "queueing sends nothing";
  EXPECT_THAT(Hurry({"query"}), EndsWith(0));
  EXPECT_TRUE(gateway_.Ledger().empty()) << "nor does asking";

  const Outcome run = Hurry({"run", "--for", "2"});
  EXPECT_THAT(run, FailsWith(8, "No final status yet: 1 message"));
  EXPECT_EQ(gateway_.Ledger().size(), 1u);
  ASSERT_THAT(Run({"send", "--to", "27830009900", "--text", "refused", "--sender", "Shop"}),
              EndsWith(0));
  EXPECT_THAT(RunWith("", {"run", "--for", "2"}, hurrying_clock_),
              FailsWith(5, "Message 2 to 27830009900: Failed"));
  const auto refused = StoredMessages().at(1);
  EXPECT_EQ(refused.sender_id, "Shop") << "for this message alone";
  const MessageRow sent = StoredMessages().at(0);
  EXPECT_GT(sent.stat_qry_tm, 0);

  EXPECT_THAT(StatusNames(Hurry({"query"})), testing::ElementsAre("Delivered"));
  EXPECT_EQ(StoredMessages().at(0).stat_qry_tm, sent.stat_qry_tm) << "the schedule stays";
  EXPECT_THAT(StatusNames(Hurry({"query"})), testing::IsEmpty());
  EXPECT_THAT(StatusNames(Hurry({"query", "1"})), testing::ElementsAre("Delivered"));
  EXPECT_THAT(Hurry({"query", "1", "9"}), FailsWith(1, "no message 9"));
}

TEST_F(EndToEndTest, SendsWhatIsScheduledAndDue) {
  ASSERT_THAT(
      Hurry({"schedule", "--to", "27830000001", "--text", "due", "--daily", "1", "--times", "2"}),
      EndsWith(0));
  ASSERT_THAT(Run({"settings", "ScheduleToServer", "1"}), EndsWith(0));
  ASSERT_THAT(Hurry({"schedule", "--to", "27830000002", "--text", "ahead", "--day", "11",
                     "--days-before", "2"}),
              EndsWith(0));
  ASSERT_THAT(Hurry({"schedule", "--to", "27830000002", "--text", "too early", "--day", "11",
                     "--days-before", "1"}),
              EndsWith(0));
  // The engine looks for what is due once a minute.
  std::thread time([&] {
    if (hurrying_clock_.AwaitWaiters(2)) hurrying_clock_.Advance(60'000);
    const auto give_up = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (gateway_.Ledger().size() < 2 && std::chrono::steady_clock::now() < give_up)
      std::this_thread::yield();
    hurrying_clock_.Advance(10'000);
  });
  const Outcome run = Hurry({"run", "--for", "70"});
  time.join();
  EXPECT_THAT(run, FailsWith(8, "No final status yet: 2 messages"));
  EXPECT_THAT(
      StatusNames(Hurry({"outbox"})),
      testing::ElementsAre("Unknown", "Scheduled", "Scheduled on Server", "Delay Scheduled"));
  EXPECT_EQ(gateway_.Ledger().size(), 2u);
}

TEST_F(EndToEndTest, ServesTheAccount) {
  const std::int64_t before = Balance();
  EXPECT_THAT(Hurry({"voucher", "1234567890123456"}), EndsWith(0));
  EXPECT_EQ(Balance() - before, 500);
  EXPECT_THAT(Hurry({"voucher", "1234567890123456"}), FailsWith(5, "already been redeemed"));
  EXPECT_THAT(Hurry({"voucher", "123"}), FailsWith(1, "not long enough"));
  platform::HttpRequest page;
  page.url = nlohmann::json::parse(Hurry({"account-page"}).out).at("address");
  EXPECT_THAT(page.url, testing::StartsWith(gateway_.url() + "/account?session_id="));
  platform::HttpClient browser;
  EXPECT_EQ(browser.Perform(page).status, 303);
  EXPECT_EQ(browser.Perform(page).status, 403) << "good for one visit";
  EXPECT_THAT(RunWith("wrong\n", {"login", "demo"}, hurrying_clock_),
              FailsWith(5, "Unknown username or password!"));
  EXPECT_EQ(Balance() - before, 500) << "a refused login leaves the stored one";
  EXPECT_THAT(Hurry({"recover", "demo", "demo@example.org"}), EndsWith(0));
  EXPECT_THAT(Hurry({"recover", "demo", "other@example.org"}), FailsWith(5, "Failed to notify"));

  gateway_.Stop(SIGTERM);
  EXPECT_THAT(Hurry({"balance"}), FailsWith(4, "cannot be reached"));
  EXPECT_THAT(Hurry({"balance", "--offline"}), EndsWith(0));
}

}  // namespace
}  // namespace orvalo::test
