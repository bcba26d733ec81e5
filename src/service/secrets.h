#pragma once
#include <cstddef>
#include <string>
#include <string_view>

namespace orvalo::service {

// Random and hashed secrets, by libsodium. Any thread.

// Must be called once before the others; throws std::runtime_error when the machine has no
// randomness to give.
void PrepareSecrets();

std::string RandomBytes(std::size_t count);
std::string ToHex(std::string_view bytes);     // lower-case digits
std::string FromHex(std::string_view digits);  // "" unless an even number of digits
std::string Digest(std::string_view bytes);    // 32 bytes; no secret is recovered from it
bool SameSecret(std::string_view a, std::string_view b);  // takes the same time for any content

// The password as it may be kept: salted and slow to try. At most two run at a time, on a small
// machine one (each takes 64 MiB and some 50 ms), further callers wait.
std::string HashPassword(const std::string& password);
bool PasswordMatches(const std::string& hash, const std::string& password);

// Twelve characters that are easily told apart, some 58 bits of chance.
std::string TemporaryPassword();

// Sixteen decimal digits.
std::string RandomVoucherNumber();

}  // namespace orvalo::service
