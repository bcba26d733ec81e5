#pragma once
#include <cstddef>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>

namespace orvalo::component {

inline constexpr std::size_t kIdDigits = 32;  // of a message or a batch
inline constexpr int kHighestStatus =
    999;  // of a message: three digits, later versions may know more

// Members of a reply's objects, each checked before it is believed: nothing when the member is
// missing, of another kind, or out of range, and when `object` is no object. Any thread.

std::optional<std::string> TextField(const nlohmann::json& object, const char* name);

// Exactly `digits` hexadecimal digits: an id or a token, safe in an address, a header and a reply.
std::optional<std::string> HexField(const nlohmann::json& object, const char* name,
                                    std::size_t digits);

// A decimal number as text: digits, at most nine of them before the point and small enough that its
// tenths fit 32 bits; at most nine after it; no sign.
std::optional<std::string> DecimalField(const nlohmann::json& object, const char* name);

std::optional<int> IntegerField(const nlohmann::json& object, const char* name, int lowest,
                                int highest);

bool IsDigit(char c);
bool IsHex(std::string_view text, std::size_t digits);

}  // namespace orvalo::component
