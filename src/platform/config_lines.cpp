#include "platform/config_lines.h"

#include <algorithm>

namespace orvalo::platform {

std::string_view WithoutBlanks(std::string_view text) {
  constexpr std::string_view kBlanks = " \t\r\v\f";
  const auto first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

void ReadConfigLines(std::string_view text, const std::function<bool(const ConfigLine&)>& take) {
  constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
  if (text.starts_with(kByteOrderMark)) text.remove_prefix(kByteOrderMark.size());
  while (!text.empty()) {
    const auto end = std::min(text.find('\n'), text.size());
    const auto line = WithoutBlanks(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
    if (line.empty() || line[0] == '#' || line[0] == ';') continue;
    ConfigLine found;
    if (line[0] == '[') {
      found.kind = ConfigLine::Kind::kSection;
      found.name = WithoutBlanks(line.substr(1, line.find(']') - 1));
    } else if (const auto equals = line.find('='); equals != std::string_view::npos) {
      found.kind = ConfigLine::Kind::kValue;
      found.name = WithoutBlanks(line.substr(0, equals));
      found.value = WithoutBlanks(line.substr(equals + 1));
    } else {
      found.name = line;
    }
    if (!take(found)) return;
  }
}

}  // namespace orvalo::platform
