#include "gateway/account.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "engine_bench.h"

namespace orvalo {
namespace {

using platform::HttpObstacle;

TEST(Account, LoginAsksForTheBalanceAndReportsAnUnreachableServer) {
  test::EngineBench bench;
  bench.settings.SetText(TextSetting::kClientId, "Orvalo");
  bench.fake.On("QueryBalance", "12.57");
  EXPECT_TRUE(bench.account->LoginToGateway("demo", "secret"));
  EXPECT_EQ(bench.fake.Calls("AuthenticateClient")[0].Argument(0), "Orvalo");
  EXPECT_EQ(bench.fake.Calls("AuthenticateClient")[0].Argument(2), "secret");
  EXPECT_EQ(bench.settings.Number(NumberSetting::kLastBalance), 125);
  EXPECT_EQ(bench.account->BalanceText(), "Balance: 12.5");
  bench.settings.SetFlag(FlagSetting::kWorkingOnLine, false);
  EXPECT_EQ(bench.account->BalanceText(), "Balance: 12.5?");

  bench.fake.On("AuthenticateClient", "", 110);
  EXPECT_FALSE(bench.account->LoginToGateway("demo", "wrong"));
  EXPECT_TRUE(bench.boxes.shown().empty());
  bench.fake.On("AuthenticateClient", "", 99);
  EXPECT_FALSE(bench.account->LoginToGateway("demo", "secret"));
  ASSERT_EQ(bench.boxes.shown().size(), 1u);
  EXPECT_EQ(bench.boxes.shown()[0].text,
            "Failed to communicate with the the server.  Please make sure that you are on-line!");
}

// The words that a login refused, or a failed connection, is told with; the log has them as well.
TEST(Account, SaysWhyALoginFailed) {
  const struct {
    int code;
    HttpObstacle cause;
    const char* words;
    const char* told;
    const char* boxed = "";  // behind the usual text
  } cases[] = {
      {110, {}, "No such user", "Unknown username or password!"},
      {95, {}, "", "Failed to communicate with the proxy server.  Check"},
      {96, {}, "", "Failed to communicate via the proxy server.  You might"},
      {98, {}, "", "What answers at http://sms.example cannot be understood"},
      {113, {}, "Too many requests", "Too many requests (gateway code 113)"},
      {500, {}, "", "The gateway refuses, with the code 500."},
      {99, {}, "", "The gateway at http://sms.example cannot be reached."},
      {99, HttpObstacle::kRefused, "", "The gateway at http://sms.example cannot be reached: the",
       "\r\n\r\nThe gateway at http://sms.example cannot be reached: the connection is refused"},
      {99, HttpObstacle::kUntrusted, "", "The gateway at http://sms.example cannot be trusted: its",
       "\r\n\r\nThe gateway at http://sms.example cannot be trusted: its certificate comes"},
      {99, HttpObstacle::kNoAuthorities, "",
       "The gateway at http://sms.example cannot be trusted: "
       "this computer's list"},
      {99, static_cast<HttpObstacle>(12), "",
       "The gateway at http://sms.example cannot be reached."},
  };
  for (const bool apart : {true, false}) {
    test::EngineBench bench(apart);
    bench.settings.SetText(TextSetting::kComBaseUrl, "http://sms.example");
    for (const auto& c : cases) {
      if (!apart && c.cause != HttpObstacle()) continue;
      const std::string reply = "ERR: " + std::to_string(c.code) + ", " + c.words;
      bench.fake.On("AuthenticateClient", [&](const auto&) {
        return test::FakeGateway::Answer{reply, c.code, c.words, static_cast<int>(c.cause)};
      });
      EXPECT_FALSE(bench.account->LoginToGateway("demo", "secret"));
      EXPECT_THAT(bench.account->LoginFailure(), testing::StartsWith(c.told));
      EXPECT_EQ(bench.log.Lines().back(),
                "Login failed: Error:" + std::to_string(c.code) + ", " + c.words);
      const auto boxes = bench.boxes.shown();
      EXPECT_TRUE(c.code != 99 || boxes.back().text.find(c.boxed) != std::string::npos) << c.boxed;
    }
    bench.fake.On("AuthenticateClient", "OK");
    EXPECT_TRUE(bench.account->LoginToGateway("demo", "secret"));
    EXPECT_EQ(bench.account->LoginFailure(), "");
  }
}

TEST(Account, AFailedBalanceQueryKeepsTheLastBalance) {
  test::EngineBench bench;
  bench.settings.SetNumber(NumberSetting::kLastBalance, 42);
  bench.fake.On("QueryBalance", "ERR: 500, Out of order", 500);
  EXPECT_EQ(bench.account->QueryBalanceTenths(), 42);
  EXPECT_EQ(bench.account->BalanceText(), "Balance: 4.2?");
  EXPECT_THAT(bench.account->BalanceHint(), testing::HasSubstr("Out of order (gateway code 500)"));
  bench.fake.On("QueryBalance", "4.3");
  EXPECT_EQ(bench.account->QueryBalanceTenths(), 43);
  EXPECT_EQ(bench.account->BalanceText() + bench.account->BalanceHint(), "Balance: 4.3");
  bench.settings.SetNumber(NumberSetting::kLastBalance, 42);
  bench.settings.SetFlag(FlagSetting::kWorkingOnLine, false);
  bench.fake.ClearCalls();
  EXPECT_EQ(bench.account->QueryBalanceTenths(), 42);
  EXPECT_TRUE(bench.fake.Calls().empty());
}

TEST(Account, EveryRefusalOfAVoucherIsShown) {
  const struct {
    const char* number;
    int error;
    const char* text;
    int calls;
  } cases[] = {
      {"123456789012345", 0, "Your voucher number is not long enough.  Please re-enter the number",
       0},
      {"1234567890123456", 607, "The voucher with the entered number has already been redeemed.",
       1},
      {"1234567890123456", 606, "no such voucher", 1},
      {"1234567890123456", 96,
       "Failed to communicate via the proxy server.  You might have to supply a proxy username and "
       "password.",
       1},
      {"1234567890123456", 99,
       "Failed to communicate with the the server.  Please make sure that you are on-line!", 1},
  };
  for (const auto& c : cases) {
    test::EngineBench bench;
    bench.fake.On("TokenPay", "no such voucher", c.error);
    EXPECT_FALSE(bench.account->RedeemVoucher(c.number)) << c.text;
    ASSERT_EQ(bench.boxes.shown().size(), 1u) << c.text;
    EXPECT_EQ(bench.boxes.shown()[0].text, c.text);
    EXPECT_EQ(static_cast<int>(bench.fake.Calls("TokenPay").size()), c.calls);
  }
  test::EngineBench bench;
  bench.fake.On("QueryBalance", "50.0");
  EXPECT_TRUE(bench.account->RedeemVoucher("1234567890123456"));
  EXPECT_EQ(bench.settings.Number(NumberSetting::kLastBalance), 500);
  bench.settings.SetFlag(FlagSetting::kWorkingOnLine, false);
  EXPECT_FALSE(bench.account->RedeemVoucher("1234567890123456"));
  EXPECT_EQ(bench.boxes.shown().back().caption, "Not online");
}

TEST(Account, TheLoginTokenGoesToTheOwnPageOnly) {
  test::EngineBench bench;
  bench.settings.SetText(TextSetting::kVoucherUrl, "https://pay.example");
  bench.settings.SetText(TextSetting::kClientId, "Other");
  EXPECT_EQ(bench.account->AccountPageAddress(), "https://pay.example");
  bench.settings.SetText(TextSetting::kClientId, "Orvalo");
  EXPECT_EQ(bench.account->AccountPageAddress(), "https://pay.example?session_id=token");
  bench.settings.SetFlag(FlagSetting::kWorkingOnLine, false);
  EXPECT_EQ(bench.account->AccountPageAddress(), "https://pay.example");
}

}  // namespace
}  // namespace orvalo
