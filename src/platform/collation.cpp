#include "platform/collation.h"

#include <unicode/ucasemap.h>
#include <unicode/ucol.h>
#include <unicode/uloc.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <limits>
#include <memory>

#include "platform/code_page.h"

namespace orvalo::platform {
namespace {

char LowerAsciiLetter(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; }
char UpperAsciiLetter(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c; }

// Texts that the library is not asked about: plain ASCII (the common case), bytes that are no UTF-8
// (only their ASCII letters have a case) and lengths beyond its 32-bit ones.
bool HasOnlyAsciiCase(std::string_view text) {
  for (const char c : text) {
    if (static_cast<unsigned char>(c) >= 0x80)
      return text.size() > std::numeric_limits<std::int32_t>::max() / 4 || !IsValidUtf8(text);
  }
  return true;
}

// The case mappings of no particular language, so that data means the same on every machine.
const UCaseMap* CaseMap() {
  static const UCaseMap* const map = [] {
    UErrorCode status = U_ZERO_ERROR;
    return ucasemap_open("", 0, &status);
  }();
  return map;
}

using CaseMapping = decltype(&ucasemap_utf8ToUpper);

std::string MapCase(std::string_view text, CaseMapping mapping, char (*map_ascii)(char)) {
  std::string out(text);
  if (HasOnlyAsciiCase(text)) {
    for (char& c : out) c = map_ascii(c);
    return out;
  }
  const auto source_length = static_cast<std::int32_t>(text.size());
  for (int attempt = 0; attempt < 2; ++attempt) {  // the second with the length the first asked for
    UErrorCode status = U_ZERO_ERROR;
    const std::int32_t length =
        mapping(CaseMap(), out.data(), static_cast<std::int32_t>(out.size()), text.data(),
                source_length, &status);
    if (status != U_BUFFER_OVERFLOW_ERROR && U_FAILURE(status)) break;
    out.resize(static_cast<std::size_t>(length));
    if (status != U_BUFFER_OVERFLOW_ERROR) return out;
  }
  return std::string(text);
}

// The locale of the user's order, from the environment as POSIX reads it; English where that asks
// for the order of bytes, which suits no dictionary.
std::string CollationLocale() {
  std::string name;
  for (const char* variable : {"LC_ALL", "LC_COLLATE", "LANG"}) {
    const char* value = std::getenv(variable);
    if (value != nullptr && *value != '\0') {
      name = value;
      break;
    }
  }
  const std::string language = name.substr(0, name.find_first_of(".@"));
  if (language.empty() || language == "C" || language == "POSIX") return "en";
  std::array<char, ULOC_FULLNAME_CAPACITY> canonical{};
  UErrorCode status = U_ZERO_ERROR;
  uloc_canonicalize(name.c_str(), canonical.data(), static_cast<std::int32_t>(canonical.size() - 1),
                    &status);
  return U_FAILURE(status) ? "en" : canonical.data();
}

struct CloseCollator {
  void operator()(UCollator* collator) const { ucol_close(collator); }
};

// Null when the library has no data: the order is then that of the bytes. One for each thread,
// because nothing promises that one can be shared.
UCollator* ThreadCollator() {
  thread_local const std::unique_ptr<UCollator, CloseCollator> collator = [] {
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<UCollator, CloseCollator> opened(ucol_open(CollationLocale().c_str(), &status));
    if (opened != nullptr) {
      ucol_setAttribute(opened.get(), UCOL_STRENGTH, UCOL_TERTIARY, &status);
      ucol_setAttribute(opened.get(), UCOL_CASE_FIRST, UCOL_LOWER_FIRST, &status);
    }
    if (U_FAILURE(status)) opened.reset();
    return opened;
  }();
  return collator.get();
}

// A text in UTF-16 for the library; a short one in ASCII, the common case, needs no memory.
class WideText {
 public:
  explicit WideText(std::string_view text) : size_(text.size()) {
    const bool in_place =
        text.size() <= short_.size() &&
        std::all_of(text.begin(), text.end(), [](char c) { return (c & 0x80) == 0; });
    if (in_place) {
      std::copy(text.begin(), text.end(), short_.begin());
    } else {
      long_ = ToWide(text);
      size_ = long_.size();
      data_ = long_.data();
    }
  }
  WideText(const WideText&) = delete;
  WideText& operator=(const WideText&) = delete;

  const char16_t* data() const { return data_; }
  std::int32_t size() const { return static_cast<std::int32_t>(size_); }

 private:
  std::array<char16_t, 256> short_;
  std::u16string long_;
  std::size_t size_;
  const char16_t* data_ = short_.data();
};

bool FitsCollator(std::string_view text) {
  return text.size() <= std::numeric_limits<std::int32_t>::max() / 8;
}

// Hyphens and apostrophes do not part words: "co-op" stands beside "coop", behind it.
constexpr std::string_view kMinor = "-'";

bool HoldsMinor(std::string_view text) {
  return text.find_first_of(kMinor) != std::string_view::npos;
}

// A text without its minor characters, and these with their places in it (in bytes above 0).
struct SplitText {
  explicit SplitText(std::string_view text) {
    for (const char c : text) {
      if (kMinor.find(c) == std::string_view::npos) {
        words += c;
        continue;
      }
      for (const int shift : {28, 21, 14, 7, 0}) {
        minors += static_cast<char>(0x80 | (words.size() >> shift & 0x7f));
      }
      minors += c;
    }
  }
  std::string words;
  std::string minors;
};

// Negative, 0 or positive; 0 also where the library cannot tell.
int CompareWords(std::string_view a, std::string_view b) {
  UCollator* const collator = ThreadCollator();
  if (collator == nullptr || !FitsCollator(a) || !FitsCollator(b)) return 0;
  UErrorCode status = U_ZERO_ERROR;
  const UCollationResult order =
      ucol_strcollUTF8(collator, a.data(), static_cast<std::int32_t>(a.size()), b.data(),
                       static_cast<std::int32_t>(b.size()), &status);
  if (U_FAILURE(status) || order == UCOL_EQUAL) return 0;
  return order == UCOL_LESS ? -1 : 1;
}

void AppendWordsKey(std::string_view text, std::string* keys) {
  UCollator* const collator = ThreadCollator();
  const std::size_t start = keys->size();
  if (collator == nullptr || !FitsCollator(text)) {
    keys->append(text);
    return;
  }
  const WideText wide(text);
  std::size_t room = text.size() * 2 + 16;
  for (;;) {
    keys->resize(start + room);
    const std::int32_t needed = ucol_getSortKey(
        collator, wide.data(), wide.size(), reinterpret_cast<std::uint8_t*>(keys->data() + start),
        static_cast<std::int32_t>(room));
    if (needed <= 0) {
      keys->replace(start, room, text);
      return;
    }
    const bool complete = static_cast<std::size_t>(needed) <= room;
    room = static_cast<std::size_t>(needed);
    if (!complete) continue;
    keys->resize(start + room - 1);  // without the closing zero
    return;
  }
}

}  // namespace

std::string ToUpper(std::string_view text) {
  return MapCase(text, &ucasemap_utf8ToUpper, &UpperAsciiLetter);
}

std::string ToLower(std::string_view text) {
  return MapCase(text, &ucasemap_utf8ToLower, &LowerAsciiLetter);
}

bool EqualNoCase(std::string_view a, std::string_view b) {
  if (HasOnlyAsciiCase(a) && HasOnlyAsciiCase(b)) return EqualNoCaseAscii(a, b);
  return FoldCase(a) == FoldCase(b);
}

std::string FoldCase(std::string_view text) {
  return MapCase(text, &ucasemap_utf8FoldCase, &LowerAsciiLetter);
}

bool EqualNoCaseAscii(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i)
    if (LowerAsciiLetter(a[i]) != LowerAsciiLetter(b[i])) return false;
  return true;
}

int CompareTexts(std::string_view a, std::string_view b) {
  if (a == b) return 0;
  if (HoldsMinor(a) || HoldsMinor(b)) {
    const SplitText split_a(a);
    const SplitText split_b(b);
    int order = CompareWords(split_a.words, split_b.words);
    if (order == 0) order = split_a.minors.compare(split_b.minors);
    if (order != 0) return order < 0 ? -1 : 1;
  } else if (const int order = CompareWords(a, b); order != 0) {
    return order;
  }
  return a < b ? -1 : 1;
}

std::string SortKey(std::string_view text) {
  std::string key;
  AppendSortKey(text, &key);
  return key;
}

// In the library's keys a byte 1 stands between the levels, of which all have the same number, and
// all else is larger: behind another 1 the minor characters come after every difference of the
// words.
void AppendSortKey(std::string_view text, std::string* keys) {
  if (ThreadCollator() == nullptr || !HoldsMinor(text)) {
    AppendWordsKey(text, keys);
    return;
  }
  const SplitText split(text);
  AppendWordsKey(split.words, keys);
  keys->append(1, '\1').append(split.minors);
}

}  // namespace orvalo::platform
