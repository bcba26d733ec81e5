#include "platform/sender_id.h"

#include <algorithm>

namespace orvalo::platform {

bool IsSenderId(std::string_view text) {
  constexpr std::size_t kMostDigits = 15, kMostLetters = 11;
  const auto digits = text.starts_with('+') ? text.substr(1) : text;
  if (digits.find_first_not_of("0123456789") == std::string_view::npos) {
    return !digits.empty() && digits.size() <= kMostDigits;
  }
  constexpr std::string_view kSigns = " .,-_&!?()/'";
  return text.size() <= kMostLetters && !text.starts_with(' ') && !text.ends_with(' ') &&
         std::all_of(text.begin(), text.end(), [&](char character) {
           return (character >= 'a' && character <= 'z') ||
                  (character >= 'A' && character <= 'Z') ||
                  (character >= '0' && character <= '9') ||
                  kSigns.find(character) != std::string_view::npos;
         });
}

}  // namespace orvalo::platform
