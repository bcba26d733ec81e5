#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <map>

#include "service/engine_road.h"
#include "service/gsm_alphabet.h"
#include "service/secrets.h"

namespace orvalo::test {
namespace {

using testing::HasSubstr;

std::string Repeated(int count, const std::string& text) {
  std::string all;
  for (int i = 0; i < count; ++i) all += text;
  return all;
}

// Every character of the GSM alphabet, the escaped ones included, but for the line ends.
std::string WholeAlphabet() {
  std::string septets;
  for (char code = 0; code < 0x7F; ++code) {
    if (code != service::kGsmEscape) septets += code;
  }
  septets += 0x7F;
  for (const char code : {0x14, 0x28, 0x29, 0x2F, 0x3C, 0x3D, 0x3E, 0x40, 0x65}) {
    septets += {service::kGsmEscape, code};
  }
  return septets;
}

class KannelTest : public testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(KannelEngine::IsInstalled()) << "the package kannel"; }
};

TEST_F(KannelTest, WritesWhatArrivesAtTheNetworkFieldByField) {
  EngineRoad road;
  ASSERT_TRUE(road.engine.Start()) << road.engine.Diagnosis();
  road.StartService();
  auto demo = road.Caller();
  struct Part {
    int esm_class, data_coding;
    std::string hex;
  };
  const auto alphabet = WholeAlphabet();
  const struct {
    nlohmann::json message;
    int source_ton;
    std::vector<Part> parts;
  } cases[] = {
      {{{"text", "Hello @ you"}}, 5, {{3, 0, service::ToHex(std::string("Hello \0 you", 11))}}},
      {{{"text", service::FromGsm(alphabet)}}, 5, {{3, 0, service::ToHex(alphabet)}}},
      {{{"text", Repeated(160, "x")}, {"sender", "12345"}}, 2, {{3, 0, Repeated(160, "78")}}},
      {{{"text", Repeated(76, "€") + Repeated(10, "y")}, {"concat", 2}, {"sender", "+31612345678"}},
       1,
       {{0x43, 0, "050003RR0201" + Repeated(76, "1b65") + "79"},
        {0x43, 0, "050003RR0202" + Repeated(9, "79")}}},
      {{{"text", "ж and 😀"}}, 5, {{3, 8, "0436002000610 06e00640020d83dde00"}}},
      {{{"text", Repeated(66, "ж") + "😀"}, {"unicode", true}, {"concat", 3}},
       5,
       {{3, 8, Repeated(66, "0436") + "d83dde00"}}},
      {{{"text", Repeated(66, "ж") + "😀" + Repeated(5, "d")}, {"unicode", true}, {"concat", 3}},
       5,
       {{0x43, 8, "050003RR0201" + Repeated(66, "0436")},
        {0x43, 8, "050003RR0202d83dde00" + Repeated(5, "0064")}}},
      {{{"text", "Now!"}, {"type", 1}}, 5, {{3, 0xF0, "4e6f7721"}}},
      {{{"text", "ж"}, {"type", 1}}, 5, {{3, 0x18, "0436"}}},
      {{{"text", "424547494E0D0A00FF"}, {"type", 8}},
       5,
       {{0x43, 0xF5, "06050423f40000424547494e0d0a00ff"}}},
      {{{"text", Repeated(134, "25")}, {"type", 9}},
       5,
       {{0x43, 0xF5, "0b050423f500000003RR0201" + Repeated(128, "25")},
        {0x43, 0xF5, "0b050423f500000003RR0202" + Repeated(6, "25")}}},
      {{{"text", "4d546864"}, {"type", 6}}, 5, {{0x43, 0xF5, "060504158100004d546864"}}},
      {{{"text", "474946"}, {"type", 5}}, 5, {{0x43, 0xF5, "060504158a0000474946"}}},
      {{{"text", "474946"}, {"type", 3}}, 5, {{0x43, 0xF5, "06050415820000474946"}}},
  };
  std::size_t parts = 0;
  std::vector<std::string> ids;
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    auto message = cases[i].message;
    message["to"] = "2782111" + std::to_string(1000 + i);
    message["ack"] = true;
    const auto reply = demo.Post("/v1/messages", message);
    ASSERT_EQ(reply.status, 200) << message << reply.body;
    ids.push_back(reply.body.value("id", ""));
    parts += cases[i].parts.size();
  }
  ASSERT_TRUE(road.network.Await(parts));
  std::map<std::string, std::vector<SubmittedSm>> arrived;  // by number
  for (auto& sm : road.network.submitted()) arrived[sm.dest].push_back(sm);
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    auto& sms = arrived["2782111" + std::to_string(1000 + i)];
    ASSERT_EQ(sms.size(), cases[i].parts.size()) << cases[i].message;
    std::sort(sms.begin(), sms.end(), [](auto& a, auto& b) { return a.bytes < b.bytes; });
    for (std::size_t part = 0; part < sms.size(); ++part) {
      const auto& [esm_class, data_coding, hex] = cases[i].parts[part];
      auto expected = hex;
      std::erase(expected, ' ');
      const auto bytes = service::ToHex(sms[part].bytes);
      if (const auto at = expected.find("RR"); at != std::string::npos) {
        expected.replace(at, 2, service::ToHex(sms.front().bytes).substr(at, 2));
      }
      EXPECT_EQ(bytes, expected) << cases[i].message;
      EXPECT_EQ(sms[part].esm_class, esm_class) << cases[i].message;
      EXPECT_EQ(sms[part].data_coding, data_coding) << cases[i].message;
      EXPECT_EQ(sms[part].source_ton, cases[i].source_ton);
      EXPECT_EQ(sms[part].dest_ton, 1);
      EXPECT_EQ(sms[part].registered & 3, 1);
      EXPECT_FALSE(sms[part].validity.empty());
    }
  }
  for (const auto& id : ids) EXPECT_EQ(EngineRoad::AwaitStatus(demo, id, 4), 4);
  EXPECT_TRUE(road.AddsUp());
}

}  // namespace
}  // namespace orvalo::test
