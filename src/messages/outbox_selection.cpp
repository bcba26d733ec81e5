#include "messages/outbox_selection.h"

#include <algorithm>

namespace orvalo {

namespace {

constexpr std::size_t kSpareRows = 10;

}  // namespace

void OutboxSelection::Reset(std::size_t rows) {
  if (rows > flags_.size()) flags_.resize(rows + kSpareRows);
  rows_ = rows;
  Clear();
}

void OutboxSelection::Set(std::size_t position, bool selected) {
  if (position < rows_) flags_[position] = selected;
}

void OutboxSelection::SetRange(std::size_t anchor, std::size_t clicked) {
  anchor_ = static_cast<std::int64_t>(anchor);
  const auto [first, last] = std::minmax(anchor, clicked);
  for (std::size_t position = first; position <= last && position < rows_; ++position)
    flags_[position] = true;
}

void OutboxSelection::SetAll() { std::fill_n(flags_.begin(), rows_, true); }

void OutboxSelection::Clear() {
  std::fill(flags_.begin(), flags_.end(), false);
  anchor_ = -1;
}

std::vector<std::size_t> OutboxSelection::Positions() const {
  std::vector<std::size_t> positions;
  for (std::size_t position = 0; position < rows_; ++position)
    if (flags_[position]) positions.push_back(position);
  return positions;
}

}  // namespace orvalo
