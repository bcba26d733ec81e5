#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace orvalo {

class Texts;

// Why a file could not be imported; the values choose the operator's text and never change.
enum class ImportFailure : std::int32_t {
  kNoPath = 0,
  kNoLength = 1,  // the file does not exist or cannot be examined
  kNotOpened = 2,
  kNotRead = 3,  // fewer bytes arrived than the file has, or it is larger than kLargestImport
};

// The largest file that is imported, in bytes: far beyond what any phone takes, and small enough to
// show as text.
inline constexpr std::uint64_t kLargestImport = 16u << 20;

// Two upper-case hexadecimal digits for each byte, nothing between them.
std::string ToHexadecimal(std::string_view bytes);

// A file's bytes as hexadecimal; nothing, and the reason in `failure`, when it cannot be had. An
// empty file gives the empty text. Any thread.
std::optional<std::string> ImportAsHexadecimal(const std::string& path, ImportFailure* failure);

// The message box text for a failure: string 1340 with the path, directly followed by the failure's
// own text.
std::string ImportFailureText(const Texts& texts, const std::string& path, ImportFailure failure);

}  // namespace orvalo
