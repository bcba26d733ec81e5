#pragma once
#include <cstdint>

namespace orvalo::platform {

// How many files and connections this process may have open. Raises that to `wanted` as far as the
// machine's administrator allows, never lowers it, and returns what it is then. Any thread.
std::uint64_t RaiseOpenFileLimit(std::uint64_t wanted);

}  // namespace orvalo::platform
