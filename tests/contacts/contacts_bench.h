#pragma once
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "app/export_places.h"
#include "app/texts.h"
#include "contacts/contacts_page.h"
#include "contacts/contacts_view.h"
#include "contacts/csv_export.h"
#include "contacts/csv_import_dialog.h"
#include "contacts/recipient_taker.h"
#include "store/sms_database.h"
#include "support/fake_clock.h"
#include "support/recording_mailbox.h"
#include "support/scripted_message_boxes.h"
#include "support/temporary_folder.h"

namespace orvalo::test {

// An address book in a temporary folder.
struct AddressBook {
  TemporaryFolder folder;
  FakeClock clock;
  Texts texts;
  ScriptedMessageBoxes boxes;
  ExportPlaces places;  // none is protected
  SmsDatabase database{folder.path(), texts, clock};

  std::int32_t Group(const std::string& name) { return database.AddGroup(name).gid; }
  std::int32_t Contact(const std::string& name, const std::string& surname,
                       const std::string& mobile, std::vector<std::int32_t> gids) {
    return database.AddContact({name, surname, "", "", mobile, std::move(gids)});
  }
  std::string LastCaption() const {
    return boxes.shown().empty() ? "" : boxes.shown().back().caption;
  }
  std::string LastText() const { return boxes.shown().empty() ? "" : boxes.shown().back().text; }
};

// The page's window: keeps what it is told, answers what it was set to. Dialogs are cancelled
// unless a function is set for them.
class FakeContactsView : public ContactsView {
 public:
  void ShowGroups() override { groups = {}; }
  void SelectGroup(std::size_t position) override {
    groups = {position};
    current_group = position;
  }
  void SelectAllGroups() override { ++all_groups; }
  std::vector<std::size_t> SelectedGroups() const override { return groups; }
  std::optional<std::size_t> CurrentGroup() const override { return current_group; }
  void ShowMembers(std::size_t count) override {
    rows = count;
    members = {};
  }
  void SelectMembers(std::span<const std::size_t> positions) override {
    members.assign(positions.begin(), positions.end());
  }
  void SelectAllMembers() override { ++all_members; }
  void RevealMember(std::size_t position) override { revealed = position; }
  std::vector<std::size_t> SelectedMembers() const override { return members; }
  std::optional<std::size_t> CurrentMember() const override { return current_member; }
  void ShowSorting(MemberColumn, bool is_descending) override { descending = is_descending; }
  void ShowMembersCaption(const std::string& group) override { caption = group; }
  void EnableSearch(bool enabled) override { search = enabled; }
  bool RunGroupDialog(GroupDialog& dialog) override { return group_dialog && group_dialog(dialog); }
  bool RunContactDialog(ContactDialog& dialog) override {
    return contact_dialog && contact_dialog(dialog);
  }
  std::optional<DeleteScope> AskDeleteScope() override {
    ++scope_questions;
    return scope;
  }
  bool RunImportDialog(CsvImportDialog& dialog) override {
    return import_dialog && import_dialog(dialog);
  }
  bool RunExportDialog(CsvExportDialog& dialog) override {
    return export_dialog && export_dialog(dialog);
  }

  std::vector<std::size_t> groups, members;
  std::optional<std::size_t> current_group, current_member, revealed;
  std::size_t rows = 0;
  int all_groups = 0, all_members = 0, scope_questions = 0;
  bool descending = false, search = true;
  std::string caption;
  std::optional<DeleteScope> scope;
  std::function<bool(GroupDialog&)> group_dialog;
  std::function<bool(ContactDialog&)> contact_dialog;
  std::function<bool(CsvImportDialog&)> import_dialog;
  std::function<bool(CsvExportDialog&)> export_dialog;
};

class FakeRecipients : public RecipientTaker {
 public:
  void SelectContactRecipients(std::span<const std::int32_t> ids) override {
    cids.assign(ids.begin(), ids.end());
  }
  void SelectGroupRecipients(std::span<const std::int32_t> ids) override {
    gids.assign(ids.begin(), ids.end());
  }
  std::vector<std::int32_t> cids, gids;
};

}  // namespace orvalo::test
