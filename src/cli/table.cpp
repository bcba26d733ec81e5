#include "cli/table.h"

#include <algorithm>
#include <ostream>
#include <utility>

#include "platform/code_page.h"

namespace orvalo::cli {

namespace {

constexpr std::string_view kGap = "  ";

// Control characters of ASCII, and of Latin-1 as UTF-8 writes them (0xC2 0x80 to 0xC2 0x9F).
std::size_t ControlBytesAt(std::string_view text, std::size_t at) {
  const auto byte = static_cast<unsigned char>(text[at]);
  if (byte < 0x20 || byte == 0x7F) return 1;
  if (byte != 0xC2 || at + 1 == text.size()) return 0;
  const auto next = static_cast<unsigned char>(text[at + 1]);
  return next >= 0x80 && next < 0xA0 ? 2 : 0;
}

}  // namespace

std::string OneLine(std::string_view text) {
  std::string line;
  line.reserve(text.size());
  bool blank_due = false;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t control = ControlBytesAt(text, at);
    if (control == 0) {
      if (std::exchange(blank_due, false)) line += ' ';
      line += text[at++];
    } else {
      blank_due = !line.empty();
      at += control;
    }
  }
  return line;
}

Table::Table(std::ostream& out, std::vector<Column> columns)
    : out_(out), columns_(std::move(columns)) {
  std::vector<std::string> titles;
  titles.reserve(columns_.size());
  for (const Column& column : columns_) titles.push_back(column.title);
  Print(titles);
}

void Table::Add(const std::vector<std::string>& cells) { Print(cells); }

void Table::Print(const std::vector<std::string>& cells) {
  std::string line;
  for (std::size_t i = 0; i < columns_.size(); ++i) {
    const std::string text = OneLine(cells[i]);
    const std::size_t used = platform::CountCharacters(text);
    const std::string filling(columns_[i].width - std::min(columns_[i].width, used), ' ');
    const bool last = i + 1 == columns_.size();
    if (columns_[i].right) line += filling;
    line += text;
    if (!columns_[i].right && !last) line += filling;
    if (!last) line += kGap;
  }
  out_ << line << '\n';
}

}  // namespace orvalo::cli
