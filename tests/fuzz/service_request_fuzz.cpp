#include <cstdint>
#include <cstdlib>
#include <string_view>
#include <variant>

#include "service/message_request.h"

// Whatever a client sends, a request is either refused or within the limits of the protocol.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace orvalo::service;
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  const auto body = ParseObject(text);
  if (!body) return 0;
  const auto content = ParseContent(*body);
  if (const auto* accepted = std::get_if<MessageContent>(&content)) {
    if (accepted->parts < 1 || accepted->parts > 255) std::abort();
  }
  ParseNumber(*body);
  ParseNumbers(*body);
  return 0;
}
