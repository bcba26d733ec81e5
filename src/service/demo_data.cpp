#include "service/demo_data.h"

#include <fmt/format.h>

#include <array>
#include <utility>

namespace orvalo::service {
namespace {

constexpr std::array kDemoVouchers{
    std::pair<const char*, Money>{"1234567890123456", 50'000},
    std::pair<const char*, Money>{"1111222233334444", 10'000},
    std::pair<const char*, Money>{"5555666677778888", 100'000},
};

}  // namespace

std::string LayOutDemoData(Accounts& accounts, Vouchers& vouchers) {
  accounts.Add("demo", "demo@example.org", "demo", 1'000'000);
  for (const auto& [number, amount] : kDemoVouchers) vouchers.Add(number, amount);
  std::string text = "demo account: user demo, password demo, e-mail demo@example.org\n";
  for (const auto& voucher : vouchers.List()) {
    text += fmt::format("demo voucher: {} over {}{}\n", voucher.number, MoneyText(voucher.amount),
                        voucher.redeemed_by.empty() ? "" : " (redeemed)");
  }
  return text;
}

}  // namespace orvalo::service
