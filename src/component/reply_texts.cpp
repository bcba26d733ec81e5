#include "component/reply_texts.h"

#include <algorithm>
#include <array>

#include "platform/code_page.h"

namespace orvalo::component {
namespace {

constexpr std::size_t kLongestMessage = 200;  // characters
constexpr std::array<std::string_view, 3> kKeywords = {"to:", "id:", "err:"};

// Control characters, too: DEL and everything below the space.
bool IsBlank(char c) { return static_cast<unsigned char>(c) <= ' ' || c == '\x7f'; }

char LowerAscii(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c; }

bool StartsWithKeyword(std::string_view word) {
  return std::any_of(kKeywords.begin(), kKeywords.end(), [&](std::string_view keyword) {
    return word.size() >= keyword.size() &&
           std::equal(keyword.begin(), keyword.end(), word.begin(),
                      [](char k, char w) { return k == LowerAscii(w); });
  });
}

std::string Recipient(std::string_view number) {
  std::string word;
  std::copy_if(number.begin(), number.end(), std::back_inserter(word),
               [](char c) { return !IsBlank(c); });
  return " To: " + word + "\n";
}

}  // namespace

std::string PlainWords(std::string_view text) {
  text = platform::FirstCharacters(text, kLongestMessage);
  std::string plain;
  for (auto place = text.begin(); place != text.end();) {
    const auto begin = std::find_if_not(place, text.end(), IsBlank);
    const auto end = std::find_if(begin, text.end(), IsBlank);
    if (begin != end) {
      std::string word(begin, end);
      if (StartsWithKeyword(word)) word[word.find(':')] = ';';
      if (!plain.empty()) plain += ' ';
      plain += word;
    }
    place = end;
  }
  return plain;
}

std::string ErrorText(int code, std::string_view message) {
  std::string text = "ERR: " + std::to_string(code);
  const std::string words = PlainWords(message);
  return words.empty() ? text : text + ", " + words;
}

std::string SentText(std::string_view id) { return "ID: " + std::string(id); }

std::string BatchSentLine(std::string_view id, std::string_view number) {
  return SentText(id) + Recipient(number);
}

std::string BatchErrorLine(int code, std::string_view message, std::string_view number) {
  return ErrorText(code, message) + Recipient(number);
}

std::string StatusText(int status) {
  const std::string digits = std::to_string(status);
  return "status: " + std::string(digits.size() < 3 ? 3 - digits.size() : 0, '0') + digits;
}

std::string ChargeText(int status, std::string_view charge) {
  return StatusText(status) + " charge: " + std::string(charge);
}

}  // namespace orvalo::component
