#pragma once
#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/address_book.h"
#include "platform/ldap_connection.h"

namespace orvalo::platform {

// What was read of a directory, as an address book: the entry at the base is the root container,
// whatever lies below an entry is its contents, and members of lists are looked up by name. A
// directory knows no order: rows come by name.
//
// Filled first (Add, then ResolveMembers), read afterwards.
class LdapIndex : public AddressBook {
 public:
  static constexpr std::size_t kMostEntries = 500'000;
  static constexpr std::size_t kMostMembers = 2'000'000;  // of all lists together
  static const std::vector<std::string>& Attributes();    // what Add looks at

  explicit LdapIndex(std::string_view base);

  // Takes an entry in; one that is there already stays as it is. Entries outside the base are
  // nobody's contents, only members. False when no more fit.
  bool Add(const LdapEntry& entry);

  // A list whose server gives its members in portions: ask for `attribute` next, then AddMembers.
  struct Portion {
    std::string dn;
    std::string attribute;  // "member;range=1500-*"
  };
  std::vector<Portion> TakePortions();
  void AddMembers(const LdapEntry& entry);

  // The members that no entry has been added for, each once, as written. Those below the base are
  // left out when `base_is_complete`: they are not there, or are nobody one could write to.
  std::vector<std::string> UnknownMembers(bool base_is_complete) const;
  void ResolveMembers();

  void AddProblem(std::string problem) { problems_.push_back(std::move(problem)); }

  std::vector<HierarchyRow> Hierarchy(EntryId container) override;
  std::vector<ContentsRow> Contents(EntryId container) override;
  std::vector<std::string> Problems() const override { return problems_; }

 private:
  struct Entry {
    std::string name;
    std::string mobile;
    bool known = false;  // it was added; else only known from what lies below it
    bool is_list = false;
    std::vector<std::string> members;  // as written
    std::vector<EntryId> below;        // of a list, once resolved: its members
  };

  EntryId PlaceFor(std::string key, std::string_view dn, std::size_t level);
  bool IsContent(EntryId id) const;
  bool IsContainer(EntryId id) const;
  void TakeMembers(EntryId id, const LdapEntry& entry);
  std::vector<EntryId> Below(EntryId container, bool (LdapIndex::*wanted)(EntryId) const) const;

  std::string base_;  // comparable
  std::vector<Entry> entries_;
  std::unordered_map<std::string, EntryId> ids_;  // by comparable name
  std::string last_parent_;                       // neighbours mostly share it
  EntryId last_parent_id_ = kNoEntry;
  std::vector<Portion> portions_;
  std::size_t member_count_ = 0;
  std::vector<std::string> problems_;
};

}  // namespace orvalo::platform
