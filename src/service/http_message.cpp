#include "service/http_message.h"

#include <charconv>

namespace orvalo::service {

std::optional<std::string> PercentDecoded(std::string_view text, bool plus_is_blank) {
  std::string decoded;
  decoded.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '%') {
      decoded += text[i] == '+' && plus_is_blank ? ' ' : text[i];
      continue;
    }
    const auto digits = text.substr(i + 1, 2);
    unsigned char byte = 0;
    const char* const end = digits.data() + digits.size();
    const auto [stop, error] = std::from_chars(digits.data(), end, byte, 16);
    if (digits.size() != 2 || error != std::errc() || stop != end) return std::nullopt;
    decoded += static_cast<char>(byte);
    i += 2;
  }
  return decoded;
}

}  // namespace orvalo::service
