#pragma once
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace orvalo {

// Which display positions of the outbox are selected, as the list reports it; the list itself holds
// no items. Positions beyond the rows are passed over. Main thread.
class OutboxSelection {
 public:
  // The list has this many rows from now on; nothing is selected then.
  void Reset(std::size_t rows);

  void Set(std::size_t position, bool selected);
  void SetRange(std::size_t anchor, std::size_t clicked);  // both ends included
  void SetAll();
  void Clear();  // the anchor as well

  bool Has(std::size_t position) const { return position < rows_ && flags_[position]; }
  std::int64_t Anchor() const { return anchor_; }  // -1: none
  std::vector<std::size_t> Positions() const;      // ascending
  // The runs of selected positions, first and last of each, ascending.
  std::vector<std::pair<std::size_t, std::size_t>> Runs() const;

 private:
  std::vector<bool> flags_;  // grows with the rows, never shrinks
  std::size_t rows_ = 0;
  std::size_t selected_ = 0;  // how many flags are set
  std::int64_t anchor_ = -1;
};

}  // namespace orvalo
