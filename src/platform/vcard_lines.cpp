#include "platform/vcard_lines.h"

#include <algorithm>

#include "platform/collation.h"
#include "platform/config_lines.h"

namespace orvalo::platform {
namespace {

constexpr std::size_t kMostParameters = 50;
constexpr std::size_t kLongestHead = 4096;  // bytes before the ":", when they are folded

// Where the first `mark` outside quotation marks stands, or the size.
std::size_t FindUnquoted(std::string_view text, char mark) {
  bool quoted = false;
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (text[at] == '"') quoted = !quoted;
    if (text[at] == mark && !quoted) return at;
  }
  return text.size();
}

bool IsEncoding(std::string_view word) {
  return EqualNoCaseAscii(word, "QUOTED-PRINTABLE") || EqualNoCaseAscii(word, "BASE64") ||
         EqualNoCaseAscii(word, "B") || EqualNoCaseAscii(word, "8BIT") ||
         EqualNoCaseAscii(word, "7BIT");
}

void AddParameter(std::string_view text, VcardProperty* property) {
  const auto equals = std::min(text.find('='), text.size());
  std::string_view name = WithoutBlanks(text.substr(0, equals));
  std::string value;
  if (equals == text.size()) {
    value = name;
    name = IsEncoding(value) ? "ENCODING" : "TYPE";
  } else {
    value = WithoutBlanks(text.substr(equals + 1));
    std::erase(value, '"');
  }
  property->parameters.emplace_back(name, std::move(value));
}

// What stands before the ":"; false when the line has none.
bool ReadHead(std::string_view line, VcardProperty* property, std::size_t* value_begin) {
  std::size_t colon = FindUnquoted(line, ':');
  if (colon == line.size()) colon = line.find(':');  // a quotation mark that nobody closed
  if (colon == std::string_view::npos) return false;
  *value_begin = colon + 1;
  std::string_view head = line.substr(0, colon);
  std::size_t end = FindUnquoted(head, ';');
  std::string_view name = WithoutBlanks(head.substr(0, end));
  const auto dot = name.rfind('.');
  property->group = name.substr(0, dot == std::string_view::npos ? 0 : dot);
  property->name = name.substr(dot == std::string_view::npos ? 0 : dot + 1);
  property->parameters.clear();
  while (end < head.size() && property->parameters.size() < kMostParameters) {
    head.remove_prefix(end + 1);
    end = FindUnquoted(head, ';');
    AddParameter(head.substr(0, end), property);
  }
  return true;
}

}  // namespace

std::string VcardProperty::Parameter(std::string_view wanted) const {
  for (const auto& [parameter, text] : parameters)
    if (EqualNoCaseAscii(parameter, wanted)) return text;
  return {};
}

bool VcardProperty::HasType(std::string_view type) const {
  for (const auto& [parameter, text] : parameters) {
    if (!EqualNoCaseAscii(parameter, "TYPE")) continue;
    std::string_view rest = text;
    while (!rest.empty()) {
      const auto comma = std::min(rest.find(','), rest.size());
      if (EqualNoCaseAscii(WithoutBlanks(rest.substr(0, comma)), type)) return true;
      rest.remove_prefix(std::min(comma + 1, rest.size()));
    }
  }
  return false;
}

bool VcardLines::Next(bool (*wanted)(std::string_view name), VcardProperty* property) {
  while (!rest_.empty()) {
    const std::string_view first = TakeLine();
    std::size_t value_begin = 0;
    // A head that is folded itself is unfolded before it is read.
    std::string head;
    std::string_view line = first;
    while (line.size() < kLongestHead && FindUnquoted(line, ':') == line.size() && NextIsFolded()) {
      if (head.empty()) head = first;
      head.append(TakeLine().substr(1));
      line = head;
    }
    if (!ReadHead(line, property, &value_begin)) continue;
    const bool take = wanted(property->name);
    const bool quoted_printable =
        EqualNoCaseAscii(property->Parameter("ENCODING"), "QUOTED-PRINTABLE");
    property->value.clear();
    std::string_view part = line.substr(value_begin);
    for (;;) {
      const bool soft_break = quoted_printable && part.ends_with('=');
      if (soft_break) part.remove_suffix(1);
      if (take) property->value.append(part);
      if (soft_break && !rest_.empty()) {
        part = TakeLine();
      } else if (NextIsFolded()) {
        part = TakeLine();
        if (!keep_fold_blanks_) part.remove_prefix(1);
      } else {
        break;
      }
    }
    if (take) return true;
  }
  return false;
}

// Lines end with CR LF, LF or CR.
std::string_view VcardLines::TakeLine() {
  const std::size_t end = std::min(rest_.find_first_of("\r\n"), rest_.size());
  const std::string_view line = rest_.substr(0, end);
  const std::size_t mark = rest_.substr(end).starts_with("\r\n") ? 2 : 1;
  rest_.remove_prefix(std::min(end + mark, rest_.size()));
  return line;
}

bool VcardLines::NextIsFolded() const { return rest_.starts_with(' ') || rest_.starts_with('\t'); }

}  // namespace orvalo::platform
