#include "cli/table.h"

#include <algorithm>
#include <ostream>
#include <utility>

#include "platform/code_page.h"
#include "platform/terminal.h"

namespace orvalo::cli {

namespace {

constexpr std::string_view kGap = "  ";

}  // namespace

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
    const std::string text = platform::PrintableLine(cells[i]);
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
