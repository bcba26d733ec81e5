#pragma once
#include <functional>
#include <string_view>

namespace orvalo::platform {

// The text without the blanks (not line ends) around it.
std::string_view WithoutBlanks(std::string_view text);

// What a line of a configuration file says.
struct ConfigLine {
  enum class Kind { kSection, kValue, kOther };  // "[name]", "name = value", anything else
  Kind kind = Kind::kOther;
  std::string_view name;
  std::string_view value;
};

// Calls `take` for each line of a configuration file, in order, until it answers false; blanks
// around each part are dropped. Empty lines, and those that begin with '#' or ';', are passed over,
// as is a byte-order mark. The views lie within `text`.
void ReadConfigLines(std::string_view text, const std::function<bool(const ConfigLine&)>& take);

}  // namespace orvalo::platform
