#include "service/money.h"

#include <fmt/format.h>

namespace orvalo::service {

std::string MoneyText(Money amount) {
  const char* sign = amount < 0 ? "-" : "";
  if (amount < 0) amount = -amount;
  auto text = fmt::format("{}{}.{:03}", sign, amount / 1000, amount % 1000);
  while (text.back() == '0' && text[text.size() - 2] != '.') text.pop_back();
  return text;
}

std::optional<Money> ParseMoney(std::string_view text) {
  const auto point = text.find('.');
  const auto whole = text.substr(0, point);
  const auto decimals = point == std::string_view::npos ? "0" : text.substr(point + 1);
  constexpr std::string_view kDigits = "0123456789";
  if (whole.empty() || whole.size() > 10 || decimals.empty() || decimals.size() > 3 ||
      whole.find_first_not_of(kDigits) != std::string_view::npos ||
      decimals.find_first_not_of(kDigits) != std::string_view::npos) {
    return std::nullopt;
  }
  Money amount = 0;
  for (const char digit : whole) amount = amount * 10 + (digit - '0');
  for (std::size_t i = 0; i < 3; ++i) {
    amount = amount * 10 + (i < decimals.size() ? decimals[i] - '0' : 0);
  }
  if (amount > kLargestAmount) return std::nullopt;
  return amount;
}

}  // namespace orvalo::service
