#include "messages/recipient_selection.h"

#include <algorithm>
#include <utility>

#include "app/texts.h"
#include "contacts/external_address_book.h"
#include "contacts/recent_list.h"
#include "messages/recipient_view.h"
#include "platform/code_page.h"
#include "store/sms_database.h"

namespace orvalo {

namespace {

constexpr int kDirectNameId = 1338;

// From here on one reading of all contacts is cheaper than a look-up of each.
constexpr std::size_t kManyContacts = 500;

}  // namespace

RecipientSelection::RecipientSelection(const Parts& parts)
    : parts_(parts),
      tree_(parts.database, contacts_, parts.recent, parts.external, parts.texts, parts.boxes,
            parts.view),
      search_(parts.database, parts.external, parts.settings, tree_) {}

// --- The typed numbers

bool RecipientSelection::AcceptTyped(char32_t character) {
  if (NumberList::IsAllowed(character)) return true;
  parts_.view.Beep();
  return false;
}

void RecipientSelection::NumbersChanged() {
  parts_.view.NumbersChanged();
  RefreshCounter();
}

void RecipientSelection::EndNumberEdit(std::size_t row, const std::optional<std::string>& text) {
  if (!text) return;
  const std::size_t last = numbers_.Last();
  numbers_.Set(row, *text);
  NumbersChanged();
  if (numbers_.Last() > last) parts_.view.BringNumberIntoView(numbers_.Last());
}

std::size_t RecipientSelection::RowOf(std::optional<std::size_t> selected) const {
  return std::min(selected.value_or(numbers_.Last()), numbers_.Last());
}

bool RecipientSelection::DigitKey(char32_t key, std::optional<std::size_t> selected) {
  if (!NumberList::IsAllowed(key)) return false;
  parts_.view.EditNumber(RowOf(selected), std::string(1, static_cast<char>(key)));
  return true;
}

void RecipientSelection::DeleteKey(std::optional<std::size_t> selected) {
  if (!selected) return;
  numbers_.Delete(*selected);
  NumbersChanged();
}

void RecipientSelection::DoubleClick(std::optional<std::size_t> selected) {
  if (selected) parts_.view.EditNumber(RowOf(selected), std::nullopt);
}

const std::string& RecipientSelection::NumberText(std::optional<std::size_t> selected) const {
  return numbers_.rows()[RowOf(selected)];
}

// As the one-line editing field takes a pasted text: its first line.
void RecipientSelection::PasteNumber(std::optional<std::size_t> selected, std::string_view text) {
  const std::string_view line = text.substr(0, text.find_first_of("\r\n"));
  if (line.empty()) return;
  parts_.view.EditNumber(RowOf(selected),
                         std::string(platform::FirstCharacters(line, NumberList::kNumberLength)));
}

// --- The tree

void RecipientSelection::Expand(const RecipientNode& node) {
  tree_.Fill(node);
  RefreshCounter();  // reading the external address book drops what was chosen in it
}

void RecipientSelection::SetTick(const RecipientNode& node, bool ticked) {
  tree_.SetTick(node, ticked);
  RefreshCounter();
}

std::optional<RecipientSelection::TreeMenu> RecipientSelection::MenuOf(const RecipientNode& node) {
  switch (node.kind) {
    case RecipientNode::Kind::kExternalBook:
      return TreeMenu{.rebuild = true, .clear = false};
    case RecipientNode::Kind::kRecentNumbers:
      return TreeMenu{.rebuild = false, .clear = true};
    default:
      return std::nullopt;
  }
}

void RecipientSelection::Rebuild() {
  tree_.ReloadExternal();
  RefreshCounter();
}

void RecipientSelection::Clear() {
  parts_.recent.ClearRecent();
  tree_.RebuildRecent();
  RefreshCounter();
}

void RecipientSelection::PageShown() {
  tree_.FollowAddressBook();
  RefreshCounter();
}

// --- The quick search

void RecipientSelection::SearchTextChanged(std::string_view text) {
  search_.SetText(text);
  parts_.view.EnableSearch(!text.empty());
}

void RecipientSelection::Search() {
  search_.FindNext();
  RefreshCounter();
}

// --- All recipients

std::size_t RecipientSelection::Count() const {
  return numbers_.Count() + contacts_.Count() + parts_.recent.SelectedCount() +
         parts_.external.tree().SelectedCount();
}

void RecipientSelection::RefreshCounter() { parts_.view.ShowRecipientCount(Count()); }

// The ticked recent numbers are taken before the list receives the others: what has just been
// chosen must not push out an entry that is chosen too.
RecipientString RecipientSelection::BuildRecipientString() {
  RecipientString to;
  std::vector<Named> used;
  for (const std::string& number : numbers_.rows()) {
    to.AddNumber(number);
    if (!number.empty()) used.push_back({parts_.texts.Load(kDirectNameId), "", number});
  }
  AppendContacts(to, used);
  for (std::size_t slot = 0; slot < parts_.recent.size(); ++slot) {
    if (parts_.recent.IsSelected(slot)) to.AddNumber(parts_.recent.Number(slot));
  }
  AppendExternal(to, used);

  for (const Named& one : used) parts_.recent.AddRecent(one.name, one.surname, one.number);
  if (!used.empty()) tree_.RebuildRecent();
  return to;
}

void RecipientSelection::AppendContacts(RecipientString& to, std::vector<Named>& used) {
  const std::vector<std::int32_t> cids = contacts_.Selected();
  for (const std::int32_t cid : cids) to.AddContact(cid);
  if (cids.size() < kManyContacts) {
    for (const std::int32_t cid : cids) {
      auto contact = parts_.database.GetContactRecord(cid);
      if (!contact) continue;
      used.push_back(
          {std::move(contact->name), std::move(contact->surname), std::move(contact->mobile)});
    }
    return;
  }
  for (ContactRow& contact : parts_.database.AllContacts()) {
    if (!contacts_.IsSelected(contact.cid)) continue;
    used.push_back(
        {std::move(contact.name), std::move(contact.surname), std::move(contact.mobile)});
  }
}

void RecipientSelection::AppendExternal(RecipientString& to, std::vector<Named>& used) const {
  const AddressTree& tree = parts_.external.tree();
  for (auto entry = tree.ChainHead(); entry != AddressTree::kNone;
       entry = tree.NextInChain(entry)) {
    if (!tree.IsSelected(entry)) continue;
    to.AddNumber(tree.Number(entry));
    used.push_back({tree.Name(entry), "", tree.Number(entry)});
  }
}

void RecipientSelection::LoadRecipients(std::string_view to) {
  tree_.FollowAddressBook();
  contacts_.Resize(parts_.database.PeekNextContactId());
  std::optional<std::int32_t> first;
  for (const RecipientItem& item : SplitRecipients(to)) {
    if (!item.cid) {
      numbers_.Append(item.text);
    } else if (contacts_.Holds(*item.cid)) {
      contacts_.Select(*item.cid, true);
      if (!first) first = item.cid;
    }
  }
  if (first) tree_.RevealContact(*first);
  parts_.view.TicksChanged();
  NumbersChanged();
}

void RecipientSelection::ClearRecipients() {
  numbers_.Clear();
  contacts_.Clear();
  parts_.recent.ClearSelections();
  parts_.external.tree().ClearSelections();
  tree_.CollapseAll();
  tree_.RebuildGroups();
  tree_.RebuildRecent();
  parts_.view.TicksChanged();
  NumbersChanged();
}

void RecipientSelection::BeginHandOver() {
  tree_.RebuildGroups();
  contacts_.Resize(parts_.database.PeekNextContactId());
  contacts_.Clear();
}

void RecipientSelection::SelectContactRecipients(std::span<const std::int32_t> cids) {
  BeginHandOver();
  for (const std::int32_t cid : cids) contacts_.Select(cid, true);
  if (!cids.empty()) tree_.RevealContact(cids.front());
  parts_.view.TicksChanged();
  RefreshCounter();
}

void RecipientSelection::SelectGroupRecipients(std::span<const std::int32_t> gids) {
  BeginHandOver();
  parts_.view.TicksChanged();
  for (const std::int32_t gid : gids) tree_.TickGroup(gid, true);
  RefreshCounter();
}

}  // namespace orvalo
