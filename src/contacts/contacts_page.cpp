#include "contacts/contacts_page.h"

#include <algorithm>
#include <utility>

#include "app/texts.h"
#include "contacts/contact_dialogs.h"
#include "contacts/contacts_view.h"
#include "contacts/csv_export.h"
#include "contacts/csv_import_dialog.h"
#include "contacts/recipient_taker.h"
#include "gateway/engine_notices.h"
#include "platform/message_box.h"
#include "store/sms_database.h"
#include "store/store_error.h"

namespace orvalo {

namespace {

constexpr int kContactsProgramNameId = 1024;
constexpr int kNeedGroupForContactTextId = 1171;
constexpr int kNeedGroupCaptionId = 1173;
constexpr int kDeleteGroupCaptionId = 1176;
constexpr int kDeleteGroupTextId = 1177;
constexpr int kDeleteContactsCaptionId = 1178;
constexpr int kDeleteContactsTextId = 1179;
constexpr int kNoContactsExportCaptionId = 1421;
constexpr int kNoContactsToExportTextId = 1422;
constexpr int kNeedGroupForUploadTextId = 2003;

}  // namespace

ContactsPage::ContactsPage(const ContactsParts& parts, ContactsView& view)
    : parts_(parts),
      view_(view),
      groups_(parts.database),
      members_(parts.database),
      clipboard_(parts.database),
      search_(parts.database) {}

// --- Loading

void ContactsPage::BroughtToFront() {
  if (loaded_) return;
  Guarded([this] {
    view_.EnableSearch(search_.HasText());
    view_.ShowSorting(members_.SortColumn(), members_.IsDescending());
    Reload();
    loaded_ = true;
  });
}

void ContactsPage::Reload() {
  groups_.Build();
  groups_.DropStale();
  view_.ShowGroups();
  const std::size_t position = PositionOf(shown_).value_or(0);
  if (position < Groups().size()) view_.SelectGroup(position);
  ShowMembersOf(position < Groups().size() ? Groups()[position].gid : 0);
}

void ContactsPage::GroupSelectionChanged() {
  const auto selected = view_.SelectedGroups();
  const auto is_selected = [&](std::optional<std::size_t> position) {
    return position && *position < Groups().size() &&
           std::binary_search(selected.begin(), selected.end(), *position);
  };
  std::int32_t gid = 0;
  if (const auto current = view_.CurrentGroup(); is_selected(current)) {
    gid = Groups()[*current].gid;
  } else if (is_selected(PositionOf(shown_))) {
    gid = shown_;
  } else if (const auto gids = SelectedGids(); !gids.empty()) {
    gid = gids.front();
  }
  if (gid != shown_) Guarded([&] { ShowMembersOf(gid); });
}

void ContactsPage::ShowMembersOf(std::int32_t gid) {
  std::vector<std::int32_t> selected;
  if (gid == shown_) selected = SelectedCids();
  std::optional<MemberRows::Source> source;
  const auto position = PositionOf(gid);
  if (position) source = {gid, IsAllContacts(*position)};
  members_.Load(source);
  shown_ = gid;
  view_.ShowMembersCaption(position ? Groups()[*position].name : std::string());
  view_.ShowMembers(members_.Count());
  SelectContacts(selected);
}

void ContactsPage::SelectContacts(const std::vector<std::int32_t>& cids) {
  if (cids.empty()) return;
  const auto positions_of = members_.Positions();
  std::vector<std::size_t> positions;
  positions.reserve(cids.size());
  for (const std::int32_t cid : cids)
    if (const auto place = members_.PlaceOf(cid)) positions.push_back(positions_of[*place]);
  std::sort(positions.begin(), positions.end());
  view_.SelectMembers(positions);
  if (positions.size() == 1) view_.RevealMember(positions.front());
}

MemberLine ContactsPage::LineAt(std::size_t position) {
  MemberLine line{"?", "?", "?"};
  if (position >= members_.Count()) return line;
  try {
    const std::int32_t cids[] = {members_.CidAt(position)};
    parts_.database.ForEachContactOf(cids, [&](const ContactView& contact) {
      line = {std::string(contact.name), std::string(contact.surname), std::string(contact.mobile)};
    });
  } catch (const StoreError&) {
  }
  return line;
}

void ContactsPage::HeaderClicked(MemberColumn column) {
  Guarded([&] {
    const auto selected = SelectedCids();
    if (column == members_.SortColumn()) {
      members_.Reverse();
    } else {
      members_.SortBy(column);
    }
    view_.ShowSorting(members_.SortColumn(), members_.IsDescending());
    view_.ShowMembers(members_.Count());
    SelectContacts(selected);
  });
}

// --- What is selected

std::optional<std::size_t> ContactsPage::PositionOf(std::int32_t gid) const {
  const Entry* entry = groups_.Find(gid);
  if (entry == nullptr) return std::nullopt;
  return static_cast<std::size_t>(entry - Groups().data());
}

std::vector<std::int32_t> ContactsPage::SelectedGids() const {
  std::vector<std::int32_t> gids;
  for (const std::size_t position : view_.SelectedGroups())
    if (position < Groups().size()) gids.push_back(Groups()[position].gid);
  return gids;
}

std::vector<std::int32_t> ContactsPage::SelectedCids() const {
  const auto positions = view_.SelectedMembers();
  std::vector<std::int32_t> cids;
  cids.reserve(positions.size());
  for (const std::size_t position : positions)
    if (position < members_.Count()) cids.push_back(members_.CidAt(position));
  return cids;
}

// The clicked member; when the click went elsewhere, the first of those selected.
std::optional<std::int32_t> ContactsPage::CidUnderCursor() const {
  const auto selected = view_.SelectedMembers();
  if (selected.empty()) return std::nullopt;
  const auto current = view_.CurrentMember();
  const bool clicked = current && std::binary_search(selected.begin(), selected.end(), *current);
  const std::size_t position = clicked ? *current : selected.front();
  if (position >= members_.Count()) return std::nullopt;
  return members_.CidAt(position);
}

// --- The menus

bool ContactsPage::IsEnabled(GroupCommand command) const {
  const auto selected = view_.SelectedGroups();
  const bool real = !selected.empty() && !IsAllContacts(selected.front());
  switch (command) {
    case GroupCommand::kNew:
      return true;
    case GroupCommand::kDelete:
    case GroupCommand::kRename:
      return real && selected.size() == 1;
    case GroupCommand::kUpload:
      return real;
    case GroupCommand::kSelectAll:
    case GroupCommand::kNewMessage:
      return !selected.empty();
  }
  return false;
}

void ContactsPage::Run(GroupCommand command) {
  if (!IsEnabled(command)) return;
  switch (command) {
    case GroupCommand::kNew:
      NewGroup();
      break;
    case GroupCommand::kDelete:
      Guarded([this] { DeleteGroup(); });
      break;
    case GroupCommand::kRename:
      Guarded([this] { RenameGroup(); });
      break;
    case GroupCommand::kUpload:
      Guarded([this] { Import(); });
      break;
    case GroupCommand::kSelectAll:
      view_.SelectAllGroups();
      break;
    case GroupCommand::kNewMessage:
      Guarded([this] { MessageToGroups(); });
      break;
  }
}

bool ContactsPage::IsEnabled(MemberCommand command) const {
  switch (command) {
    case MemberCommand::kNew:
    case MemberCommand::kUpload:
      return true;
    case MemberCommand::kPaste:
      return CanPaste() && !view_.SelectedMembers().empty();
    default:
      return !view_.SelectedMembers().empty();
  }
}

void ContactsPage::Run(MemberCommand command) {
  if (!IsEnabled(command)) return;
  switch (command) {
    case MemberCommand::kNew:
      Guarded([this] { AddContact(); });
      break;
    case MemberCommand::kEdit:
      Guarded([this] { EditContact(); });
      break;
    case MemberCommand::kDelete:
      Guarded([this] { DeleteContacts(); });
      break;
    case MemberCommand::kCopy:
    case MemberCommand::kCut:
      Guarded([&] { Remember(command == MemberCommand::kCut); });
      break;
    case MemberCommand::kPaste:
      Paste();
      break;
    case MemberCommand::kUpload:
      Upload();
      break;
    case MemberCommand::kSelectAll:
      view_.SelectAllMembers();
      break;
    case MemberCommand::kNewMessage:
      Guarded([this] { MessageToContacts(); });
      break;
  }
}

// --- Groups

void ContactsPage::NewGroup() {
  Guarded([this] {
    GroupDialog dialog(parts_.texts);
    if (!view_.RunGroupDialog(dialog) || !dialog.OkEnabled()) return;
    parts_.database.AddGroup(dialog.Name());
    Reload();
  });
}

void ContactsPage::RenameGroup() {
  const auto gids = SelectedGids();
  const Entry* group = gids.empty() ? nullptr : groups_.Find(gids.front());
  if (group == nullptr) return;
  GroupDialog dialog(parts_.texts, group->name);
  if (!view_.RunGroupDialog(dialog) || !dialog.OkEnabled()) return;
  parts_.database.RenameGroup(gids.front(), dialog.Name());
  Reload();
}

void ContactsPage::DeleteGroup() {
  const auto gids = SelectedGids();
  const Entry* group = gids.empty() ? nullptr : groups_.Find(gids.front());
  if (group == nullptr) return;
  const auto question = parts_.texts.Format(kDeleteGroupTextId, {group->name, group->count});
  if (!Confirm(question.value_or(group->name), kDeleteGroupCaptionId)) return;
  parts_.database.DeleteGroup(gids.front());
  Reload();
}

// The compose logic knows members of groups; everybody are contacts.
void ContactsPage::MessageToGroups() {
  const auto gids = SelectedGids();
  if (gids.empty()) return;
  parts_.main_window.Post(kWmSwitchPage, 0, kComposeTab);
  if (PositionOf(gids.front()) != 0) {
    parts_.recipients.SelectGroupRecipients(gids);
    return;
  }
  std::vector<std::int32_t> everybody;
  parts_.database.ForEachContact(0, [&](const ContactView& contact) {
    everybody.push_back(contact.cid);
    return true;
  });
  parts_.recipients.SelectContactRecipients(everybody);
}

// --- Contacts

void ContactsPage::NewContact() {
  if (!HasRealGroup()) {
    Inform(kNeedGroupForContactTextId, kNeedGroupCaptionId);
    return;
  }
  Guarded([this] { AddContact(); });
}

void ContactsPage::AddContact() {
  ContactDialog dialog(parts_.texts, parts_.database, shown_);
  if (!view_.RunContactDialog(dialog) || !dialog.OkEnabled()) return;
  const std::int32_t cid = parts_.database.AddContact(dialog.Record());
  Reload();
  SelectContacts({cid});
}

void ContactsPage::EditContact() {
  const auto cid = CidUnderCursor();
  const auto record = cid ? parts_.database.GetContactRecord(*cid) : std::nullopt;
  if (!record) return;
  ContactDialog dialog(parts_.texts, parts_.database, *cid, *record);
  if (!view_.RunContactDialog(dialog) || !dialog.OkEnabled()) return;
  parts_.database.UpdateContact(*cid, dialog.Record());
  Reload();
}

void ContactsPage::DeleteContacts() {
  const auto cids = SelectedCids();
  std::string question = parts_.texts.Load(kDeleteContactsTextId);
  const std::size_t number = question.find("%d");
  if (number != std::string::npos) question.replace(number, 2, std::to_string(cids.size()));
  if (!Confirm(question, kDeleteContactsCaptionId)) return;
  if (TakeOut(cids)) Reload();
}

bool ContactsPage::TakeOut(const std::vector<std::int32_t>& cids) {
  const bool ask = std::any_of(cids.begin(), cids.end(), [this](std::int32_t cid) {
    return parts_.database.GroupCountOfContact(cid) > 1;
  });
  const auto scope = ask ? view_.AskDeleteScope() : std::optional(DeleteScope::kAllGroups);
  if (!scope) return false;
  SmsDatabase::Transaction transaction(parts_.database);
  for (const std::int32_t cid : cids)
    parts_.database.DeleteContact(cid, *scope == DeleteScope::kAllGroups, shown_);
  transaction.Commit();
  return true;
}

void ContactsPage::Remember(bool cut) {
  const auto cid = CidUnderCursor();
  if (!cid || !clipboard_.Remember(*cid, cut)) return;
  if (cut && TakeOut({*cid})) Reload();
}

void ContactsPage::Paste() {
  const auto position = PositionOf(shown_);
  if (!position || !CanPaste()) return;
  Guarded([&] {
    clipboard_.Paste(shown_, IsAllContacts(*position));
    Reload();
  });
}

void ContactsPage::MessageToContacts() {
  const auto cids = SelectedCids();
  if (cids.empty()) return;
  parts_.main_window.Post(kWmSwitchPage, 0, kComposeTab);
  parts_.recipients.SelectContactRecipients(cids);
}

// --- Import and export

void ContactsPage::Upload() {
  if (!HasRealGroup()) {
    Inform(kNeedGroupForUploadTextId, kNeedGroupCaptionId);
    return;
  }
  Guarded([this] { Import(); });
}

void ContactsPage::Import() {
  CsvImportDialog dialog(parts_.database, parts_.texts, parts_.boxes, parts_.places, shown_);
  if (view_.RunImportDialog(dialog)) Reload();
}

void ContactsPage::Export() {
  if (!HasRealGroup()) {
    Inform(kNoContactsToExportTextId, kNoContactsExportCaptionId);
    return;
  }
  Guarded([this] {
    CsvExportDialog dialog(parts_.database, parts_.texts, parts_.boxes, parts_.places,
                           SelectedCids());
    view_.RunExportDialog(dialog);
  });
}

// --- The quick search

void ContactsPage::SearchTextChanged(std::string_view text) {
  search_.SetText(text);
  view_.EnableSearch(search_.HasText());
}

void ContactsPage::Search() {
  Guarded([this] {
    if (const auto cid = search_.FindNext()) ShowFound(*cid);
  });
}

// A contact that is in no group is shown among all contacts.
void ContactsPage::ShowFound(std::int32_t cid) {
  const std::size_t position = PositionOf(parts_.database.FirstGroupOf(cid)).value_or(0);
  if (position >= Groups().size()) return;
  view_.SelectGroup(position);
  ShowMembersOf(Groups()[position].gid);
  SelectContacts({cid});
}

// --- Drag and drop

std::string ContactsPage::DragText(std::size_t position) const {
  if (position >= members_.Count()) return {};
  return DraggedContact{static_cast<std::int32_t>(members_.PlaceAt(position)), shown_}.Text();
}

DropEffect ContactsPage::EffectOver(std::optional<std::size_t> group, bool ctrl, bool shift) const {
  if (!group || *group >= Groups().size() || IsAllContacts(*group)) return DropEffect::kNone;
  return DropEffectOf(ctrl, shift);
}

void ContactsPage::Dropped(std::uint32_t message, std::size_t group, std::string_view text) {
  const auto dragged = DraggedContact::Parse(text);
  if (!dragged || EffectOver(group, false, false) == DropEffect::kNone) return;
  const auto place = static_cast<std::size_t>(dragged->place);
  if (dragged->place < 0 || place >= members_.Count()) return;
  const std::int32_t cid = members_.CidOfPlace(place);
  const std::int32_t gid = Groups()[group].gid;
  Guarded([&] {
    if (message == kWmContactCopyDrop) {
      parts_.database.AddToGroupIfAbsent(cid, gid);
    } else if (message == kWmContactMoveDrop) {
      parts_.database.MoveContact(cid, gid, dragged->gid);
    }
    Reload();
  });
}

// --- The operator

void ContactsPage::Inform(int text_id, int caption_id) {
  parts_.boxes.Show(parts_.texts.Load(text_id), parts_.texts.Load(caption_id),
                    platform::BoxIcon::kInformation);
}

bool ContactsPage::Confirm(const std::string& question, int caption_id) {
  return parts_.boxes.Show(question, parts_.texts.Load(caption_id), platform::BoxIcon::kQuestion,
                           platform::BoxButtons::kYesNo) == platform::BoxAnswer::kYes;
}

void ContactsPage::Guarded(const std::function<void()>& work) {
  try {
    work();
  } catch (const StoreError& error) {
    parts_.boxes.Show(error.InWords(parts_.texts), parts_.texts.Load(kContactsProgramNameId),
                      platform::BoxIcon::kStop);
  }
}

}  // namespace orvalo
