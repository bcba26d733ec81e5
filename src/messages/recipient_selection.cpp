#include "messages/recipient_selection.h"

#include <algorithm>
#include <initializer_list>
#include <utility>

#include "app/texts.h"
#include "contacts/external_address_book.h"
#include "contacts/recent_list.h"
#include "messages/pasted_numbers.h"
#include "messages/recipient_view.h"
#include "platform/code_page.h"
#include "platform/message_box.h"
#include "store/sms_database.h"

namespace orvalo {

namespace {

constexpr int kDirectNameId = 1338;
constexpr int kNumbersCaptionId = 2200;
constexpr int kTakenTextId = 2201;
constexpr int kLeftOutTextId = 2202;
constexpr int kDoubledTextId = 2203;
constexpr int kNoNumberTextId = 2204;

constexpr const char* kDigits = "0123456789";

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

bool RecipientSelection::EndNumberEdit(std::size_t row, const std::optional<std::string>& text) {
  if (!text || (row <= numbers_.Last() && *text == numbers_.rows()[row])) return true;
  const std::vector<std::string_view> items = PastedItems(*text);
  if (items.size() > 1) {
    TakeList(*text);
    return false;
  }
  std::string number(items.empty() ? std::string_view() : items.front());
  if (number.find_first_not_of(kDigits) != std::string::npos ||
      number.size() > NumberList::kNumberLength) {
    auto written = NumberOf(number);
    if (!written) {
      TellLeftOut(number);
      return false;
    }
    number = std::move(*written);
  }
  const std::size_t last = numbers_.Last();
  numbers_.Set(row, number);
  NumbersChanged();
  if (numbers_.Last() > last) parts_.view.BringNumberIntoView(numbers_.Last());
  return true;
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

void RecipientSelection::PasteNumber(std::optional<std::size_t> selected, std::string_view text) {
  const auto item = TakePaste(text, NumberList::kNumberLength);
  if (item) parts_.view.EditNumber(RowOf(selected), item);
}

std::optional<std::string> RecipientSelection::TakePaste(std::string_view text, std::size_t room) {
  const std::vector<std::string_view> items = PastedItems(text);
  if (items.empty()) return std::nullopt;
  if (items.size() > 1) {
    TakeList(text);
    return std::nullopt;
  }
  const std::string_view item = items.front();
  const bool has_digit = item.find_first_of(kDigits) != std::string_view::npos;
  if (has_digit && platform::CountCharacters(item) <= room) return std::string(item);
  auto number = NumberOf(item);
  if (number && number->size() <= room) return number;
  TellLeftOut(item);
  return std::nullopt;
}

void RecipientSelection::TakeList(std::string_view text) {
  const PastedNumbers pasted = ReadPastedNumbers(text, numbers_.rows());
  for (const std::string& number : pasted.numbers) numbers_.Append(number);
  NumbersChanged();
  parts_.view.BringNumberIntoView(numbers_.Last());
  const auto line = [this](int id, std::initializer_list<platform::FormatInsert> inserts) {
    return parts_.texts.Format(id, inserts).value_or(std::string());
  };
  std::string told = line(kTakenTextId, {std::to_string(pasted.numbers.size())});
  if (pasted.left_out > 0) {
    told += "\n" + line(kLeftOutTextId, {std::to_string(pasted.left_out), pasted.first_left_out});
  }
  if (pasted.doubled > 0) {
    told += "\n" + line(kDoubledTextId, {std::to_string(pasted.doubled), pasted.first_doubled});
  }
  Tell(told);
}

void RecipientSelection::TellLeftOut(std::string_view item) {
  Tell(parts_.texts.Format(kNoNumberTextId, {ItemToShow(item)}).value_or(std::string()));
}

void RecipientSelection::Tell(const std::string& text) {
  parts_.boxes.Show(text, parts_.texts.Load(kNumbersCaptionId), platform::BoxIcon::kInformation);
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
  tree_.FollowAddressBook();
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

  for (const Named& one : used) {
    const auto lost = parts_.recent.AddRecent(one.name, one.surname, one.number);
    if (lost) numbers_.Append(*lost);
  }
  if (!used.empty()) tree_.RebuildRecent();
  NumbersChanged();
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
