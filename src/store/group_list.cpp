#include "store/group_list.h"

#include <algorithm>
#include <utility>

#include "store/sms_database.h"

namespace orvalo {
namespace {

std::string CountedLabel(const std::string& name, std::int32_t count) {
  return name + " (" + std::to_string(count) + ")";
}

template <typename Entries>
auto FindEntry(Entries& entries, std::int32_t gid) {
  const auto place = std::lower_bound(
      entries.begin(), entries.end(), gid,
      [](const GroupDisplayList::Entry& entry, std::int32_t wanted) { return entry.gid < wanted; });
  return std::pair(place, place != entries.end() && place->gid == gid);
}

}  // namespace

void GroupDisplayList::Build() {
  std::vector<Entry> current;
  for (GroupRow& group : database_.AllGroups()) {
    std::string label = current.empty() ? group.name : CountedLabel(group.name, 0);
    current.push_back({group.gid, 0, std::move(group.name), std::move(label), false});
  }
  Count(current);
  for (Entry& entry : entries_) entry.stale = true;
  for (Entry& entry : current) {
    const auto [place, found] = FindEntry(entries_, entry.gid);
    if (found) {
      *place = std::move(entry);
    } else {
      entries_.insert(place, std::move(entry));
    }
  }
}

void GroupDisplayList::RefreshCounts() { Count(entries_); }

void GroupDisplayList::DropStale() {
  std::erase_if(entries_, [](const Entry& entry) { return entry.stale; });
}

const GroupDisplayList::Entry* GroupDisplayList::Find(std::int32_t gid) const {
  const auto [place, found] = FindEntry(entries_, gid);
  return found ? &*place : nullptr;
}

void GroupDisplayList::Count(std::vector<Entry>& entries) {
  for (const auto& [gid, count] : database_.MemberCounts()) {
    const auto [place, found] = FindEntry(entries, gid);
    if (!found || place->count == count) continue;
    place->count = count;
    place->label = CountedLabel(place->name, count);
  }
}

}  // namespace orvalo
