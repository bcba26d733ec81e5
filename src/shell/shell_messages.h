#pragma once
#include <cstdint>

#include "platform/mailbox.h"

namespace orvalo {

// Window messages within the desktop program, beside those of the engine
// (gateway/engine_notices.h).
inline constexpr std::uint32_t kWmQueryBalance = platform::kWmApp + 7;  // to the compose page
inline constexpr std::uint32_t kWmBanner = platform::kWmApp + 8;        // a new banner has arrived
inline constexpr std::uint32_t kWmTrayMask = platform::kWmApp + 20;  // which menu items to enable

}  // namespace orvalo
