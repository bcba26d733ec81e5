#include "messages/hex_import.h"

#include <cstdio>
#include <memory>

#include "app/texts.h"
#include "platform/file.h"

namespace orvalo {

namespace {

constexpr int kFirstFailureTextId = 1341;
constexpr int kUnknownFailureTextId = 1345;

using FileHandle = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

std::optional<std::string> Fail(ImportFailure why, ImportFailure* failure) {
  *failure = why;
  return std::nullopt;
}

}  // namespace

std::string ToHexadecimal(std::string_view bytes) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string digits;
  digits.reserve(bytes.size() * 2);
  for (const char byte : bytes) {
    const auto value = static_cast<unsigned char>(byte);
    digits += kDigits[value >> 4];
    digits += kDigits[value & 15];
  }
  return digits;
}

std::optional<std::string> ImportAsHexadecimal(const std::string& path, ImportFailure* failure) {
  if (path.empty()) return Fail(ImportFailure::kNoPath, failure);
  const auto size = platform::FileSize(path);
  if (!size) return Fail(ImportFailure::kNoLength, failure);
  const FileHandle file(std::fopen(path.c_str(), "rb"), &std::fclose);
  if (file == nullptr) return Fail(ImportFailure::kNotOpened, failure);
  if (*size > kLargestImport) return Fail(ImportFailure::kNotRead, failure);
  std::string bytes(static_cast<std::size_t>(*size), '\0');
  if (std::fread(bytes.data(), 1, bytes.size(), file.get()) != bytes.size()) {
    return Fail(ImportFailure::kNotRead, failure);
  }
  return ToHexadecimal(bytes);
}

std::string ImportFailureText(const Texts& texts, const std::string& path, ImportFailure failure) {
  const auto number = static_cast<int>(failure);
  const bool known = number >= 0 && number <= static_cast<int>(ImportFailure::kNotRead);
  return texts.Format(1340, {path}).value_or(std::string()) +
         texts.Load(known ? kFirstFailureTextId + number : kUnknownFailureTextId);
}

}  // namespace orvalo
