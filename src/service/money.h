#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace orvalo::service {

// An amount of credit in thousandths, so that sums are exact.
using Money = std::int64_t;

inline constexpr Money kLargestAmount = 1'000'000'000'000;  // a thousand million credits

// "0.8", "1000.0", "0.125": a point and at least one decimal, no more than needed.
std::string MoneyText(Money amount);

// Digits, optionally a point and one to three decimals; nothing for anything else, signs and
// amounts above kLargestAmount included.
std::optional<Money> ParseMoney(std::string_view text);

}  // namespace orvalo::service
