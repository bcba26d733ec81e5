#include "messages/recipient_tree.h"

#include <algorithm>
#include <utility>

#include "app/texts.h"
#include "contacts/external_address_book.h"
#include "contacts/recent_list.h"
#include "messages/contact_ticks.h"
#include "messages/recipient_view.h"
#include "platform/message_box.h"
#include "store/sms_database.h"

namespace orvalo {

namespace {

using Kind = RecipientNode::Kind;

constexpr std::int32_t kAllContactsGroup = 1;  // stands for every contact; never a node
constexpr int kFirstTopLabelId = 1321;         // "ADDRESS BOOK", "OUTLOOK", "RECENT"
constexpr int kSearchFailedCaptionId = 1336;
constexpr int kSearchFailedTextId = 1337;

std::unique_ptr<RecipientNode> MakeNode(Kind kind, std::int32_t key, std::string label) {
  auto node = std::make_unique<RecipientNode>();
  node->kind = kind;
  node->key = key;
  node->label = std::move(label);
  return node;
}

void Attach(RecipientNode& node, std::vector<std::unique_ptr<RecipientNode>> children) {
  for (std::size_t row = 0; row < children.size(); ++row) {
    children[row]->parent = &node;
    children[row]->row = row;
  }
  node.children = std::move(children);
  node.filled = true;
}

TickState StateFrom(std::size_t all, std::size_t ticked) {
  if (ticked == 0) return TickState::kClear;
  return ticked == all ? TickState::kTicked : TickState::kPartly;
}

std::string LabelOf(const ContactRow& row) {
  return row.name + " " + row.surname + " (" + row.mobile + ")";
}

std::vector<std::unique_ptr<RecipientNode>> MemberNodes(const std::vector<ContactRow>& members) {
  std::vector<std::unique_ptr<RecipientNode>> nodes;
  nodes.reserve(members.size());
  for (const ContactRow& row : members)
    nodes.push_back(MakeNode(Kind::kContact, row.cid, LabelOf(row)));
  return nodes;
}

std::vector<std::int32_t> IdsOf(const std::vector<ContactRow>& members) {
  std::vector<std::int32_t> ids;
  ids.reserve(members.size());
  for (const ContactRow& row : members) ids.push_back(row.cid);
  return ids;
}

TickState StateFrom(bool ticked) { return ticked ? TickState::kTicked : TickState::kClear; }

}  // namespace

RecipientTree::RecipientTree(SmsDatabase& database, ContactTicks& contacts, RecentList& recent,
                             ExternalAddressBook& external, const Texts& texts,
                             platform::MessageBoxes& boxes, RecipientTreeView& view)
    : database_(database),
      contacts_(contacts),
      recent_(recent),
      external_(external),
      texts_(texts),
      boxes_(boxes),
      view_(view) {
  Nodes top;
  int label = kFirstTopLabelId;
  for (const Kind kind : {Kind::kAddressBook, Kind::kExternalBook, Kind::kRecentNumbers}) {
    top.push_back(MakeNode(kind, AddressTree::kRoot, texts_.Load(label++)));
  }
  Attach(root_, std::move(top));
}

bool RecipientTree::CanExpand(const RecipientNode& node) {
  switch (node.kind) {
    case Kind::kContact:
    case Kind::kExternalEntry:
    case Kind::kRecentEntry:
      return false;
    default:
      return !node.filled || !node.children.empty();
  }
}

void RecipientTree::Empty(RecipientNode& node) {
  node.filled = false;
  if (node.children.empty()) return;
  view_.ChildrenChanging(node, 0);
  node.children.clear();
  view_.ChildrenChanged(node);
}

void RecipientTree::Put(RecipientNode& node, Nodes children) {
  Empty(node);
  if (children.empty()) {
    node.filled = true;
    return;
  }
  view_.ChildrenChanging(node, children.size());
  Attach(node, std::move(children));
  view_.ChildrenChanged(node);
}

// The nodes are the tree's own; only views hold them as constants.
void RecipientTree::Fill(const RecipientNode& node) {
  if (node.filled) return;
  auto& own = const_cast<RecipientNode&>(node);
  switch (node.kind) {
    case Kind::kAddressBook:
      return RebuildGroups();
    case Kind::kGroup:
      return FillGroup(own);
    case Kind::kExternalBook:
      return LoadExternal(false);
    case Kind::kFolder:
      return FillFolder(own);
    case Kind::kRecentNumbers:
      return RebuildRecent();
    default:
      return;
  }
}

void RecipientTree::FillGroup(RecipientNode& group) {
  contacts_.Resize(database_.PeekNextContactId());
  const std::vector<ContactRow> members = database_.MembersOf(group.key);
  groups_[group.key] = {.members = IdsOf(members)};
  Put(group, MemberNodes(members));
}

void RecipientTree::FillFolder(RecipientNode& folder) {
  const AddressTree& tree = external_.tree();
  Nodes children;
  for (const auto id : tree.Children(folder.key)) {
    children.push_back(tree.IsFolder(id) ? MakeNode(Kind::kFolder, id, tree.Name(id))
                                         : MakeNode(Kind::kExternalEntry, id,
                                                    tree.Name(id) + " (" + tree.Number(id) + ")"));
  }
  Put(folder, std::move(children));
}

void RecipientTree::RebuildGroups() {
  Nodes groups;
  for (GroupRow& group : database_.AllGroups()) {
    if (group.gid == kAllContactsGroup) continue;
    groups.push_back(MakeNode(Kind::kGroup, group.gid, std::move(group.name)));
  }
  groups_.clear();
  Put(*root_.children[0], std::move(groups));
}

void RecipientTree::FollowAddressBook() {
  const std::uint64_t now = database_.ContactChanges();
  if (seen_ == now) return;
  contacts_.Resize(database_.PeekNextContactId());
  if (GroupsHaveChanged()) {
    RebuildGroups();
  } else {
    RefreshMembers();
  }
  DropGoneTicks();
  seen_ = now;
  view_.TicksChanged();
}

bool RecipientTree::GroupsHaveChanged() {
  std::vector<GroupRow> groups = database_.AllGroups();
  std::erase_if(groups, [](const GroupRow& group) { return group.gid == kAllContactsGroup; });
  const Nodes& shown = root_.children[0]->children;
  return !std::equal(groups.begin(), groups.end(), shown.begin(), shown.end(),
                     [](const GroupRow& group, const auto& node) {
                       return group.gid == node->key && group.name == node->label;
                     });
}

void RecipientTree::RefreshMembers() {
  for (auto& [gid, group] : groups_) {
    const std::vector<ContactRow> members = database_.MembersOf(gid);
    group = {.members = IdsOf(members)};
    RecipientNode* node = FindGroup(gid);
    if (node == nullptr || !node->filled) continue;
    const bool same =
        std::equal(members.begin(), members.end(), node->children.begin(), node->children.end(),
                   [](const ContactRow& row, const auto& child) {
                     return row.cid == child->key && LabelOf(row) == child->label;
                   });
    if (!same) Put(*node, MemberNodes(members));
  }
}

void RecipientTree::DropGoneTicks() {
  const std::vector<std::int32_t> ticked = contacts_.Selected();
  auto next = ticked.begin();
  const auto drop_until = [&](std::int32_t there) {
    for (; next != ticked.end() && *next != there; ++next) contacts_.Select(*next, false);
    if (next != ticked.end()) ++next;
  };
  database_.ForEachContactOf(ticked, [&](const ContactView& contact) { drop_until(contact.cid); });
  for (; next != ticked.end(); ++next) contacts_.Select(*next, false);
}

void RecipientTree::RebuildRecent() {
  Nodes entries;
  for (std::size_t slot = 0; slot < recent_.size(); ++slot) {
    if (!recent_.IsFilled(slot)) continue;
    entries.push_back(
        MakeNode(Kind::kRecentEntry, static_cast<std::int32_t>(slot), recent_.Label(slot)));
  }
  Put(*root_.children[2], std::move(entries));
}

void RecipientTree::ReloadExternal() { LoadExternal(true); }

void RecipientTree::LoadExternal(bool force) {
  RecipientNode& book = *root_.children[1];
  const bool reads = external_.WouldLoad(force);
  if (reads) view_.ShowWait(true);
  Empty(book);
  bool failed = false;
  try {
    external_.LoadExternalAddressBook(force);
  } catch (...) {
    failed = true;
  }
  FillFolder(book);
  if (reads) view_.ShowWait(false);
  if (failed) {
    boxes_.Show(texts_.Load(kSearchFailedTextId), texts_.Load(kSearchFailedCaptionId),
                platform::BoxIcon::kStop);
  }
}

void RecipientTree::CollapseAll() {
  for (const auto& top : root_.children) view_.Collapse(*top);
}

void RecipientTree::SetTick(const RecipientNode& node, bool ticked) {
  switch (node.kind) {
    case Kind::kGroup:
      return TickGroup(node.key, ticked);
    case Kind::kContact:
      contacts_.Select(node.key, ticked);
      break;
    case Kind::kFolder:
    case Kind::kExternalEntry:
      external_.tree().Select(node.key, ticked);
      break;
    case Kind::kRecentEntry:
      recent_.Select(static_cast<std::size_t>(node.key), ticked);
      break;
    default:
      return;
  }
  view_.TicksChanged();
}

void RecipientTree::TickGroup(std::int32_t gid, bool ticked) {
  contacts_.Resize(database_.PeekNextContactId());
  Group& group = groups_[gid] = Group{};
  for (const ContactRow& row : database_.MembersOf(gid)) {
    group.members.push_back(row.cid);
    contacts_.Select(row.cid, ticked);
  }
  view_.TicksChanged();
}

TickState RecipientTree::StateOf(const RecipientNode& node) {
  switch (node.kind) {
    case Kind::kGroup:
      return GroupState(node.key);
    case Kind::kContact:
      return StateFrom(contacts_.IsSelected(node.key));
    case Kind::kFolder:
      return FolderState(node.key);
    case Kind::kExternalEntry:
      return StateFrom(external_.tree().IsSelected(node.key));
    case Kind::kRecentEntry:
      return StateFrom(recent_.IsSelected(static_cast<std::size_t>(node.key)));
    default:
      return TickState::kNoBox;
  }
}

TickState RecipientTree::GroupState(std::int32_t gid) {
  const auto found = groups_.find(gid);
  if (found == groups_.end()) return TickState::kClear;
  Group& group = found->second;
  if (group.generation != contacts_.Generation()) {
    const auto ticked =
        std::count_if(group.members.begin(), group.members.end(),
                      [this](std::int32_t cid) { return contacts_.IsSelected(cid); });
    group.state = StateFrom(group.members.size(), static_cast<std::size_t>(ticked));
    group.generation = contacts_.Generation();
  }
  return group.state;
}

TickState RecipientTree::FolderState(AddressTree::NodeId folder) const {
  const auto tally = external_.tree().Count(folder);
  return StateFrom(tally.entries, tally.selected);
}

RecipientNode* RecipientTree::FindGroup(std::int32_t gid) {
  for (const auto& group : root_.children[0]->children) {
    if (group->key == gid) return group.get();
  }
  return nullptr;
}

bool RecipientTree::RevealContact(std::int32_t cid) {
  for (const std::int32_t gid : database_.GroupsOf(cid)) {
    RecipientNode* group = FindGroup(gid);
    if (group == nullptr) continue;
    Fill(*group);
    const auto member = std::find_if(group->children.begin(), group->children.end(),
                                     [cid](const auto& node) { return node->key == cid; });
    if (member == group->children.end()) continue;
    view_.Reveal(**member);
    return true;
  }
  return false;
}

bool RecipientTree::RevealEntry(AddressTree::NodeId entry) {
  const AddressTree& tree = external_.tree();
  std::vector<AddressTree::NodeId> path;  // from the entry up
  for (auto id = entry; id != AddressTree::kRoot; id = tree.Parent(id)) path.push_back(id);
  RecipientNode* node = root_.children[1].get();
  for (; !path.empty(); path.pop_back()) {
    if (!node->filled) FillFolder(*node);
    const auto child =
        std::find_if(node->children.begin(), node->children.end(),
                     [&](const auto& candidate) { return candidate->key == path.back(); });
    if (child == node->children.end()) return false;
    node = child->get();
  }
  view_.Reveal(*node);
  return true;
}

}  // namespace orvalo
