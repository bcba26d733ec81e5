#include "cli/exit_code.h"
#include "orvaloctl_fixture.h"
#include "support/message_kinds.h"
#include "support/phone_road.h"

namespace orvalo::test {
namespace {

// The client, the service, a real engine, and what stands in for a mobile network.
class RealNetworkTest : public OrvaloctlTest {
 protected:
  void SetUp() override {
    ASSERT_TRUE(KannelEngine::IsInstalled()) << "the package kannel";
    ASSERT_TRUE(road_.engine.Start()) << road_.engine.Diagnosis();
    road_.StartService();
    ASSERT_NE(road_.service->port(), 0);
    Init(road_.service->url());
    ASSERT_THAT(Run({"settings", "SpanSMS", "1"}), EndsWith(0));
    ASSERT_THAT(RunWith("demo\n", {"login", "demo", "--remember"}, hurrying_clock_), EndsWith(0));
  }
  // Sends to the number and waits for what became of it.
  std::string Send(const std::string& number, std::vector<std::string> words,
                   cli::ExitCode end = cli::ExitCode::kDone) {
    words.insert(words.begin(), {"--json", "send", "--to", number, "--wait", "1000"});
    const Outcome outcome = RunWith("", words, hurrying_clock_);
    EXPECT_THAT(outcome, EndsWith(static_cast<int>(end)));
    return outcome.First().at("StatName").get<std::string>();
  }
  PhoneRoad road_;
  HurryingClock hurrying_clock_;
};

TEST_F(RealNetworkTest, ReachesPhonesWithEveryTypeOfMessage) {
  for (const auto& kind : MessageKinds()) {
    std::vector<std::string> words{"--type", kind.word, "--text", kind.text};
    if (std::string(kind.word) == "vcard") {
      Spill(road_.folder.File("card.txt"), kind.text);
      words = {"--type", kind.word, "--file", road_.folder.File("card.txt")};
    }
    EXPECT_EQ(Send(kind.number, words), "Delivered");
  }
  EXPECT_EQ(Send("27820000992", {"--text", "Nobody there"}, cli::ExitCode::kNotDelivered),
            "Error delivering message");
  EXPECT_EQ(Send("27820000991", {"--text", "No such phone"}, cli::ExitCode::kNotDelivered),
            "Routing error");
  ExpectMessageKinds(road_.network);
}

}  // namespace
}  // namespace orvalo::test
