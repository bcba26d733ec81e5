#pragma once
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "contacts/contact_dialogs.h"
#include "contacts/member_rows.h"

namespace orvalo {

class CsvExportDialog;
class CsvImportDialog;

// The window of the contacts page, as far as its logic needs it. What it is told to show or select
// it must not report back as a change of the operator's. Positions count from 0; lists of positions
// are ascending. Main thread.
class ContactsView {
 public:
  virtual ~ContactsView() = default;

  // --- The list of groups: several may be selected. ---
  virtual void ShowGroups() = 0;  // ContactsPage::Groups has changed; nothing is selected then
  virtual void SelectGroup(std::size_t position) = 0;  // it alone; makes it current and visible
  virtual void SelectAllGroups() = 0;
  virtual std::vector<std::size_t> SelectedGroups() const = 0;
  virtual std::optional<std::size_t> CurrentGroup() const = 0;  // clicked last, or under the cursor

  // --- The list of members: it holds no items but asks ContactsPage::LineAt for what is visible.
  virtual void ShowMembers(std::size_t count) = 0;  // so many, all new; nothing is selected then
  virtual void SelectMembers(std::span<const std::size_t> positions) = 0;  // exactly these
  virtual void SelectAllMembers() = 0;
  virtual void RevealMember(std::size_t position) = 0;  // makes it current and visible
  virtual std::vector<std::size_t> SelectedMembers() const = 0;
  virtual std::optional<std::size_t> CurrentMember() const = 0;
  virtual void ShowSorting(MemberColumn column, bool descending) = 0;  // the mark in the header
  virtual void ShowMembersCaption(const std::string& group) = 0;       // behind "Members of Group:"

  virtual void EnableSearch(bool enabled) = 0;

  // --- Dialogs: return when the dialog has been left; true when with OK. ---
  virtual bool RunGroupDialog(GroupDialog& dialog) = 0;
  virtual bool RunContactDialog(ContactDialog& dialog) = 0;
  // "Delete contact from ...": nothing when it was cancelled.
  virtual std::optional<DeleteScope> AskDeleteScope() = 0;
  virtual bool RunImportDialog(CsvImportDialog& dialog) = 0;
  virtual bool RunExportDialog(CsvExportDialog& dialog) = 0;
};

}  // namespace orvalo
