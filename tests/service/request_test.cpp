#include <gtest/gtest.h>

#include "service/http_server.h"
#include "service/message_request.h"
#include "service/money.h"

namespace orvalo::test {
namespace {

using service::ErrorCode;
using service::MoneyText;
using service::ParseMoney;

TEST(Money, IsWrittenAndReadExactly) {
  const struct {
    service::Money amount;
    const char* text;
  } cases[] = {{0, "0.0"},   {800, "0.8"},     {1'000'000, "1000.0"}, {125, "0.125"},
               {50, "0.05"}, {87'200, "87.2"}, {-1'500, "-1.5"},      {999'999'999, "999999.999"}};
  for (const auto& [amount, text] : cases) {
    EXPECT_EQ(MoneyText(amount), text);
    if (amount >= 0) {
      EXPECT_EQ(ParseMoney(text), amount) << text;
    }
  }
  EXPECT_EQ(ParseMoney("12"), 12'000);
  EXPECT_EQ(ParseMoney("1000000000"), service::kLargestAmount);
  for (const char* bad : {"", ".", "1.", ".5", "-1", "+1", "1.2345", "1,5", "1e3", " 1",
                          "1000000001", "99999999999999999999"}) {
    EXPECT_EQ(ParseMoney(bad), std::nullopt) << bad;
  }
}

TEST(Requests, KnowPhoneNumbers) {
  for (const char* good : {"123", "+123", "27821110001", "1234567890123456", "+1234567890123456"})
    EXPECT_TRUE(service::IsPhoneNumber(good)) << good;
  for (const char* bad : {"", "+", "12", "+12", "12345678901234567", "++123", "123+", "12a", "12 3",
                          "\xd9\xa1\xd9\xa2\xd9\xa3"})
    EXPECT_FALSE(service::IsPhoneNumber(bad)) << bad;
}

std::string Repeated(int count, const std::string& text) {
  std::string all;
  for (int i = 0; i < count; ++i) all += text;
  return all;
}

// The parts a request takes, or the code of its refusal (all above the largest number of parts).
int PartsOrCode(const nlohmann::json& request) {
  const auto content = service::ParseContent(request);
  if (const auto* refusal = std::get_if<service::Refusal>(&content)) {
    return 1000 + static_cast<int>(refusal->code);
  }
  return std::get<service::MessageContent>(content).parts;
}

TEST(Requests, CountTheParts) {
  const struct {
    nlohmann::json request;
    int expected;
  } cases[] = {
      {{{"text", ""}}, 1},
      {{{"text", Repeated(160, "x")}}, 1},
      {{{"text", Repeated(160, "ä")}}, 1},  // characters, not bytes
      {{{"text", Repeated(161, "x")}}, 1203},
      {{{"text", Repeated(161, "x")}, {"concat", 1}}, 1203},
      {{{"text", Repeated(161, "x")}, {"concat", 3}}, 2},
      {{{"text", Repeated(459, "x")}, {"concat", 3}}, 3},
      {{{"text", Repeated(460, "x")}, {"concat", 3}}, 1203},
      {{{"text", Repeated(70, "ж")}, {"unicode", true}}, 1},
      {{{"text", Repeated(71, "ж")}, {"unicode", true}, {"concat", 3}}, 2},
      {{{"text", Repeated(36, "😀")}, {"unicode", true}, {"concat", 3}}, 2},  // two units each
      {{{"text", Repeated(70, "0416")}, {"unicode", true}, {"encoded", true}}, 1},
      {{{"text", "D83DDE00"}, {"unicode", true}, {"encoded", true}}, 1},
      {{{"text", "D83D"}, {"unicode", true}, {"encoded", true}}, 1204},  // half a pair
      {{{"text", "041"}, {"unicode", true}, {"encoded", true}}, 1204},
      {{{"text", Repeated(140, "0a")}, {"type", 5}}, 1},
      {{{"text", Repeated(141, "0a")}, {"type", 5}}, 2},
      {{{"text", Repeated(255 * 134, "0a")}, {"type", 9}}, 255},
      {{{"text", Repeated(255 * 134 + 1, "0a")}, {"type", 9}}, 1203},
      {{{"text", "0a0"}, {"type", 3}}, 1204},
      {{{"text", "hello!"}, {"type", 8}}, 1204},
      {{{"text", ""}, {"type", 6}}, 1204},
      {{{"text", "a"}, {"type", 2}}, 1204},
      {{{"text", "a"}, {"type", 7}}, 1204},
  };
  for (const auto& [request, expected] : cases) {
    EXPECT_EQ(PartsOrCode(request), expected) << request.dump().substr(0, 120);
  }
}

TEST(Requests, RefuseMembersOfTheWrongKind) {
  const char* const requests[] = {
      R"({})",
      R"({"text":5})",
      R"({"text":null})",
      R"({"text":"a","type":"0"})",
      R"({"text":"a","type":0.0})",
      R"({"text":"a","type":-1})",
      R"({"text":"a","type":99999999999999999999})",
      R"({"text":"a","type":18446744073709551615})",
      R"({"text":"a","concat":256})",
      R"({"text":"a","concat":-3})",
      R"({"text":"a","delivery_minutes":10081})",
      R"({"text":"a","delivery_minutes":4294967296})",
      R"({"text":"a","unicode":1})",
      R"({"text":"a","ack":"true"})",
      R"({"text":"a","encoded":null})",
      R"({"text":"a","sender":7})",
      R"({"text":"a","sender":["x"]})",
  };
  for (const char* request : requests) {
    EXPECT_EQ(PartsOrCode(nlohmann::json::parse(request)), 1101) << request;
  }
  EXPECT_EQ(PartsOrCode({{"text", "a"}, {"sender", Repeated(65, "x")}}), 1101);
}

TEST(Requests, TakeNoBodyThatIsNoPlainObject) {
  EXPECT_TRUE(service::ParseObject(R"({"text":"[[[[[[[[[[[[ \" {{{{{{{{{{{{{"})"));
  const std::string bodies[] = {"",
                                "[]",
                                "7",
                                "{",
                                "{}x",
                                "{\"text\":\"\xff\xfe\"}",
                                "{\"text\":\"\xed\xa0\x80\"}",
                                "{\"text\":1e999}",
                                "{\"a\":" + Repeated(500'000, "["),
                                Repeated(200'000, "{\"a\":"),
                                std::string("{\0}", 3)};
  for (const auto& body : bodies) {
    EXPECT_FALSE(service::ParseObject(body)) << body.substr(0, 40);
  }
}

TEST(ListeningAddress, IsNumericAndKnownAsLoopback) {
  const struct {
    const char* text;
    bool good, loopback;
  } cases[] = {{"127.0.0.1:8480", true, true},
               {"localhost:0", true, true},
               {"[::1]:8480", true, true},
               {"0.0.0.0:8480", true, false},
               {"[::]:1", true, false},
               {"192.168.1.2:65535", true, false},
               {"127.0.0.1", false, false},
               {"127.0.0.1:65536", false, false},
               {":8480", false, false},
               {"127.0.0.1:", false, false},
               {"host.example:80", false, false},
               {"127.0.0.1:80x", false, false},
               {"127.0.0.1,0.0.0.0:80", false, false}};
  for (const auto& [text, good, loopback] : cases) {
    std::string address;
    int port = 0;
    EXPECT_EQ(service::SplitAddress(text, address, port), good) << text;
    if (good) {
      EXPECT_EQ(service::IsLoopback(address), loopback) << text;
    }
  }
}

}  // namespace
}  // namespace orvalo::test
