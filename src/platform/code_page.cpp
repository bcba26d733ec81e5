#include "platform/code_page.h"

#include <cstdint>
#include <cstring>

namespace orvalo::platform {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

// One step through a text: the character and the bytes it takes. For bytes that are no UTF-8,
// `valid` is false and `length` is that of the longest start of a sequence they could have been (at
// least 1).
struct Utf8Step {
  char32_t code = kReplacement;
  std::size_t length = 1;
  bool valid = false;
};

unsigned char ByteAt(std::string_view text, std::size_t at) {
  return static_cast<unsigned char>(text[at]);
}

// The form of the sequences that a lead byte begins: how many bytes follow and the range of the
// first of these, which shuts out overlong forms, surrogates and what lies beyond U+10FFFF.
struct LeadByte {
  int following = 0;
  unsigned char low = 0x80;
  unsigned char high = 0xBF;
};

LeadByte DescribeLead(unsigned char lead) {
  if (lead >= 0xC2 && lead <= 0xDF) return {1};
  if (lead == 0xE0) return {2, 0xA0, 0xBF};
  if (lead == 0xED) return {2, 0x80, 0x9F};
  if (lead >= 0xE1 && lead <= 0xEF) return {2};
  if (lead == 0xF0) return {3, 0x90, 0xBF};
  if (lead >= 0xF1 && lead <= 0xF3) return {3};
  if (lead == 0xF4) return {3, 0x80, 0x8F};
  return {};
}

Utf8Step DecodeUtf8(std::string_view text, std::size_t at) {
  const unsigned char lead = ByteAt(text, at);
  if (lead < 0x80) return {lead, 1, true};
  const LeadByte form = DescribeLead(lead);
  if (form.following == 0) return {};
  char32_t code = lead & (0x3Fu >> form.following);
  for (int i = 1; i <= form.following; ++i) {
    const auto length = static_cast<std::size_t>(i);
    if (at + length >= text.size()) return {kReplacement, length, false};
    const unsigned char next = ByteAt(text, at + length);
    const unsigned char low = i == 1 ? form.low : 0x80;
    const unsigned char high = i == 1 ? form.high : 0xBF;
    if (next < low || next > high) return {kReplacement, length, false};
    code = (code << 6) | (next & 0x3Fu);
  }
  return {code, static_cast<std::size_t>(form.following) + 1, true};
}

// The bytes that an operator's character takes at `at`: a stray byte is one by itself.
std::size_t CharacterLength(std::string_view text, std::size_t at) {
  const Utf8Step step = DecodeUtf8(text, at);
  return step.valid ? step.length : 1;
}

// The number of ASCII bytes from `at` on, eight at a time.
std::size_t AsciiRun(std::string_view text, std::size_t at) {
  const std::size_t begin = at;
  for (; at + 8 <= text.size(); at += 8) {
    std::uint64_t word = 0;
    std::memcpy(&word, text.data() + at, 8);
    if ((word & 0x8080808080808080u) != 0) break;
  }
  while (at < text.size() && ByteAt(text, at) < 0x80) ++at;
  return at - begin;
}

void AppendUtf16(std::u16string& out, char32_t code) {
  if (code < 0x10000) {
    out += static_cast<char16_t>(code);
    return;
  }
  out += static_cast<char16_t>(0xD800 + ((code - 0x10000) >> 10));
  out += static_cast<char16_t>(0xDC00 + ((code - 0x10000) & 0x3FF));
}

void AppendUtf8(std::string& out, char32_t code) {
  if (code < 0x80) {
    out += static_cast<char>(code);
    return;
  }
  if (code < 0x800) {
    out += static_cast<char>(0xC0 | (code >> 6));
  } else {
    if (code < 0x10000) {
      out += static_cast<char>(0xE0 | (code >> 12));
    } else {
      out += static_cast<char>(0xF0 | (code >> 18));
      out += static_cast<char>(0x80 | ((code >> 12) & 0x3F));
    }
    out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
  }
  out += static_cast<char>(0x80 | (code & 0x3F));
}

bool IsHighSurrogate(char16_t unit) { return unit >= 0xD800 && unit <= 0xDBFF; }
bool IsLowSurrogate(char16_t unit) { return unit >= 0xDC00 && unit <= 0xDFFF; }

}  // namespace

std::u16string ToWide(std::string_view text) {
  std::u16string out;
  out.reserve(text.size());
  for (std::size_t at = 0; at < text.size();) {
    if (const std::size_t run = AsciiRun(text, at); run > 0) {
      out.append(text.begin() + static_cast<std::ptrdiff_t>(at),
                 text.begin() + static_cast<std::ptrdiff_t>(at + run));
      at += run;
      continue;
    }
    const Utf8Step step = DecodeUtf8(text, at);
    AppendUtf16(out, step.code);
    at += step.length;
  }
  return out;
}

std::string FromWide(std::u16string_view text) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t at = 0; at < text.size(); ++at) {
    const char16_t unit = text[at];
    if (unit < 0x80) {
      out += static_cast<char>(unit);
    } else if (IsHighSurrogate(unit) && at + 1 < text.size() && IsLowSurrogate(text[at + 1])) {
      const char32_t high = unit - 0xD800u;
      const char32_t low = text[++at] - 0xDC00u;
      AppendUtf8(out, 0x10000 + (high << 10) + low);
    } else {
      AppendUtf8(out, IsHighSurrogate(unit) || IsLowSurrogate(unit) ? kReplacement : unit);
    }
  }
  return out;
}

std::string FromWindows1252(std::string_view bytes) {
  // Bytes 0x80 to 0x9F; the others are the characters of their numbers.
  static constexpr char16_t kHigh[32] = {
      0x20AC, 0xFFFD, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
      0x2039, 0x0152, 0xFFFD, 0x017D, 0xFFFD, 0xFFFD, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
      0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0xFFFD, 0x017E, 0x0178};
  std::string out;
  out.reserve(bytes.size() + bytes.size() / 4);
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    AppendUtf8(out, byte >= 0x80 && byte < 0xA0 ? kHigh[byte - 0x80] : byte);
  }
  return out;
}

bool IsValidUtf8(std::string_view text) {
  for (std::size_t at = AsciiRun(text, 0); at < text.size(); at += AsciiRun(text, at)) {
    const Utf8Step step = DecodeUtf8(text, at);
    if (!step.valid) return false;
    at += step.length;
  }
  return true;
}

std::size_t CountCharacters(std::string_view text) {
  std::size_t count = 0;
  for (std::size_t at = 0; at < text.size();) {
    if (const std::size_t run = AsciiRun(text, at); run > 0) {
      count += run;
      at += run;
    } else {
      at += CharacterLength(text, at);
      ++count;
    }
  }
  return count;
}

std::string_view FirstCharacters(std::string_view text, std::size_t count) {
  if (text.size() <= count) return text;
  std::size_t at = 0;
  for (; at < text.size() && count > 0; --count) at += CharacterLength(text, at);
  return text.substr(0, at);
}

std::string_view FirstBytes(std::string_view text, std::size_t count) {
  if (text.size() <= count) return text;
  // A character that the cut would split begins at most three bytes before it.
  for (std::size_t back = 1; back <= 3 && back <= count; ++back) {
    const std::size_t start = count - back;
    if (CharacterLength(text, start) > back) return text.substr(0, start);
  }
  return text.substr(0, count);
}

}  // namespace orvalo::platform
