#pragma once
#include <cstddef>
#include <cstdint>
#include <vector>

namespace orvalo {

// Which contacts are chosen as recipients: one flag for every contact id, so that a contact is
// chosen wherever it shows. Main thread.
class ContactTicks {
 public:
  // Makes room for the ids up to `next_contact_id`; flags of ids beyond it go.
  void Resize(std::int32_t next_contact_id);
  bool Holds(std::int32_t cid) const;
  bool IsSelected(std::int32_t cid) const;
  // Changes nothing when the table does not hold the id.
  void Select(std::int32_t cid, bool selected);
  void Clear();
  std::size_t Count() const { return count_; }
  std::vector<std::int32_t> Selected() const;  // ascending
  // Grows with every change; for whoever keeps what it derived from the flags.
  std::uint64_t Generation() const { return generation_; }

 private:
  std::vector<char> flags_;  // by id
  std::size_t count_ = 0;
  std::uint64_t generation_ = 0;
};

}  // namespace orvalo
