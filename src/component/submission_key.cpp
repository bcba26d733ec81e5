#include "component/submission_key.h"

#include <sodium.h>

#include <array>

namespace orvalo::component {
namespace {

constexpr std::size_t kKeyBytes = kKeyDigits / 2;
using KeyBytes = std::array<unsigned char, kKeyBytes>;

std::string DigitsOf(const KeyBytes& bytes) {
  std::array<char, kKeyDigits + 1> digits;
  return sodium_bin2hex(digits.data(), digits.size(), bytes.data(), bytes.size());
}

KeyBytes BytesOf(std::string_view key) {
  KeyBytes bytes{};
  sodium_hex2bin(bytes.data(), bytes.size(), key.data(), key.size(), nullptr, nullptr, nullptr);
  return bytes;
}

}  // namespace

std::string DrawKey() {
  KeyBytes bytes;
  randombytes_buf(bytes.data(), bytes.size());
  return DigitsOf(bytes);
}

std::string KeyOfRequest(const std::string& key, std::size_t place) {
  if (place == 0) return key;
  const auto secret = BytesOf(key);
  const auto number = std::to_string(place);
  KeyBytes derived;
  crypto_generichash(derived.data(), derived.size(),
                     reinterpret_cast<const unsigned char*>(number.data()), number.size(),
                     secret.data(), secret.size());
  return DigitsOf(derived);
}

bool IsSameKey(std::string_view one, std::string_view other) {
  return BytesOf(one) == BytesOf(other);
}

}  // namespace orvalo::component
