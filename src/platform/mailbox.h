#pragma once
#include <cstdint>

namespace orvalo::platform {

// Window messages: numbers on the road between the worker and the windows; they never change value.
inline constexpr std::uint32_t kWmQuit = 0x0012;
inline constexpr std::uint32_t kWmApp = 0x8000;

// Whoever receives posted window messages: a window, a progress line, a test's vector. Post returns
// at once, may be called from any thread, and keeps the order of one poster's messages.
class Mailbox {
 public:
  virtual ~Mailbox() = default;
  virtual void Post(std::uint32_t message, std::int32_t wparam, std::int32_t lparam) = 0;
};

}  // namespace orvalo::platform
