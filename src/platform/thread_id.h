#pragma once
#include <cstdint>

namespace orvalo::platform {

// The number by which the system knows the calling thread: the same through the thread's life,
// another for every thread alive. For people who read logs.
std::uint32_t CurrentThreadId();

}  // namespace orvalo::platform
