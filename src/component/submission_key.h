#pragma once
#include <cstddef>
#include <string>
#include <string_view>

namespace orvalo::component {

// The idempotency key of a submission: 16 bytes, as 32 hexadecimal digits. Two keys whose digits
// differ in case only are one. Pure functions but DrawKey, any thread; libsodium is initialised.

inline constexpr std::size_t kKeyDigits = 32;

std::string DrawKey();

// The keys of the requests that one call is cut into follow from the key of the call: the first
// (`place` 0) is `key` itself. Always the same for the same two, also in later versions.
std::string KeyOfRequest(const std::string& key, std::size_t place);

bool IsSameKey(std::string_view one, std::string_view other);

}  // namespace orvalo::component
