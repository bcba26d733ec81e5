#include "platform/vcard_text.h"

#include <unicode/ucnv.h>

#include <cstdint>
#include <limits>
#include <optional>

#include "platform/code_page.h"

namespace orvalo::platform {
namespace {

constexpr char kWesternCharset[] = "windows-1252";

int HexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return -1;
}

// The byte that "xx" at `at` spells, if it does.
std::optional<char> HexByte(std::string_view text, std::size_t at) {
  if (at + 1 >= text.size()) return std::nullopt;
  const int high = HexDigit(text[at]), low = HexDigit(text[at + 1]);
  if (high < 0 || low < 0) return std::nullopt;
  return static_cast<char>(high * 16 + low);
}

// Replaces each "<mark>xx" by its byte.
std::string DecodeHexMarks(std::string_view text, char mark) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t at = 0; at < text.size(); ++at) {
    const auto byte = text[at] == mark ? HexByte(text, at + 1) : std::nullopt;
    out += byte.value_or(text[at]);
    if (byte) at += 2;
  }
  return out;
}

std::optional<std::string> Convert(std::string_view bytes, const char* charset) {
  if (bytes.size() > std::numeric_limits<std::int32_t>::max() / 4) return std::nullopt;
  const auto length = static_cast<std::int32_t>(bytes.size());
  std::string out(bytes.size() + bytes.size() / 2 + 16, '\0');
  for (int attempt = 0; attempt < 2; ++attempt) {  // the second with the length the first asked for
    UErrorCode status = U_ZERO_ERROR;
    const std::int32_t size =
        ucnv_convert("UTF-8", charset, out.data(), static_cast<std::int32_t>(out.size()),
                     bytes.data(), length, &status);
    if (status != U_BUFFER_OVERFLOW_ERROR && U_FAILURE(status)) return std::nullopt;
    out.resize(static_cast<std::size_t>(size));
    if (status != U_BUFFER_OVERFLOW_ERROR) return out;
  }
  return std::nullopt;
}

std::string FromUtf16Bytes(std::string_view bytes, bool big_endian) {
  std::u16string text;
  text.reserve(bytes.size() / 2);
  for (std::size_t at = 0; at + 1 < bytes.size(); at += 2) {
    const auto first = static_cast<unsigned char>(bytes[at]);
    const auto second = static_cast<unsigned char>(bytes[at + 1]);
    text += static_cast<char16_t>(big_endian ? first << 8 | second : second << 8 | first);
  }
  return FromWide(text);
}

}  // namespace

std::string VcardFileText(std::string bytes) {
  using namespace std::string_view_literals;
  const std::string_view all = bytes;
  if (all.starts_with("\xFF\xFE")) return FromUtf16Bytes(all.substr(2), false);
  if (all.starts_with("\xFE\xFF")) return FromUtf16Bytes(all.substr(2), true);
  if (all.starts_with("B\0"sv)) return FromUtf16Bytes(all, false);
  if (all.starts_with("\0B"sv)) return FromUtf16Bytes(all, true);
  if (all.starts_with("\xEF\xBB\xBF")) bytes.erase(0, 3);
  return bytes;
}

std::string DecodeQuotedPrintable(std::string_view text) { return DecodeHexMarks(text, '='); }

std::string DecodePercent(std::string_view text) { return DecodeHexMarks(text, '%'); }

std::string ToUtf8(std::string_view bytes, const std::string& charset) {
  if (!charset.empty()) {
    if (const auto converted = Convert(bytes, charset.c_str()))
      if (IsValidUtf8(*converted) && converted->find("\xEF\xBF\xBD") == std::string::npos)
        return *converted;
  }
  if (IsValidUtf8(bytes)) return std::string(bytes);
  return Convert(bytes, kWesternCharset).value_or(FromWide(ToWide(bytes)));
}

std::vector<std::string> SplitVcardValue(std::string_view text, char separator) {
  std::vector<std::string> fields;
  std::size_t begin = 0;
  for (std::size_t at = 0; at <= text.size(); ++at) {
    if (at < text.size() && text[at] == '\\') {
      ++at;
    } else if (at >= text.size() || text[at] == separator) {
      fields.push_back(UnescapeVcardValue(text.substr(begin, at - begin)));
      begin = at + 1;
    }
  }
  if (begin < text.size()) fields.push_back(UnescapeVcardValue(text.substr(begin)));
  return fields;
}

std::string UnescapeVcardValue(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t at = 0; at < text.size(); ++at) {
    const char next = at + 1 < text.size() ? text[at + 1] : '\0';
    if (text[at] != '\\') {
      out += text[at];
    } else if (next == 'n' || next == 'N') {
      out += '\n';
      ++at;
    } else if (next == ',' || next == ';' || next == ':' || next == '\\') {
      out += next;
      ++at;
    } else {
      out += '\\';
    }
  }
  return out;
}

}  // namespace orvalo::platform
