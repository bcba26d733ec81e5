#include "platform/ldap_index.h"

#include <algorithm>
#include <unordered_set>
#include <utility>

#include "platform/collation.h"
#include "platform/ldap_dn.h"
#include "platform/number.h"

namespace orvalo::platform {
namespace {

// Of names that a person could have given; longer and deeper ones are passed over.
constexpr std::size_t kLongestName = 4096;  // bytes
constexpr std::ptrdiff_t kDeepestName = 100;

enum class Meaning { kOther, kDisplayName, kCommonName, kMobile, kMember };

// What an attribute means to us, whatever options ("lang-nl") its name carries.
Meaning MeaningOf(std::string_view attribute) {
  constexpr std::pair<std::string_view, Meaning> kMeanings[] = {
      {"displayName", Meaning::kDisplayName},      {"cn", Meaning::kCommonName},
      {"commonName", Meaning::kCommonName},        {"mobile", Meaning::kMobile},
      {"mobileTelephoneNumber", Meaning::kMobile}, {"member", Meaning::kMember},
      {"uniqueMember", Meaning::kMember},
  };
  const std::string_view type = attribute.substr(0, attribute.find(';'));
  for (const auto& [name, meaning] : kMeanings)
    if (EqualNoCaseAscii(type, name)) return meaning;
  return Meaning::kOther;
}

// "member;range=0-1499" gives "member;range=1500-*"; the last portion ends with "-*", and a plain
// attribute is whole: both give nothing.
std::string NextPortion(std::string_view attribute) {
  constexpr std::string_view kRange = ";range=";
  const auto range = attribute.find(kRange);
  if (range == std::string_view::npos) return {};
  const std::string_view bounds = attribute.substr(range + kRange.size());
  const auto dash = bounds.find('-');
  if (dash == std::string_view::npos) return {};
  const std::int32_t first = ParseInteger(bounds);
  const std::int32_t last = ParseInteger(bounds.substr(dash + 1));
  if (last < first || last == INT32_MAX || bounds.substr(dash + 1) == "*") return {};
  return std::string(attribute.substr(0, range + kRange.size())) + std::to_string(last + 1) + "-*";
}

}  // namespace

const std::vector<std::string>& LdapIndex::Attributes() {
  static const std::vector<std::string> attributes = {"displayName", "cn", "mobile", "member",
                                                      "uniqueMember"};
  return attributes;
}

LdapIndex::LdapIndex(std::string_view base) : base_(ComparableDn(base)) {
  entries_.emplace_back();
  ids_.emplace(base_, kRootContainer);
}

bool LdapIndex::Add(const LdapEntry& entry) {
  if (entries_.size() >= kMostEntries) return false;
  std::string key = ComparableDn(entry.dn);
  if (key.empty() || key.size() > kLongestName ||
      std::count(key.begin(), key.end(), ',') > kDeepestName)
    return true;
  const EntryId id = PlaceFor(std::move(key), entry.dn, 0);
  if (entries_[id].known) return true;
  entries_[id].known = true;
  std::string_view display_name, common_name;
  for (const auto& [attribute, values] : entry.attributes) {
    const Meaning meaning = MeaningOf(attribute);
    if (meaning == Meaning::kMember) entries_[id].is_list = true;
    if (values.empty()) continue;
    if (meaning == Meaning::kDisplayName && display_name.empty()) display_name = values.front();
    if (meaning == Meaning::kCommonName && common_name.empty()) common_name = values.front();
    if (meaning == Meaning::kMobile && entries_[id].mobile.empty())
      entries_[id].mobile = values.front();
  }
  if (entries_[id].is_list) TakeMembers(id, entry);
  const std::string_view name = display_name.empty() ? common_name : display_name;
  entries_[id].name = name.empty() ? RdnValue(entry.dn, 0) : std::string(name);
  return true;
}

// The entry's number. One that is new stands below its parent, which is made when nothing has been
// read of it (its kind, or the server, hides it). `level` counts the steps up from the entry `dn`.
AddressBook::EntryId LdapIndex::PlaceFor(std::string key, std::string_view dn, std::size_t level) {
  if (const auto found = ids_.find(key); found != ids_.end()) return found->second;
  const auto id = static_cast<EntryId>(entries_.size());
  entries_.emplace_back();
  if (level > 0) entries_[id].name = RdnValue(dn, level);
  if (!key.empty() && IsBelowDn(key, base_)) {
    const std::string_view parent = ParentDn(key);
    if (last_parent_id_ == kNoEntry || parent != last_parent_) {
      const EntryId parent_id = PlaceFor(std::string(parent), dn, level + 1);
      last_parent_ = parent;
      last_parent_id_ = parent_id;
    }
    entries_[last_parent_id_].below.push_back(id);
  }
  ids_.emplace(std::move(key), id);
  return id;
}

void LdapIndex::TakeMembers(EntryId id, const LdapEntry& entry) {
  std::vector<std::string>& members = entries_[id].members;
  for (const auto& [name, values] : entry.attributes) {
    if (MeaningOf(name) != Meaning::kMember) continue;
    const std::size_t count = std::min(values.size(), kMostMembers - member_count_);
    member_count_ += count;
    members.insert(members.end(), values.begin(),
                   values.begin() + static_cast<std::ptrdiff_t>(count));
    std::string next = NextPortion(name);
    if (!next.empty() && member_count_ < kMostMembers)
      portions_.push_back({std::string(entry.dn), std::move(next)});
  }
}

std::vector<LdapIndex::Portion> LdapIndex::TakePortions() { return std::exchange(portions_, {}); }

void LdapIndex::AddMembers(const LdapEntry& entry) {
  const auto found = ids_.find(ComparableDn(entry.dn));
  if (found != ids_.end()) TakeMembers(found->second, entry);
}

std::vector<std::string> LdapIndex::UnknownMembers(bool base_is_complete) const {
  std::vector<std::string> unknown;
  std::unordered_set<std::string> keys;
  for (const Entry& entry : entries_) {
    for (const std::string& member : entry.members) {
      std::string key = ComparableDn(member);
      const auto found = ids_.find(key);
      if (key.empty() || (found != ids_.end() && entries_[found->second].known)) continue;
      if (base_is_complete && IsBelowDn(key, base_)) continue;
      if (keys.insert(std::move(key)).second) unknown.push_back(member);
    }
  }
  return unknown;
}

void LdapIndex::ResolveMembers() {
  for (Entry& entry : entries_) {
    if (!entry.is_list) continue;
    std::unordered_set<EntryId> taken;
    entry.below.clear();
    entry.below.reserve(entry.members.size());
    for (const std::string& member : entry.members) {
      const auto found = ids_.find(ComparableDn(member));
      if (found != ids_.end() && taken.insert(found->second).second)
        entry.below.push_back(found->second);
    }
    entry.members = {};
  }
}

bool LdapIndex::IsContent(EntryId id) const {
  return entries_[id].is_list || !entries_[id].mobile.empty();
}

bool LdapIndex::IsContainer(EntryId id) const {
  return !entries_[id].is_list && !entries_[id].below.empty();
}

std::vector<AddressBook::EntryId> LdapIndex::Below(EntryId container,
                                                   bool (LdapIndex::*wanted)(EntryId) const) const {
  if (container >= entries_.size()) return {};
  std::vector<std::pair<std::string, EntryId>> rows;
  rows.reserve(entries_[container].below.size());
  for (const EntryId id : entries_[container].below)
    if ((this->*wanted)(id)) rows.emplace_back(SortKey(entries_[id].name), id);
  std::sort(rows.begin(), rows.end());
  std::vector<EntryId> ids;
  ids.reserve(rows.size());
  for (const auto& [key, id] : rows) ids.push_back(id);
  return ids;
}

std::vector<AddressBook::HierarchyRow> LdapIndex::Hierarchy(EntryId container) {
  std::vector<HierarchyRow> rows;
  // Containers that are members of a list are none of its people.
  if (container < entries_.size() && entries_[container].is_list) return rows;
  const std::vector<EntryId> ids = Below(container, &LdapIndex::IsContainer);
  rows.reserve(ids.size());
  for (const EntryId id : ids) rows.push_back({id, entries_[id].name});
  return rows;
}

std::vector<AddressBook::ContentsRow> LdapIndex::Contents(EntryId container) {
  std::vector<ContentsRow> rows;
  const std::vector<EntryId> ids = Below(container, &LdapIndex::IsContent);
  rows.reserve(ids.size());
  for (const EntryId id : ids) {
    const Entry& entry = entries_[id];
    rows.push_back(
        {entry.is_list ? Kind::kDistributionList : Kind::kMailUser, id, entry.name, entry.mobile});
  }
  return rows;
}

}  // namespace orvalo::platform
