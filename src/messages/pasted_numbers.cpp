#include "messages/pasted_numbers.h"

#include <algorithm>
#include <unordered_set>
#include <utility>

#include "platform/code_page.h"

namespace orvalo {

namespace {

constexpr std::size_t kFewestDigits = 3;
constexpr std::size_t kMostCharacters = 16;  // of a recipient, as it is sent
constexpr std::size_t kShownCharacters = 40;

bool IsDigit(char byte) { return byte >= '0' && byte <= '9'; }

// How many bytes of space, hyphen or invisible mark the text begins with, 0 for none. Lists copied
// from documents and address books are full of the typographer's kinds.
std::size_t BlankOrHyphen(std::string_view text) {
  if (text.starts_with(' ') || text.starts_with('-')) return 1;
  for (const std::string_view mark : {"\u00A0", "\u00AD", "\u2212", "\u3000", "\uFEFF"}) {
    if (text.starts_with(mark)) return mark.size();
  }
  if (text.size() < 3 || text[0] != '\xE2') return 0;
  const auto second = static_cast<unsigned char>(text[1]);
  const auto third = static_cast<unsigned char>(text[2]);
  const bool spaces_and_dashes = second == 0x80 && third <= 0x95;           // U+2000 to U+2015
  const bool marks = (second == 0x80 && third >= 0xAA && third <= 0xAF) ||  // U+202A to U+202F
                     (second == 0x81 && third >= 0xA0 && third <= 0xA9);    // U+2060 to U+2069
  return spaces_and_dashes || marks ? 3 : 0;
}

std::string_view Trimmed(std::string_view text) {
  const std::size_t first = std::min(text.find_first_not_of(" \v\f"), text.size());
  text.remove_prefix(first);
  return text.substr(0, text.find_last_not_of(" \v\f") + 1);
}

// Numbers that differ only in their plus sign are the same.
std::string KeyOf(const std::string& number) {
  return number.starts_with('+') ? number.substr(1) : number;
}

}  // namespace

std::vector<std::string_view> PastedItems(std::string_view text) {
  std::vector<std::string_view> items;
  while (!text.empty()) {
    const std::string_view item = text.substr(0, text.find_first_of("\r\n,;\t"));
    text.remove_prefix(std::min(item.size() + 1, text.size()));
    if (const std::string_view kept = Trimmed(item); !kept.empty()) items.push_back(kept);
  }
  return items;
}

std::optional<std::string> NumberOf(std::string_view item) {
  std::string number;
  std::size_t open = 0;  // brackets
  while (!item.empty()) {
    if (number.starts_with('+') && item.starts_with("(0)")) {
      item.remove_prefix(3);
      continue;
    }
    if (const std::size_t blank = BlankOrHyphen(item); blank > 0) {
      item.remove_prefix(blank);
      continue;
    }
    const char next = item.front();
    item.remove_prefix(1);
    if (IsDigit(next) || (next == '+' && number.empty())) {
      number += next;
      if (number.size() > kMostCharacters) return std::nullopt;
    } else if (next == '(' || next == '[') {
      ++open;
    } else if (next == ')' || next == ']') {
      if (open-- == 0) return std::nullopt;
    } else if (next != '.' || (!item.empty() && !IsDigit(item.front()))) {
      return std::nullopt;
    }
  }
  const std::size_t digits = number.size() - (number.starts_with('+') ? 1 : 0);
  if (open != 0 || digits < kFewestDigits) return std::nullopt;
  return number;
}

PastedNumbers ReadPastedNumbers(std::string_view text, std::span<const std::string> present) {
  std::unordered_set<std::string> there;
  for (const std::string& number : present) there.insert(KeyOf(NumberOf(number).value_or(number)));
  PastedNumbers pasted;
  for (const std::string_view item : PastedItems(text)) {
    auto number = NumberOf(item);
    if (!number) {
      if (pasted.left_out++ == 0) pasted.first_left_out = ItemToShow(item);
    } else if (!there.insert(KeyOf(*number)).second) {
      if (pasted.doubled++ == 0) pasted.first_doubled = *number;
    } else {
      pasted.numbers.push_back(std::move(*number));
    }
  }
  return pasted;
}

std::string ItemToShow(std::string_view item) {
  const std::string_view shown = platform::FirstCharacters(item, kShownCharacters);
  return std::string(shown).append(shown.size() < item.size() ? "..." : "");
}

}  // namespace orvalo
