#pragma once
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace orvalo {

class SmsDatabase;

// The list of groups with a check box each, as the contact, import and export dialogs show it:
// every group but the first ("All Contacts"), ascending by name. Made for one showing of a dialog;
// main thread.
class GroupChoices {
 public:
  struct Choice {
    std::int32_t gid = 0;
    std::string name;
    bool checked = false;
  };

  // Reads the groups; none is checked. Throws StoreError when they cannot be read.
  explicit GroupChoices(SmsDatabase& database);

  const std::vector<Choice>& Groups() const { return groups_; }
  void Check(std::size_t group, bool checked);  // a position beyond the list is passed over
  void CheckGid(std::int32_t gid);              // changes nothing when no group has it
  std::size_t CheckedCount() const { return checked_; }
  std::vector<std::int32_t> CheckedGids() const;  // in the order of the list

 private:
  std::vector<Choice> groups_;
  std::size_t checked_ = 0;
};

}  // namespace orvalo
