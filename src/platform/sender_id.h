#pragma once
#include <string_view>

namespace orvalo::platform {

// Whether phone networks take the text for the sender of a message: up to 15 digits, a "+" before
// them allowed, or up to 11 letters, digits and simple signs of the alphabet that every phone has,
// with no space at either end. The client refuses any other when it is set, the gateway service
// when a message comes with it. A pure function, any thread.
bool IsSenderId(std::string_view text);

}  // namespace orvalo::platform
