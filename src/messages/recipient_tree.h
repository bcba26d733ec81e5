#pragma once
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "contacts/address_tree.h"

namespace orvalo::platform {
class MessageBoxes;
}

namespace orvalo {

class ContactTicks;
class ExternalAddressBook;
class RecentList;
class RecipientTreeView;
class SmsDatabase;
class Texts;

// One node of the recipient tree as it is drawn. Owned by its parent; its address stays until it
// goes.
struct RecipientNode {
  enum class Kind {
    kRoot,  // not drawn
    kAddressBook,
    kGroup,
    kContact,
    kExternalBook,
    kFolder,
    kExternalEntry,
    kRecentNumbers,
    kRecentEntry,
  };
  Kind kind = Kind::kRoot;
  std::int32_t key = 0;  // group id, contact id, node of the AddressTree, or slot
  std::string label;
  RecipientNode* parent = nullptr;
  std::size_t row = 0;  // among its parent's children
  bool filled = false;  // its children have been built
  std::vector<std::unique_ptr<RecipientNode>> children;
};

enum class TickState { kNoBox, kClear, kPartly, kTicked };

// The recipient tree: "ADDRESS BOOK" with the groups and their members, "OUTLOOK" with the external
// address book, "RECENT" with the recent numbers. Children are built when a node is expanded, so
// that a large address book costs nothing before it is looked at. The tree draws nothing and counts
// nothing; it keeps its ticks where they belong (contacts, recent list, address tree). Main thread.
class RecipientTree {
 public:
  RecipientTree(SmsDatabase& database, ContactTicks& contacts, RecentList& recent,
                ExternalAddressBook& external, const Texts& texts, platform::MessageBoxes& boxes,
                RecipientTreeView& view);
  RecipientTree(const RecipientTree&) = delete;
  RecipientTree& operator=(const RecipientTree&) = delete;

  const RecipientNode& root() const { return root_; }
  const RecipientNode& AddressBook() const { return *root_.children[0]; }
  const RecipientNode& ExternalBook() const { return *root_.children[1]; }
  const RecipientNode& Recent() const { return *root_.children[2]; }

  // Whether the node is to be drawn as one that can be expanded.
  static bool CanExpand(const RecipientNode& node);
  // Builds the node's children if they have not been; expanding "OUTLOOK" for the first time reads
  // the external address book.
  void Fill(const RecipientNode& node);

  // Ticks or clears the node's box, for a group, a folder: everything below it, shown or not.
  void SetTick(const RecipientNode& node, bool ticked);
  // The same by group id, whether the tree shows the group or not.
  void TickGroup(std::int32_t gid, bool ticked);
  // A group's box is derived from its members once they have been read; until then it is clear.
  TickState StateOf(const RecipientNode& node);

  // Builds the groups anew; their members go.
  void RebuildGroups();
  // Where the address book has changed since the last look: the present groups and members show,
  // and contacts that are gone are no longer chosen. What stays, stays ticked and open.
  void FollowAddressBook();
  void RebuildRecent();
  // Reads the external address book anew; the choices in it are gone. A failure is shown.
  void ReloadExternal();
  void CollapseAll();

  // Shows a contact under the first of its groups that the tree has, or an external entry in its
  // folders. False, changing nothing, when the tree has no place for it.
  bool RevealContact(std::int32_t cid);
  bool RevealEntry(AddressTree::NodeId entry);

 private:
  struct Group {
    std::vector<std::int32_t> members;
    TickState state = TickState::kClear;
    std::uint64_t generation = 0;  // of the ticks that `state` is derived from; 0: of none
  };
  using Nodes = std::vector<std::unique_ptr<RecipientNode>>;

  void Empty(RecipientNode& node);
  void Put(RecipientNode& node, Nodes children);
  void FillGroup(RecipientNode& group);
  bool GroupsHaveChanged();
  void RefreshMembers();
  void DropGoneTicks();
  void FillFolder(RecipientNode& folder);
  void LoadExternal(bool force);
  RecipientNode* FindGroup(std::int32_t gid);
  TickState GroupState(std::int32_t gid);
  TickState FolderState(AddressTree::NodeId folder) const;

  SmsDatabase& database_;
  ContactTicks& contacts_;
  RecentList& recent_;
  ExternalAddressBook& external_;
  const Texts& texts_;
  platform::MessageBoxes& boxes_;
  RecipientTreeView& view_;
  RecipientNode root_;
  std::map<std::int32_t, Group> groups_;  // those whose members have been read
  std::optional<std::uint64_t> seen_;     // SmsDatabase::ContactChanges of the last look
};

}  // namespace orvalo
