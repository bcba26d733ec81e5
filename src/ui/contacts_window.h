#pragma once
#include <QWidget>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "contacts/contacts_page.h"
#include "contacts/contacts_view.h"
#include "ui/group_model.h"
#include "ui/kit.h"
#include "ui/member_model.h"

QT_BEGIN_NAMESPACE
class QAbstractItemView;
class QDropEvent;
class QLabel;
class QLineEdit;
class QListView;
class QMenu;
class QPushButton;
class QTableView;
QT_END_NAMESPACE

namespace orvalo::ui {

// The "Addresses" page (dialog 132): the groups, the members of the selected one, and the buttons
// above them. What it does stands in ContactsPage. Owned by ContactsArea; main thread.
class ContactsWindow : public QWidget, public ContactsView {
 public:
  explicit ContactsWindow(const Kit& kit);  // throws FormError
  ~ContactsWindow() override;

  // The logic behind the window; set once, before anything is shown.
  void SetPage(ContactsPage* page);

  // --- ContactsView
  void ShowGroups() override;
  void SelectGroup(std::size_t position) override;
  void SelectAllGroups() override;
  std::vector<std::size_t> SelectedGroups() const override;
  std::optional<std::size_t> CurrentGroup() const override;
  void ShowMembers(std::size_t count) override;
  void SelectMembers(std::span<const std::size_t> positions) override;
  void SelectAllMembers() override;
  void RevealMember(std::size_t position) override;
  std::vector<std::size_t> SelectedMembers() const override;
  std::optional<std::size_t> CurrentMember() const override;
  void ShowSorting(MemberColumn column, bool descending) override;
  void ShowMembersCaption(const std::string& group) override;
  void EnableSearch(bool enabled) override;
  bool RunGroupDialog(GroupDialog& dialog) override;
  bool RunContactDialog(ContactDialog& dialog) override;
  std::optional<DeleteScope> AskDeleteScope() override;
  bool RunImportDialog(CsvImportDialog& dialog) override;
  bool RunExportDialog(CsvExportDialog& dialog) override;

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;
  void changeEvent(QEvent* event) override;

 private:
  void WireBar();
  void WireGroups();
  void WireMembers();
  void WireKeys();
  void SizeColumns();
  void OpenMenu(QAbstractItemView& list, const QContextMenuEvent& wanted);
  bool DragOverGroups(QDropEvent& event, bool drop);

  const Kit& kit_;
  ContactsPage* page_ = nullptr;
  GroupModel group_model_;
  MemberModel member_model_;
  QListView* groups_ = nullptr;
  QTableView* members_ = nullptr;
  QLabel* caption_ = nullptr;
  QLineEdit* search_ = nullptr;
  QPushButton* search_button_ = nullptr;
  std::unique_ptr<QMenu> group_menu_;
  std::unique_ptr<QMenu> member_menu_;
  bool told_ = false;  // what is shown or selected just now comes from the page
};

}  // namespace orvalo::ui
