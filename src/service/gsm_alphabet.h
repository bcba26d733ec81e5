#pragma once
#include <optional>
#include <string>
#include <string_view>

namespace orvalo::service {

// The text in the GSM 7-bit default alphabet and its extension table (GSM 03.38, 6.2.1), one septet
// a byte; a character of the extension is an escape (0x1B) and its code. Nothing when the text
// holds a character that has no code there: nothing is ever replaced by something similar.
std::optional<std::string> ToGsm(std::string_view text);

constexpr char kGsmEscape = 0x1B;

// The characters that septets made by ToGsm stand for, in UTF-8.
std::string FromGsm(std::string_view septets);

}  // namespace orvalo::service
