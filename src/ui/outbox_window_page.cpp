#include "ui/outbox_window_page.h"

#include <QContextMenuEvent>
#include <QItemSelectionModel>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QScrollBar>
#include <QShortcut>
#include <QTableView>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>

#include "app/texts.h"
#include "ui/form_loader.h"
#include "ui/images.h"
#include "ui/outbox_delegate.h"
#include "ui/outbox_header.h"

namespace orvalo::ui {

namespace {

constexpr int kDialog = 133;
constexpr int kMenu = 213;
constexpr int kEmptyTitleId = 2150;
constexpr int kEmptyTextId = 2151;
constexpr int kUnreadableTitleId = 2191;
constexpr int kUnreadableTextId = 2192;

constexpr int kEmptyIconSize = 48;
constexpr int kMenuInset = 16;  // of the menu that a key opens, from the list's edge
constexpr int kLineSpace = 10;  // above and below a line's text
constexpr int kLeastColumn = 32;
constexpr int kSlack = 5;  // pixels: the line of the grid, fractions of a pixel

// The widest time of string 1033.
QString WidestTime() { return QStringLiteral("00/00/0000 00:00"); }

}  // namespace

OutboxWindowPage::OutboxWindowPage(const Kit& kit, Links links)
    : kit_(kit), links_(std::move(links)), model_(kit) {
  kit_.forms.LoadInto(*this, kDialog);
  list_ = &Child<QTableView>(*this, "outboxList");
  status_ = &Child<QLabel>(*this, "outboxStatus");
  WireButtons();
  WireList();
  MakeMenu();
  auto* all = new QShortcut(QKeySequence::SelectAll, this);
  connect(all, &QShortcut::activated, this, [this] { page_->SelectAll(); });
}

OutboxWindowPage::~OutboxWindowPage() = default;

void OutboxWindowPage::SetPage(OutboxPage* page) {
  page_ = page;
  model_.SetSource([this](std::size_t position) { return page_->LineAt(position); });
}

void OutboxWindowPage::WireButtons() {
  auto& send = Child<QPushButton>(*this, "outboxSendNow");
  send.setIcon(kit_.images.Icon("outbox-send", IconTint::kOnAccent));
  connect(&send, &QPushButton::clicked, this, [this] { page_->SendAllNow(); });
  auto& write = Child<QPushButton>(*this, "outboxExport");
  write.setIcon(kit_.images.Icon("outbox-export"));
  connect(&write, &QPushButton::clicked, this, [this] { page_->ExportCsv(); });
  auto& help = Child<QPushButton>(*this, "outboxHelp");
  help.setIcon(kit_.images.Icon("outbox-help"));
  connect(&help, &QPushButton::clicked, this, [this] { links_.open_help(); });
}

void OutboxWindowPage::WireList() {
  auto* header = new OutboxHeader(list_);
  header->setObjectName(QStringLiteral("outboxHeader"));
  header->setMinimumSectionSize(kLeastColumn);
  header->setSortIndicator(static_cast<int>(OutboxColumn::kTime), Qt::AscendingOrder);
  list_->setHorizontalHeader(header);
  list_->verticalHeader()->hide();
  list_->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
  MakeEmptyNotice();
  list_->setItemDelegate(new OutboxDelegate(list_));
  list_->setModel(&model_);
  // The headers do not show what is selected; for that they would walk all lines in every drawing.
  header->setSelectionModel(new QItemSelectionModel(&model_, header));
  SizeColumns();
  setTabOrder(&Child<QPushButton>(*this, "outboxHelp"), header);
  setTabOrder(header, list_);
  ShowTestIds(*this);

  list_->installEventFilter(this);
  list_->viewport()->installEventFilter(this);
  connect(header, &QHeaderView::sectionClicked, this,
          [this](int section) { page_->HeaderClicked(static_cast<OutboxColumn>(section)); });
  connect(list_->selectionModel(), &QItemSelectionModel::selectionChanged, this,
          &OutboxWindowPage::TakeSelection);
}

void OutboxWindowPage::MakeEmptyNotice() {
  empty_ = new QWidget;
  empty_->setObjectName(QStringLiteral("outboxEmpty"));
  empty_->setAttribute(Qt::WA_TransparentForMouseEvents);
  auto* lines = new QVBoxLayout(empty_);
  lines->addStretch();
  const auto add = [&](const QString& text, const char* role) {
    auto* label = new QLabel(text);
    label->setAlignment(Qt::AlignCenter);
    label->setWordWrap(true);
    label->setTextFormat(Qt::PlainText);
    label->setProperty("role", QString::fromLatin1(role));
    lines->addWidget(label);
    return label;
  };
  empty_picture_ = add(QString(), "muted");
  empty_title_ = add(Qt8(kit_.texts.Load(kEmptyTitleId)), "heading");
  empty_text_ = add(Qt8(kit_.texts.Load(kEmptyTextId)), "muted");
  lines->addStretch();
  auto* fill = new QVBoxLayout(list_->viewport());
  fill->addWidget(empty_);
}

void OutboxWindowPage::DrawEmptyPicture() {
  if (unreadable_) {
    empty_picture_->clear();
    return;
  }
  empty_picture_->setPixmap(kit_.images.Pixmap("outbox-empty", {kEmptyIconSize, kEmptyIconSize},
                                               devicePixelRatioF(), IconTint::kMuted));
}

// The widths that the columns have are for a small font; they grow with the text so that a time is
// never cut. The last column has what is left.
void OutboxWindowPage::SizeColumns() {
  const QFontMetrics metrics(list_->font());
  const int time = metrics.horizontalAdvance(WidestTime()) + OutboxDelegate::kIconSize +
                   OutboxDelegate::kIconGap + 2 * OutboxDelegate::kMargin + kSlack;
  const double scale = std::max(1.0, static_cast<double>(time) / kOutboxHeaders[0].width);
  for (int column = 0; column < kOutboxColumnCount - 1; ++column) {
    const double width = kOutboxHeaders[static_cast<std::size_t>(column)].width * scale;
    list_->setColumnWidth(column, static_cast<int>(width + 0.5));
  }
  list_->verticalHeader()->setDefaultSectionSize(
      std::max(metrics.height(), OutboxDelegate::kIconSize) + kLineSpace);
}

void OutboxWindowPage::changeEvent(QEvent* event) {
  QWidget::changeEvent(event);
  if (empty_ == nullptr) return;  // not made yet
  if (event->type() == QEvent::FontChange) SizeColumns();
  if (event->type() == QEvent::PaletteChange && !empty_->isHidden()) DrawEmptyPicture();
}

void OutboxWindowPage::SetRowCount(std::size_t rows) {
  const bool before = std::exchange(showing_selection_, true);
  model_.SetRowCount(rows);
  showing_selection_ = before;
  empty_->setVisible(rows == 0);
  if (rows == 0) DrawEmptyPicture();
}

void OutboxWindowPage::SetUnreadable(bool unreadable) {
  if (std::exchange(unreadable_, unreadable) == unreadable) return;
  empty_title_->setText(Qt8(kit_.texts.Load(unreadable ? kUnreadableTitleId : kEmptyTitleId)));
  empty_text_->setText(Qt8(kit_.texts.Load(unreadable ? kUnreadableTextId : kEmptyTextId)));
  DrawEmptyPicture();
}

void OutboxWindowPage::Redraw() {
  model_.Changed();
  list_->horizontalHeader()->setSortIndicator(
      static_cast<int>(page_->SortColumn()),
      page_->IsReversed() ? Qt::DescendingOrder : Qt::AscendingOrder);
}

void OutboxWindowPage::ShowSelection() {
  const auto runs = page_->SelectedRuns();
  const bool too_many = runs.size() > kMostRuns;
  showing_selection_ = true;
  QItemSelectionModel& selection = *list_->selectionModel();
  selection.clearSelection();
  if (!runs.empty() && !too_many) {
    QItemSelection shown;
    shown.reserve(static_cast<qsizetype>(runs.size()));
    for (const auto& [first, last] : runs) {
      shown.append(
          QItemSelectionRange(model_.index(static_cast<int>(first), 0),
                              model_.index(static_cast<int>(last), kOutboxColumnCount - 1)));
    }
    selection.select(shown, QItemSelectionModel::Select);
  }
  showing_selection_ = false;
  // Nothing is done to messages that are not seen to be selected.
  if (too_many) page_->SelectionLost();
}

void OutboxWindowPage::ScrollToTop() { list_->scrollToTop(); }

void OutboxWindowPage::SetStatusLine(const std::string& text) { status_->setText(Qt8(text)); }

void OutboxWindowPage::OpenExport(std::vector<std::int32_t> selected) {
  links_.open_export(std::move(selected));
}

void OutboxWindowPage::TakeSelection(const QItemSelection& selected,
                                     const QItemSelection& deselected) {
  if (showing_selection_) return;
  const auto position = [](int row) { return static_cast<std::size_t>(row); };
  if (!list_->selectionModel()->hasSelection()) {
    page_->SelectionLost();
    return;
  }
  for (const QItemSelectionRange& range : deselected) {
    for (int row = range.top(); row <= range.bottom(); ++row) {
      page_->RowSelected(position(row), false);
    }
  }
  for (const QItemSelectionRange& range : selected) {
    if (range.height() == 1) {
      page_->RowSelected(position(range.top()), true);
    } else {
      page_->RangeSelected(position(range.top()), position(range.bottom()));
    }
  }
}

bool OutboxWindowPage::eventFilter(QObject* watched, QEvent* event) {
  if (watched == list_->viewport() && event->type() == QEvent::Paint) model_.Forget();
  if (event->type() == QEvent::ContextMenu) {
    const auto& wanted = static_cast<const QContextMenuEvent&>(*event);
    if (wanted.reason() == QContextMenuEvent::Mouse) {
      OpenMenuByMouse(wanted.globalPos());
    } else {
      OpenMenuByKey();
    }
    return true;
  }
  // The list would copy the text of one cell.
  if (watched == list_ && event->type() == QEvent::KeyPress &&
      static_cast<QKeyEvent*>(event)->matches(QKeySequence::Copy)) {
    return true;
  }
  return QWidget::eventFilter(watched, event);
}

void OutboxWindowPage::MakeMenu() {
  menu_ = kit_.forms.LoadMenu(kMenu, this);
  for (QAction* action : menu_->actions()) {
    if (action->isSeparator()) continue;
    connect(action, &QAction::triggered, this,
            [this, action] { page_->Run(static_cast<OutboxCommand>(action->data().toInt())); });
  }
}

void OutboxWindowPage::OpenMenuByMouse(const QPoint& global) {
  ShowMenu(list_->rowAt(list_->viewport()->mapFromGlobal(global).y()), global);
}

void OutboxWindowPage::OpenMenuByKey() {
  const QModelIndex current = list_->currentIndex();
  if (current.isValid()) list_->scrollTo(current);
  const QRect cell = current.isValid() ? list_->visualRect(current) : QRect();
  ShowMenu(current.isValid() ? current.row() : -1,
           list_->viewport()->mapToGlobal(QPoint(kMenuInset, cell.bottom() + 1)));
}

void OutboxWindowPage::ShowMenu(std::int64_t position, const QPoint& global) {
  if (!page_->OpenMenu(position)) return;
  for (QAction* action : menu_->actions()) {
    if (action->isSeparator()) continue;
    action->setEnabled(page_->IsEnabled(static_cast<OutboxCommand>(action->data().toInt())));
  }
  menu_->popup(global);
}

}  // namespace orvalo::ui
