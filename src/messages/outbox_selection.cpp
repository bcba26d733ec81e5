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
  if (position >= rows_ || flags_[position] == selected) return;
  flags_[position] = selected;
  selected ? ++selected_ : --selected_;
}

void OutboxSelection::SetRange(std::size_t anchor, std::size_t clicked) {
  anchor_ = static_cast<std::int64_t>(anchor);
  const auto [first, last] = std::minmax(anchor, clicked);
  for (std::size_t position = first; position <= last && position < rows_; ++position)
    Set(position, true);
}

void OutboxSelection::SetAll() {
  std::fill_n(flags_.begin(), rows_, true);
  selected_ = rows_;
}

void OutboxSelection::Clear() {
  std::fill(flags_.begin(), flags_.end(), false);
  selected_ = 0;
  anchor_ = -1;
}

std::vector<std::size_t> OutboxSelection::Positions() const {
  std::vector<std::size_t> positions;
  positions.reserve(selected_);
  for (std::size_t position = 0; positions.size() < selected_; ++position)
    if (flags_[position]) positions.push_back(position);
  return positions;
}

std::vector<std::pair<std::size_t, std::size_t>> OutboxSelection::Runs() const {
  std::vector<std::pair<std::size_t, std::size_t>> runs;
  std::size_t position = 0;
  for (std::size_t seen = 0; seen < selected_; ++position) {
    if (!flags_[position]) continue;
    const std::size_t first = position;
    while (position < rows_ && flags_[position]) ++position;
    runs.emplace_back(first, position - 1);
    seen += position - first;
  }
  return runs;
}

}  // namespace orvalo
