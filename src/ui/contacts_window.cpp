#include "ui/contacts_window.h"

#include <QContextMenuEvent>
#include <QDropEvent>
#include <QItemSelectionModel>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QMenu>
#include <QMimeData>
#include <QPushButton>
#include <QScopedValueRollback>
#include <QShortcut>
#include <QTableView>
#include <algorithm>
#include <functional>

#include "contacts/csv_export.h"
#include "contacts/csv_import_dialog.h"
#include "ui/contact_windows.h"
#include "ui/csv_windows.h"
#include "ui/form_loader.h"
#include "ui/images.h"
#include "ui/outbox_header.h"

namespace orvalo::ui {

namespace {

constexpr int kContactsForm = 132;
constexpr int kGroupMenu = 214;
constexpr int kMemberMenu = 215;

constexpr int kMemberLineSpace = 10;  // above and below a line's text
constexpr int kMenuOffset = 16;
constexpr double kPlainNumber = 110;  // pixels that sixteen digits take in a small font
// More runs of selected lines than this are not shown one by one: each costs time in every drawing.
constexpr int kMostMemberRuns = 10'000;

std::vector<std::size_t> SelectedRows(const QAbstractItemView& list) {
  std::vector<std::size_t> rows;
  for (const QItemSelectionRange& range : list.selectionModel()->selection()) {
    for (int row = range.top(); row <= range.bottom(); ++row)
      rows.push_back(static_cast<std::size_t>(row));
  }
  std::sort(rows.begin(), rows.end());
  rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
  return rows;
}

std::optional<std::size_t> CurrentRow(const QAbstractItemView& list) {
  const QModelIndex current = list.currentIndex();
  if (!current.isValid()) return std::nullopt;
  return static_cast<std::size_t>(current.row());
}

// Fills the menu's greying in, and runs what is chosen.
template <typename Command>
void WireMenu(QMenu& menu, ContactsPage& page) {
  const auto command_of = [](const QAction* action) {
    return static_cast<Command>(action->data().toInt());
  };
  QObject::connect(&menu, &QMenu::aboutToShow, &menu, [&menu, &page, command_of] {
    for (QAction* action : menu.actions())
      if (!action->isSeparator()) action->setEnabled(page.IsEnabled(command_of(action)));
  });
  QObject::connect(&menu, &QMenu::triggered, &menu,
                   [&page, command_of](const QAction* action) { page.Run(command_of(action)); });
}

}  // namespace

ContactsWindow::ContactsWindow(const Kit& kit) : kit_(kit), group_model_(kit), member_model_(kit) {
  kit_.forms.LoadInto(*this, kContactsForm);
  groups_ = &Child<QListView>(*this, "groupList");
  members_ = &Child<QTableView>(*this, "memberList");
  caption_ = &Child<QLabel>(*this, "membersCaption");
  search_ = &Child<QLineEdit>(*this, "contactSearch");
  search_button_ = &Child<QPushButton>(*this, "contactSearchButton");
  group_menu_ = kit_.forms.LoadMenu(kGroupMenu, this);
  member_menu_ = kit_.forms.LoadMenu(kMemberMenu, this);
  WireBar();
  WireGroups();
  WireMembers();
  WireKeys();
}

ContactsWindow::~ContactsWindow() = default;

void ContactsWindow::SetPage(ContactsPage* page) {
  page_ = page;
  member_model_.SetSource({[page](std::size_t position) { return page->LineAt(position); },
                           [page](std::size_t position) { return page->DragText(position); },
                           [this] { return CurrentRow(*members_).value_or(0); }});
  WireMenu<GroupCommand>(*group_menu_, *page);
  WireMenu<MemberCommand>(*member_menu_, *page);
}

void ContactsWindow::WireBar() {
  const auto wire = [this](const char* name, const char* icon, IconTint tint,
                           void (ContactsPage::*command)()) {
    auto& button = Child<QPushButton>(*this, name);
    button.setIcon(kit_.images.Icon(icon, tint));
    connect(&button, &QPushButton::clicked, this,
            [this, command] { std::invoke(command, *page_); });
  };
  wire("newContact", "contacts-new", IconTint::kOnAccent, &ContactsPage::NewContact);
  wire("newGroup", "contacts-group", IconTint::kText, &ContactsPage::NewGroup);
  wire("uploadContacts", "contacts-upload", IconTint::kText, &ContactsPage::Upload);
  wire("exportContacts", "outbox-export", IconTint::kText, &ContactsPage::Export);
  wire("contactSearchButton", "contacts-search", IconTint::kText, &ContactsPage::Search);
  connect(search_, &QLineEdit::textChanged, this,
          [this](const QString& text) { page_->SearchTextChanged(text.toStdString()); });
  connect(search_, &QLineEdit::returnPressed, this, [this] { page_->Search(); });
}

void ContactsWindow::WireGroups() {
  groups_->setModel(&group_model_);
  groups_->viewport()->setAcceptDrops(true);
  for (QObject* watched :
       {static_cast<QObject*>(groups_), static_cast<QObject*>(groups_->viewport())})
    watched->installEventFilter(this);
  const auto changed = [this] {
    if (!told_) page_->GroupSelectionChanged();
  };
  connect(groups_->selectionModel(), &QItemSelectionModel::selectionChanged, this, changed);
  connect(groups_->selectionModel(), &QItemSelectionModel::currentChanged, this, changed);
}

void ContactsWindow::WireMembers() {
  auto* header = new OutboxHeader(members_);
  header->setObjectName(QStringLiteral("memberHeader"));
  members_->setHorizontalHeader(header);
  members_->verticalHeader()->hide();
  members_->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
  members_->setModel(&member_model_);
  SizeColumns();
  setTabOrder(groups_, header);
  setTabOrder(header, members_);
  ShowTestIds(*this);
  for (QObject* watched :
       {static_cast<QObject*>(members_), static_cast<QObject*>(members_->viewport())})
    watched->installEventFilter(this);
  connect(header, &QHeaderView::sectionClicked, this,
          [this](int section) { page_->HeaderClicked(static_cast<MemberColumn>(section)); });
  connect(members_, &QTableView::doubleClicked, this, [this] { page_->Run(MemberCommand::kEdit); });
}

void ContactsWindow::WireKeys() {
  const auto key = [this](const QKeySequence& keys, QWidget* where, auto run) {
    auto* shortcut = new QShortcut(keys, where);
    shortcut->setContext(Qt::WidgetShortcut);
    connect(shortcut, &QShortcut::activated, this, run);
  };
  const auto member = [&](const QKeySequence& keys, MemberCommand command) {
    key(keys, members_, [this, command] { page_->Run(command); });
  };
  const auto group = [&](const QKeySequence& keys, GroupCommand command) {
    key(keys, groups_, [this, command] { page_->Run(command); });
  };
  member(QKeySequence::SelectAll, MemberCommand::kSelectAll);
  member(QKeySequence::Copy, MemberCommand::kCopy);
  member(QKeySequence::Cut, MemberCommand::kCut);
  member(QKeySequence::Delete, MemberCommand::kDelete);
  member(QKeySequence(Qt::Key_Return), MemberCommand::kEdit);
  member(QKeySequence(Qt::Key_Enter), MemberCommand::kEdit);
  key(QKeySequence::Paste, members_, [this] { page_->Paste(); });
  group(QKeySequence::SelectAll, GroupCommand::kSelectAll);
  group(QKeySequence::Delete, GroupCommand::kDelete);
  group(QKeySequence(Qt::Key_F2), GroupCommand::kRename);
}

// The columns grow with the text; the last one has what is left.
void ContactsWindow::SizeColumns() {
  const QFontMetrics metrics(members_->font());
  const double scale =
      std::max(1.0, metrics.horizontalAdvance(QStringLiteral("0000000000000000")) / kPlainNumber);
  for (int column = 0; column + 1 < static_cast<int>(kMemberColumnCount); ++column) {
    const double width = kMemberHeaders[static_cast<std::size_t>(column)].width * scale;
    members_->setColumnWidth(column, static_cast<int>(width + 0.5));
  }
  members_->verticalHeader()->setDefaultSectionSize(metrics.height() + kMemberLineSpace);
}

void ContactsWindow::changeEvent(QEvent* event) {
  QWidget::changeEvent(event);
  if (event->type() == QEvent::FontChange && members_ != nullptr) SizeColumns();
}

// --- ContactsView

void ContactsWindow::ShowGroups() {
  const QScopedValueRollback<bool> told(told_, true);
  group_model_.SetGroups(page_->Groups());
}

void ContactsWindow::SelectGroup(std::size_t position) {
  const QScopedValueRollback<bool> told(told_, true);
  const QModelIndex index = group_model_.index(static_cast<int>(position));
  groups_->selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect);
  groups_->scrollTo(index);
}

void ContactsWindow::SelectAllGroups() { groups_->selectAll(); }

std::vector<std::size_t> ContactsWindow::SelectedGroups() const { return SelectedRows(*groups_); }

std::optional<std::size_t> ContactsWindow::CurrentGroup() const { return CurrentRow(*groups_); }

void ContactsWindow::ShowMembers(std::size_t count) { member_model_.SetRowCount(count); }

void ContactsWindow::SelectMembers(std::span<const std::size_t> positions) {
  QItemSelection selection;
  for (auto first = positions.begin(); first != positions.end();) {
    auto last = first;
    while (last + 1 != positions.end() && *(last + 1) == *last + 1) ++last;
    selection.append(QItemSelectionRange(
        member_model_.index(static_cast<int>(*first), 0),
        member_model_.index(static_cast<int>(*last), static_cast<int>(kMemberColumnCount) - 1)));
    first = last + 1;
  }
  members_->clearSelection();
  if (selection.size() <= kMostMemberRuns)
    members_->selectionModel()->select(selection, QItemSelectionModel::Select);
}

void ContactsWindow::SelectAllMembers() { members_->selectAll(); }

void ContactsWindow::RevealMember(std::size_t position) {
  const QModelIndex index = member_model_.index(static_cast<int>(position), 0);
  members_->selectionModel()->setCurrentIndex(index, QItemSelectionModel::NoUpdate);
  members_->scrollTo(index);
}

std::vector<std::size_t> ContactsWindow::SelectedMembers() const { return SelectedRows(*members_); }

std::optional<std::size_t> ContactsWindow::CurrentMember() const { return CurrentRow(*members_); }

void ContactsWindow::ShowSorting(MemberColumn column, bool descending) {
  members_->horizontalHeader()->setSortIndicator(
      static_cast<int>(column), descending ? Qt::DescendingOrder : Qt::AscendingOrder);
}

void ContactsWindow::ShowMembersCaption(const std::string& group) {
  caption_->setText(Qt8(group).simplified());
  members_->setAccessibleName(Child<QLabel>(*this, "membersLabel").text().remove(u'&') + u' ' +
                              caption_->text());
}

void ContactsWindow::EnableSearch(bool enabled) { search_button_->setEnabled(enabled); }

bool ContactsWindow::RunGroupDialog(GroupDialog& dialog) {
  return GroupWindow(kit_, dialog, this).exec() == QDialog::Accepted;
}

bool ContactsWindow::RunContactDialog(ContactDialog& dialog) {
  return ContactWindow(kit_, dialog, this).exec() == QDialog::Accepted;
}

std::optional<DeleteScope> ContactsWindow::AskDeleteScope() {
  return ui::AskDeleteScope(kit_, this);
}

bool ContactsWindow::RunImportDialog(CsvImportDialog& dialog) {
  return ImportWindow(kit_, dialog, this).exec() == QDialog::Accepted;
}

bool ContactsWindow::RunExportDialog(CsvExportDialog& dialog) {
  return ExportContactsWindow(kit_, dialog, this).exec() == QDialog::Accepted;
}

// --- Menus and drops

bool ContactsWindow::eventFilter(QObject* watched, QEvent* event) {
  switch (event->type()) {
    case QEvent::ContextMenu: {
      const bool of_groups = watched == groups_ || watched == groups_->viewport();
      auto& list = of_groups ? static_cast<QAbstractItemView&>(*groups_) : *members_;
      OpenMenu(list, static_cast<const QContextMenuEvent&>(*event));
      return true;
    }
    case QEvent::DragEnter:
    case QEvent::DragMove:
      return watched == groups_->viewport() &&
             DragOverGroups(static_cast<QDropEvent&>(*event), false);
    case QEvent::Drop:
      return watched == groups_->viewport() &&
             DragOverGroups(static_cast<QDropEvent&>(*event), true);
    case QEvent::DragLeave:
      if (watched == groups_->viewport()) group_model_.SetDropTarget(-1);
      return false;
    default:
      return QWidget::eventFilter(watched, event);
  }
}

void ContactsWindow::OpenMenu(QAbstractItemView& list, const QContextMenuEvent& wanted) {
  QMenu& menu = &list == groups_ ? *group_menu_ : *member_menu_;
  if (wanted.reason() == QContextMenuEvent::Mouse) {
    menu.popup(wanted.globalPos());
    return;
  }
  const QModelIndex current = list.currentIndex();
  if (current.isValid()) list.scrollTo(current);
  const int below = current.isValid() ? list.visualRect(current).bottom() + 1 : 0;
  menu.popup(list.viewport()->mapToGlobal(QPoint(kMenuOffset, below)));
}

// Only members are taken: any other text would be followed to a group and then come to nothing.
bool ContactsWindow::DragOverGroups(QDropEvent& event, bool drop) {
  const std::string text = event.mimeData()->text().toStdString();
  if (!DraggedContact::Parse(text)) {
    event.setDropAction(Qt::IgnoreAction);
    event.ignore();
    return true;
  }
  const QModelIndex over = groups_->indexAt(event.position().toPoint());
  std::optional<std::size_t> group;
  if (over.isValid()) group = static_cast<std::size_t>(over.row());
  const DropEffect effect = page_->EffectOver(group, (event.modifiers() & Qt::ControlModifier) != 0,
                                              (event.modifiers() & Qt::ShiftModifier) != 0);
  const bool taken = effect != DropEffect::kNone;
  group_model_.SetDropTarget(taken && !drop ? over.row() : -1);
  if (taken) {
    event.setDropAction(effect == DropEffect::kCopy ? Qt::CopyAction : Qt::MoveAction);
    event.accept();
  } else if (event.type() == QEvent::DragEnter) {
    event.acceptProposedAction();  // so that the drag is followed over the list
  } else {
    event.setDropAction(Qt::IgnoreAction);
    event.ignore();
  }
  if (taken && drop) {
    page_->Dropped(effect == DropEffect::kCopy ? kWmContactCopyDrop : kWmContactMoveDrop, *group,
                   text);
  }
  return true;
}

}  // namespace orvalo::ui
