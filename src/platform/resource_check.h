#pragma once
#include <cstdint>
#include <string>
#include <string_view>

namespace orvalo::platform {

// The largest container file, and the largest entry in it once unpacked.
inline constexpr std::uint64_t kMaxContainer = 64u << 20;

// Whether the bytes of a resource container (rcc's binary format, version 3) can be handed to Qt,
// which trusts every offset in them. True when each entry lies behind its one parent (so the tree
// has no loops), every offset stays inside the bytes, every name is one path component, and no
// entry unpacks to more than kMaxContainer. Otherwise false with the reason in `error`. Any thread.
bool CheckContainer(std::string_view bytes, std::string* error);

}  // namespace orvalo::platform
