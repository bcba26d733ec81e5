#include "messages/contact_ticks.h"

#include <algorithm>

namespace orvalo {

void ContactTicks::Resize(std::int32_t next_contact_id) {
  flags_.resize(static_cast<std::size_t>(std::max(next_contact_id, 0)) + 1);
  count_ = static_cast<std::size_t>(std::count(flags_.begin(), flags_.end(), 1));
  ++generation_;
}

bool ContactTicks::Holds(std::int32_t cid) const {
  return cid > 0 && static_cast<std::size_t>(cid) < flags_.size();  // ids begin at 1
}

bool ContactTicks::IsSelected(std::int32_t cid) const {
  return Holds(cid) && flags_[static_cast<std::size_t>(cid)] != 0;
}

void ContactTicks::Select(std::int32_t cid, bool selected) {
  if (!Holds(cid) || IsSelected(cid) == selected) return;
  flags_[static_cast<std::size_t>(cid)] = selected ? 1 : 0;
  if (selected) {
    ++count_;
  } else {
    --count_;
  }
  ++generation_;
}

void ContactTicks::Clear() {
  std::fill(flags_.begin(), flags_.end(), 0);
  count_ = 0;
  ++generation_;
}

std::vector<std::int32_t> ContactTicks::Selected() const {
  std::vector<std::int32_t> cids;
  cids.reserve(count_);
  for (std::size_t cid = 0; cid < flags_.size(); ++cid) {
    if (flags_[cid] != 0) cids.push_back(static_cast<std::int32_t>(cid));
  }
  return cids;
}

}  // namespace orvalo
