#pragma once
#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace orvalo {

struct SettingInfo;

// What a setting may hold beyond its kind. Pure functions, any thread. Loading is forgiving, so
// these stand where an operator sets a value.

// An Ed25519 public key.
inline constexpr std::size_t kUpdateKeyBytes = 32;
using UpdateKey = std::array<unsigned char, kUpdateKeyBytes>;

// Of 64 hexadecimal digits; nothing when the text is none.
std::optional<UpdateKey> ReadUpdateKey(std::string_view digits);

// A TCP port in decimal digits, 1 to 65535.
bool IsPort(std::string_view text);

// A country code without its leading zeros: digits, or nothing.
bool IsPrefix(std::string_view text);

// What is wrong with a value for the setting, in words that say what is wanted; empty when nothing
// is. An empty value, which takes the default, is never wrong.
std::string SettingProblem(const SettingInfo& setting, std::string_view value);

}  // namespace orvalo
