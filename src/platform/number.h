#pragma once
#include <cstdint>
#include <string_view>

namespace orvalo::platform {

// The decimal number at the front of a text, as C's atoi reads it: leading white space and one sign
// allowed, reading ends at the first other character, no digits give 0. Numbers out of range give
// the nearest 32-bit value.
constexpr std::int32_t ParseInteger(std::string_view text) {
  std::size_t at = 0;
  while (at < text.size() && (text[at] == ' ' || (text[at] >= '\t' && text[at] <= '\r'))) ++at;
  const bool negative = at < text.size() && text[at] == '-';
  if (at < text.size() && (text[at] == '-' || text[at] == '+')) ++at;
  std::int64_t value = 0;
  for (; at < text.size() && text[at] >= '0' && text[at] <= '9' && value <= INT32_MAX; ++at) {
    value = value * 10 + (text[at] - '0');
  }
  if (negative) value = -value;
  if (value > INT32_MAX) return INT32_MAX;
  if (value < INT32_MIN) return INT32_MIN;
  return static_cast<std::int32_t>(value);
}

}  // namespace orvalo::platform
