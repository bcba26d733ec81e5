#pragma once
#include <cstdint>
#include <string>
#include <vector>

namespace orvalo {

class SmsDatabase;

// The groups as the user interface shows them, with their member counts. Owned by whoever shows
// them; main thread. The list lives on across rebuilds so that its user can keep what it has drawn
// and drop only the entries that have become stale.
class GroupDisplayList {
 public:
  struct Entry {
    std::int32_t gid = 0;
    std::int32_t count = 0;  // members shown
    std::string name;
    std::string label;   // "<name> (<count>)"; the first group's is the name alone until counted
    bool stale = false;  // the group no longer exists
  };

  explicit GroupDisplayList(SmsDatabase& database) : database_(database) {}

  // Takes the groups from the database, in order of gid, and counts their members. Entries of
  // groups that are gone stay, marked stale, until DropStale.
  void Build();
  // Counts again. A group that has lost its last member keeps the count and label it has; Build
  // shows it as empty.
  void RefreshCounts();
  void DropStale();

  const std::vector<Entry>& entries() const { return entries_; }
  const Entry* Find(
      std::int32_t gid) const;  // null when there is none; valid until the next change

 private:
  void Count(std::vector<Entry>& entries);

  SmsDatabase& database_;
  std::vector<Entry> entries_;  // in order of gid
};

}  // namespace orvalo
