#include "gateway/account.h"

#include <gtest/gtest.h>

#include "engine_bench.h"

namespace orvalo {
namespace {

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

TEST(Account, AFailedBalanceQueryKeepsTheLastBalance) {
  test::EngineBench bench;
  bench.settings.SetNumber(NumberSetting::kLastBalance, 42);
  bench.fake.On("QueryBalance", "1000", 500);
  EXPECT_EQ(bench.account->QueryBalanceTenths(), 42);
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
