#pragma once
#include <cstdint>
#include <string>
#include <vector>

namespace orvalo::platform {

// An outside address book that has been opened: containers within containers, and in each of them
// people and distribution lists. Owned by whoever opened it; one thread at a time. What cannot be
// read is missing from the answers; nothing throws but lack of memory.
class AddressBook {
 public:
  // An entry's identifier within this book, for as long as the book lives. Any other number names
  // an entry without rows.
  using EntryId = std::uint32_t;
  static constexpr EntryId kRootContainer = 0;
  static constexpr EntryId kNoEntry = UINT32_MAX;

  struct HierarchyRow {
    EntryId id = kNoEntry;
    std::string name;  // empty: it has none
  };
  enum class Kind { kMailUser, kDistributionList };
  struct ContentsRow {
    Kind kind = Kind::kMailUser;
    EntryId id = kNoEntry;  // a list is walked as a container
    std::string name;       // empty: it has none
    std::string mobile;     // of a mail user, as it is written in the book; empty: none
  };

  virtual ~AddressBook() = default;

  // The containers within a container. A container may be reached more than once, also from within
  // itself: whoever walks sees to it that the walk ends.
  virtual std::vector<HierarchyRow> Hierarchy(EntryId container) = 0;
  // The people and lists of a container, or the members of a list.
  virtual std::vector<ContentsRow> Contents(EntryId container) = 0;
  // What of the book could not be read so far, in words; empty when nothing is missing.
  virtual std::vector<std::string> Problems() const = 0;
};

}  // namespace orvalo::platform
