#include "ui/recipient_inputs.h"

#include <QAction>
#include <QApplication>
#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QMenu>
#include <QPushButton>
#include <QTreeView>
#include <utility>
#include <vector>

#include "messages/recipient_selection.h"
#include "ui/character_limit.h"
#include "ui/form_loader.h"
#include "ui/recipient_model.h"
#include "ui/wait_window.h"

namespace orvalo::ui {

namespace {

constexpr int kTreeMenu = 227;
constexpr int kRebuildCommand = 32830;
constexpr int kClearCommand = 32831;

}  // namespace

RecipientInputs::RecipientInputs(const Kit& kit, QWidget& form, platform::Clock& clock, Guard guard)
    : kit_(kit),
      clock_(clock),
      guard_(std::move(guard)),
      tree_(Child<QTreeView>(form, "recipientTree")),
      search_(Child<QLineEdit>(form, "quickSearch")),
      search_button_(Child<QPushButton>(form, "quickSearchButton")),
      count_(Child<QLabel>(form, "recipientCount")),
      numbers_(Child<QListView>(form, "numberList")),
      tree_menu_(kit.forms.LoadMenu(kTreeMenu, &tree_)) {}

RecipientInputs::~RecipientInputs() = default;

void RecipientInputs::Connect(RecipientSelection& selection) {
  selection_ = &selection;
  model_ = std::make_unique<RecipientModel>(
      selection.Tree(), kit_.images, [this](const RecipientNode& node, bool ticked) {
        return guard_([&] { selection_->SetTick(node, ticked); });
      });
  numbers_.SetSelection(&selection);
  WireTree();
  WireSearch();
}

void RecipientInputs::WireTree() {
  tree_.setModel(model_.get());
  tree_.installEventFilter(this);
  tree_.viewport()->installEventFilter(this);
  connect(&tree_, &QTreeView::expanded, this,
          [this](const QModelIndex& index) { Expanded(index); });
  connect(tree_menu_.get(), &QMenu::triggered, this, [this](const QAction* action) {
    const bool rebuild = action->data().toInt() == kRebuildCommand;
    guard_([&] { rebuild ? selection_->Rebuild() : selection_->Clear(); });
  });
}

void RecipientInputs::WireSearch() {
  LimitTyped(search_, RecipientSearch::kSearchLength);
  search_.installEventFilter(this);
  connect(&search_, &QLineEdit::textChanged, this,
          [this](const QString& text) { selection_->SearchTextChanged(text.toStdString()); });
  connect(&search_button_, &QPushButton::clicked, this, [this] { Search(); });
}

void RecipientInputs::Search() {
  guard_([this] { selection_->Search(); });
}

// Children come when their node is first expanded. A node that turns out to have none, or cannot be
// read, is closed again.
void RecipientInputs::Expanded(const QModelIndex& index) {
  const RecipientNode& node = model_->NodeOf(index);
  guard_([&] { selection_->Expand(node); });
  if (!node.children.empty()) return;
  tree_.collapse(index);
  if (node.filled) model_->FoundEmpty(node);
}

void RecipientInputs::OpenTreeMenu(QPoint place, bool by_keyboard) {
  const QModelIndex index = by_keyboard ? tree_.currentIndex() : tree_.indexAt(place);
  if (!index.isValid()) return;
  const auto commands = RecipientSelection::MenuOf(model_->NodeOf(index));
  if (!commands) return;
  for (QAction* action : tree_menu_->actions()) {
    if (action->data().toInt() == kRebuildCommand) action->setEnabled(commands->rebuild);
    if (action->data().toInt() == kClearCommand) action->setEnabled(commands->clear);
  }
  if (by_keyboard) place = tree_.visualRect(index).center();
  tree_menu_->popup(tree_.viewport()->mapToGlobal(place));
}

bool RecipientInputs::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::ContextMenu && watched != &search_) {
    const auto& menu = static_cast<const QContextMenuEvent&>(*event);
    OpenTreeMenu(menu.pos(), menu.reason() == QContextMenuEvent::Keyboard);
    return true;
  }
  if (event->type() == QEvent::KeyPress && watched == &search_) {
    const int key = static_cast<const QKeyEvent*>(event)->key();
    if (key != Qt::Key_Return && key != Qt::Key_Enter) return false;
    Search();
    return true;
  }
  return false;
}

// --- RecipientView

void RecipientInputs::ChildrenChanging(const RecipientNode& node, std::size_t count) {
  model_->ChildrenChanging(node, count);
}

void RecipientInputs::ChildrenChanged(const RecipientNode& node) { model_->ChildrenChanged(node); }

void RecipientInputs::Collapse(const RecipientNode& node) {
  const QModelIndex index = model_->IndexOf(node);
  for (const auto& child : node.children) {
    if (tree_.isExpanded(model_->IndexOf(*child))) Collapse(*child);
  }
  tree_.collapse(index);
}

void RecipientInputs::Reveal(const RecipientNode& node) {
  std::vector<const RecipientNode*> above;
  for (auto* one = node.parent; one->parent != nullptr; one = one->parent) above.push_back(one);
  for (; !above.empty(); above.pop_back()) tree_.expand(model_->IndexOf(*above.back()));
  const QModelIndex index = model_->IndexOf(node);
  tree_.setCurrentIndex(index);
  tree_.scrollTo(index, QTreeView::PositionAtCenter);
}

void RecipientInputs::TicksChanged() { tree_.viewport()->update(); }

void RecipientInputs::ShowWait(bool shown) {
  wait_.reset();
  if (!shown) return;
  try {
    wait_ = std::make_unique<WaitWindow>(kit_, clock_, tree_);
  } catch (const FormError&) {
    // A translation without this window: the work is done without it.
  }
}

void RecipientInputs::Beep() { QApplication::beep(); }

void RecipientInputs::EnableSearch(bool enabled) { search_button_.setEnabled(enabled); }

void RecipientInputs::ShowRecipientCount(std::size_t count) {
  count_.setText(QString::number(count));
}

}  // namespace orvalo::ui
