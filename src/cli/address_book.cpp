#include "cli/address_book.h"

#include <algorithm>

#include "cli/command.h"
#include "platform/collation.h"
#include "store/sms_database.h"

namespace orvalo::cli {

GroupRow GroupByName(SmsDatabase& database, std::string_view name) {
  std::vector<GroupRow> groups = database.AllGroups();
  const auto found = std::find_if(groups.begin(), groups.end(), [&](const GroupRow& group) {
    return platform::EqualNoCase(group.name, name);
  });
  if (found == groups.end())
    throw CommandError(ExitCode::kFailed, "There is no group " + std::string(name));
  return *found;
}

GroupRow OwnGroupByName(SmsDatabase& database, std::string_view name) {
  GroupRow group = GroupByName(database, name);
  if (group.gid == kAllContacts) {
    throw CommandError(ExitCode::kFailed,
                       "The group " + group.name + " holds every contact and stays as it is");
  }
  return group;
}

std::vector<ContactRow> ContactsIn(SmsDatabase& database, std::int32_t gid) {
  return gid == kAllContacts ? database.AllContacts() : database.MembersOf(gid);
}

ContactRecord ContactById(SmsDatabase& database, std::int32_t cid) {
  if (auto record = database.GetContactRecord(cid)) return *record;
  throw CommandError(ExitCode::kFailed, "There is no contact " + std::to_string(cid));
}

std::vector<std::string> GroupNamesOf(SmsDatabase& database, std::int32_t cid) {
  std::vector<std::string> names;
  for (const std::int32_t gid : database.GroupsOf(cid)) {
    if (auto name = database.GetGroupName(gid)) names.push_back(std::move(*name));
  }
  return names;
}

bool IsMobileNumber(std::string_view text) {
  if (text.size() > kContactMobileWidth) return false;
  if (text.starts_with('+')) text.remove_prefix(1);
  constexpr std::size_t kFewestDigits = 3;
  return text.size() >= kFewestDigits &&
         text.find_first_not_of("0123456789") == std::string_view::npos;
}

}  // namespace orvalo::cli
