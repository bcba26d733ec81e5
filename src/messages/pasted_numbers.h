#pragma once
#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace orvalo {

// Mobile numbers as people write and paste them. Texts are UTF-8. Any thread.

// The items of a list, in order and without the blanks around them: separated by line ends, commas,
// semicolons and tabs; items of blanks alone are none. They look into `text`.
std::vector<std::string_view> PastedItems(std::string_view text);

// The number that an item is: a leading "+", if any, and its digits, without the spaces, brackets,
// dots and hyphens between them, and without the "(0)" that some write behind a country code.
// Nothing when the item is anything else: holds other characters, a bracket without its other half,
// a dot before a blank ("1. 0821110001" is a line of a numbered list), fewer than 3 digits, or more
// than 16 characters, which is all that is ever sent of a number.
std::optional<std::string> NumberOf(std::string_view item);

// What a list comes to.
struct PastedNumbers {
  std::vector<std::string> numbers;  // each once, in order
  std::size_t left_out = 0;          // items that are no numbers
  std::string first_left_out;        // as written; a long one is cut, with "..." behind it
  std::size_t doubled = 0;           // items left out since their number is there already
  std::string first_doubled;         // the number
};

// A number counts as there when it came earlier in the list, or is one of `present`, in whatever
// way that is written. Takes time in proportion to both.
PastedNumbers ReadPastedNumbers(std::string_view text, std::span<const std::string> present = {});

// An item in a message to the operator: cut to some 40 characters, with "..." behind it.
std::string ItemToShow(std::string_view item);

}  // namespace orvalo
