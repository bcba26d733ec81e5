#pragma once
#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "contacts/contact_clipboard.h"
#include "contacts/contact_drag.h"
#include "contacts/contact_search.h"
#include "contacts/member_rows.h"
#include "store/group_list.h"

namespace orvalo::platform {
class Mailbox;
class MessageBoxes;
}  // namespace orvalo::platform

namespace orvalo {

class ContactsView;
class ExportPlaces;
class RecipientTaker;
class SmsDatabase;
class Texts;

// The columns of the member list: string id of the header, width in pixels.
struct MemberHeader {
  int text_id;
  int width;
};
inline constexpr std::array<MemberHeader, kMemberColumnCount> kMemberHeaders{
    {{2000, 160}, {2001, 160}, {2002, 130}}};

// The commands of the two context menus, in their order.
enum class GroupCommand { kNew, kDelete, kRename, kUpload, kSelectAll, kNewMessage };
enum class MemberCommand {
  kNew,
  kEdit,
  kDelete,
  kCopy,
  kCut,
  kPaste,
  kUpload,
  kSelectAll,
  kNewMessage
};

// What the contacts page works with. All of it outlives the page; references only.
struct ContactsParts {
  SmsDatabase& database;
  const Texts& texts;
  platform::MessageBoxes& boxes;
  platform::Mailbox& main_window;  // gets kWmSwitchPage
  RecipientTaker& recipients;      // the compose logic
  const ExportPlaces& places;      // for lists that are read and written
};

// The contacts page without its window: the groups, the members of the selected group, and what the
// operator does with them. Owned by whoever owns the window; main thread; the window forwards what
// the operator does and draws what this tells it. Where the store refuses, the operator is told and
// nothing has changed.
class ContactsPage {
 public:
  ContactsPage(const ContactsParts& parts, ContactsView& view);

  // Whenever the page is shown; the first time it loads the lists and selects the first group.
  void BroughtToFront();

  // --- The lists. A member's line is read when it is drawn; "?" when it cannot be read.
  const std::vector<GroupDisplayList::Entry>& Groups() const { return groups_.entries(); }
  void GroupSelectionChanged();  // by the operator
  std::size_t MemberCount() const { return members_.Count(); }
  MemberLine LineAt(std::size_t position);
  void HeaderClicked(MemberColumn column);

  // --- The context menus. A command that is not enabled does nothing. A double click on a member
  // is kEdit; Ctrl+A, Ctrl+C, Ctrl+X and Del are the commands of the list that has the focus.
  bool IsEnabled(GroupCommand command) const;
  void Run(GroupCommand command);
  bool IsEnabled(MemberCommand command) const;
  void Run(MemberCommand command);
  // Ctrl+V: as the menu's "Paste", which needs a selected member, but also into an empty group.
  void Paste();

  // --- The buttons.
  void NewGroup();
  void NewContact();
  void Upload();
  void Export();

  // --- The quick search.
  void SearchTextChanged(std::string_view text);
  void Search();  // "Search >>", or Enter in the field

  // --- Drag and drop.
  std::string DragText(std::size_t position) const;  // empty: nothing to be dragged
  DropEffect EffectOver(std::optional<std::size_t> group, bool ctrl, bool shift) const;
  // kWmContactCopyDrop or kWmContactMoveDrop on a group of the list.
  void Dropped(std::uint32_t message, std::size_t group, std::string_view text);

 private:
  using Entry = GroupDisplayList::Entry;

  // --- Loading
  void Reload();  // both lists; the group shown stays, or else the first is shown
  // 0: of none. When they are shown already, those selected that are still there stay selected.
  void ShowMembersOf(std::int32_t gid);
  void SelectContacts(const std::vector<std::int32_t>& cids);
  void ShowFound(std::int32_t cid);

  // --- What is selected
  std::optional<std::size_t> PositionOf(std::int32_t gid) const;
  bool IsAllContacts(std::size_t position) const { return position == 0; }
  std::vector<std::int32_t> SelectedGids() const;
  std::vector<std::int32_t> SelectedCids() const;  // in list order
  std::optional<std::int32_t> CidUnderCursor() const;
  bool HasRealGroup() const { return Groups().size() > 1; }
  bool CanPaste() const { return clipboard_.state() != ContactClipboard::State::kEmpty; }

  // --- Commands
  void DeleteGroup();
  void RenameGroup();
  void MessageToGroups();
  void MessageToContacts();
  void AddContact();
  void EditContact();
  void DeleteContacts();
  // Steps 2 and 3 of deleting: asks for the scope where it matters. False when that was cancelled.
  bool TakeOut(const std::vector<std::int32_t>& cids);
  void Remember(bool cut);
  void Import();
  void Inform(int text_id, int caption_id);
  bool Confirm(const std::string& question, int caption_id);
  // Runs what may meet a store that refuses, and tells the operator.
  void Guarded(const std::function<void()>& work);

  ContactsParts parts_;
  ContactsView& view_;
  GroupDisplayList groups_;
  MemberRows members_;
  ContactClipboard clipboard_;
  ContactSearch search_;
  bool loaded_ = false;
  std::int32_t shown_ = 0;  // the group whose members are shown; 0: none
};

}  // namespace orvalo
