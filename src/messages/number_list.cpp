#include "messages/number_list.h"

#include <cstddef>

#include "platform/code_page.h"

namespace orvalo {

void NumberList::Set(std::size_t row, std::string_view text) {
  if (row >= rows_.size()) return;
  if (text.empty()) {
    Delete(row);
    return;
  }
  rows_[row] = platform::FirstCharacters(text, kNumberLength);
  if (row == Last()) rows_.emplace_back();
}

void NumberList::Delete(std::size_t row) {
  if (row < Last()) rows_.erase(rows_.begin() + static_cast<std::ptrdiff_t>(row));
}

void NumberList::Append(std::string_view number) {
  rows_.back() = number;
  rows_.emplace_back();
}

}  // namespace orvalo
