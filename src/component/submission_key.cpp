#include "component/submission_key.h"

#include <sodium.h>

#include <algorithm>
#include <array>

namespace orvalo::component {
namespace {

constexpr std::size_t kKeyBytes = kKeyDigits / 2;
using KeyBytes = std::array<unsigned char, kKeyBytes>;

std::string DigitsOf(const KeyBytes& bytes) {
  std::array<char, kKeyDigits + 1> digits;
  return sodium_bin2hex(digits.data(), digits.size(), bytes.data(), bytes.size());
}

char LowerAscii(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c; }

}  // namespace

std::string DrawKey() {
  KeyBytes bytes;
  randombytes_buf(bytes.data(), bytes.size());
  return DigitsOf(bytes);
}

std::string KeyOfRequest(const std::string& key, std::size_t place) {
  if (place == 0) return key;
  KeyBytes secret{};
  sodium_hex2bin(secret.data(), secret.size(), key.data(), key.size(), nullptr, nullptr, nullptr);
  const auto number = std::to_string(place);
  KeyBytes derived;
  crypto_generichash(derived.data(), derived.size(),
                     reinterpret_cast<const unsigned char*>(number.data()), number.size(),
                     secret.data(), secret.size());
  return DigitsOf(derived);
}

bool IsSameKey(std::string_view one, std::string_view other) {
  return std::equal(one.begin(), one.end(), other.begin(), other.end(),
                    [](char a, char b) { return LowerAscii(a) == LowerAscii(b); });
}

}  // namespace orvalo::component
