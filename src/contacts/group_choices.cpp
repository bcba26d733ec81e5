#include "contacts/group_choices.h"

#include <algorithm>
#include <utility>

#include "platform/collation.h"
#include "store/sms_database.h"

namespace orvalo {

GroupChoices::GroupChoices(SmsDatabase& database) {
  std::vector<GroupRow> rows = database.AllGroups();
  if (rows.empty()) return;
  groups_.reserve(rows.size() - 1);
  for (auto row = rows.begin() + 1; row != rows.end(); ++row)
    groups_.push_back({row->gid, std::move(row->name), false});
  std::stable_sort(groups_.begin(), groups_.end(), [](const Choice& a, const Choice& b) {
    return platform::CompareTexts(a.name, b.name) < 0;
  });
}

void GroupChoices::Check(std::size_t group, bool checked) {
  if (group >= groups_.size() || groups_[group].checked == checked) return;
  groups_[group].checked = checked;
  checked_ += checked ? 1 : -1;
}

void GroupChoices::CheckGid(std::int32_t gid) {
  const auto found = std::find_if(groups_.begin(), groups_.end(),
                                  [gid](const Choice& group) { return group.gid == gid; });
  Check(static_cast<std::size_t>(found - groups_.begin()), true);
}

std::vector<std::int32_t> GroupChoices::CheckedGids() const {
  std::vector<std::int32_t> gids;
  gids.reserve(checked_);
  for (const Choice& group : groups_)
    if (group.checked) gids.push_back(group.gid);
  return gids;
}

}  // namespace orvalo
