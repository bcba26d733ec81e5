#include "service/secrets.h"

#include <sodium.h>

#include <array>
#include <semaphore>
#include <stdexcept>
#include <thread>

namespace orvalo::service {
namespace {

std::counting_semaphore<2>& HashingPlaces() {
  static std::counting_semaphore<2> places(std::thread::hardware_concurrency() > 3 ? 2 : 1);
  return places;
}

class HashingPlace {
 public:
  HashingPlace() { HashingPlaces().acquire(); }
  ~HashingPlace() { HashingPlaces().release(); }
  HashingPlace(const HashingPlace&) = delete;
  HashingPlace& operator=(const HashingPlace&) = delete;
};

std::string RandomFrom(std::string_view alphabet, std::size_t count) {
  std::string text(count, ' ');
  for (auto& character : text) {
    character = alphabet[randombytes_uniform(static_cast<std::uint32_t>(alphabet.size()))];
  }
  return text;
}

const unsigned char* BytesOf(std::string_view text) {
  return reinterpret_cast<const unsigned char*>(text.data());
}

}  // namespace

void PrepareSecrets() {
  if (sodium_init() < 0) throw std::runtime_error("no source of random numbers");
}

std::string RandomBytes(std::size_t count) {
  std::string bytes(count, '\0');
  randombytes_buf(bytes.data(), bytes.size());
  return bytes;
}

std::string ToHex(std::string_view bytes) {
  std::string digits(bytes.size() * 2 + 1, '\0');
  sodium_bin2hex(digits.data(), digits.size(), BytesOf(bytes), bytes.size());
  digits.pop_back();
  return digits;
}

std::string FromHex(std::string_view digits) {
  std::string bytes(digits.size() / 2, '\0');
  std::size_t length = 0;
  if (digits.size() % 2 != 0 ||
      sodium_hex2bin(reinterpret_cast<unsigned char*>(bytes.data()), bytes.size(), digits.data(),
                     digits.size(), nullptr, &length, nullptr) != 0 ||
      length != bytes.size()) {
    return {};
  }
  return bytes;
}

std::string Digest(std::string_view bytes) {
  std::string digest(crypto_generichash_BYTES, '\0');
  crypto_generichash(reinterpret_cast<unsigned char*>(digest.data()), digest.size(), BytesOf(bytes),
                     bytes.size(), nullptr, 0);
  return digest;
}

bool SameSecret(std::string_view a, std::string_view b) {
  return a.size() == b.size() && sodium_memcmp(a.data(), b.data(), a.size()) == 0;
}

std::string HashPassword(const std::string& password) {
  const HashingPlace place;
  std::array<char, crypto_pwhash_STRBYTES> hash{};
  if (crypto_pwhash_str(hash.data(), password.data(), password.size(),
                        crypto_pwhash_OPSLIMIT_INTERACTIVE,
                        crypto_pwhash_MEMLIMIT_INTERACTIVE) != 0) {
    throw std::runtime_error("not enough memory to hash a password");
  }
  return hash.data();
}

bool PasswordMatches(const std::string& hash, const std::string& password) {
  const HashingPlace place;
  return crypto_pwhash_str_verify(hash.c_str(), password.data(), password.size()) == 0;
}

std::string TemporaryPassword() { return RandomFrom("abcdefghjkmnpqrstuvwxyz23456789", 12); }

std::string RandomVoucherNumber() { return RandomFrom("0123456789", 16); }

}  // namespace orvalo::service
