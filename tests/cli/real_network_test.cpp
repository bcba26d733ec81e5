#include "orvaloctl_fixture.h"
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
  std::string Send(const std::string& number, std::vector<std::string> words) {
    words.insert(words.begin(), {"--json", "send", "--to", number, "--wait", "1000"});
    const Outcome outcome = RunWith("", words, hurrying_clock_);
    EXPECT_THAT(outcome, EndsWith(0));
    return outcome.code == 0 ? outcome.First().at("StatName").get<std::string>() : "";
  }
  PhoneRoad road_;
  HurryingClock hurrying_clock_;
};

TEST_F(RealNetworkTest, ReachesPhonesWithEveryTypeOfMessage) {
  const std::string card = "BEGIN:VCARD\r\nN:Möller;Ann\r\nTEL:+27821110001\r\nEND:VCARD\r\n";
  Spill(road_.folder.File("card.txt"), card);
  std::string text;
  for (int i = 0; i < 50; ++i) text += "part " + std::to_string(i);
  EXPECT_EQ(Send("27820000001", {"--text", "Bill: 5 €"}), "Delivered");
  EXPECT_EQ(Send("27820000002", {"--text", text}), "Delivered");
  EXPECT_EQ(Send("27820000003", {"--type", "unicode", "--text", "Привет 😀"}), "Delivered");
  EXPECT_EQ(Send("27820000004", {"--type", "flash", "--text", "Fire!"}), "Delivered");
  EXPECT_EQ(Send("27820000005", {"--type", "vcard", "--file", road_.folder.File("card.txt")}),
            "Delivered");
  EXPECT_EQ(Send("27820000992", {"--text", "Nobody there"}), "Error delivering message");
  EXPECT_EQ(Send("27820000991", {"--text", "No such phone"}), "Routing error");

  auto arrived = ArrivedByNumber(road_.network);
  const struct {
    const char* number;
    int esm_class, data_coding;
    std::string bytes;
  } singles[] = {
      {"27820000001", 3, 0x00, "Bill: 5 \x1b\x65"},
      {"27820000003", 3, 0x08,
       std::string("\x04\x1f\x04\x40\x04\x38\x04\x32\x04\x35\x04\x42\0\x20\xd8\x3d\xde\0", 18)},
      {"27820000004", 3, 0xF0, "Fire!"},
      {"27820000005", 0x43, 0xF5, std::string("\x06\x05\x04\x23\xf4\0\0", 7) + card},
  };
  for (const auto& one : singles) {
    const auto& parts = arrived[one.number];
    ASSERT_EQ(parts.size(), 1u) << one.number;
    EXPECT_EQ(parts[0].esm_class, one.esm_class) << one.number;
    EXPECT_EQ(parts[0].data_coding, one.data_coding) << one.number;
    EXPECT_EQ(parts[0].bytes, one.bytes) << one.number;
    EXPECT_EQ(parts[0].source, "Orvalo");
  }
  const auto& parts = arrived["27820000002"];
  ASSERT_EQ(parts.size(), text.size() / 153 + 1);
  std::string together;
  for (std::size_t i = 0; i < parts.size(); ++i) {
    EXPECT_EQ(parts[i].esm_class, 0x43);
    EXPECT_EQ(parts[i].bytes.substr(0, 3), std::string("\x05\0\x03", 3));
    EXPECT_EQ(parts[i].bytes[4], static_cast<char>(parts.size()));
    EXPECT_EQ(parts[i].bytes[5], static_cast<char>(i + 1));
    together += parts[i].bytes.substr(6);
  }
  EXPECT_EQ(together, text);
}

}  // namespace
}  // namespace orvalo::test
