#include "ui/number_input.h"

#include <QAbstractListModel>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QDropEvent>
#include <QGuiApplication>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QLineEdit>
#include <QListView>
#include <QMenu>
#include <QMimeData>
#include <QMouseEvent>
#include <QPainter>
#include <QPointer>
#include <QStyledItemDelegate>
#include <algorithm>
#include <functional>
#include <utility>
#include <vector>

#include "messages/pasted_numbers.h"
#include "messages/recipient_selection.h"
#include "ui/character_limit.h"
#include "ui/form_loader.h"

namespace orvalo::ui {

namespace {

constexpr auto kCommandKeys = Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier;

bool IsTyped(const QKeyEvent& key) {
  return (key.modifiers() & kCommandKeys) == 0 && !key.text().isEmpty() && key.text()[0].isPrint();
}

}  // namespace

// The rows as they were shown last, so that the list learns of every change in the order it needs.
class NumberInput::Rows : public QAbstractListModel {
 public:
  explicit Rows(QString hint) : hint_(std::move(hint)) {}

  int rowCount(const QModelIndex& parent = {}) const override {
    return parent.isValid() ? 0 : static_cast<int>(rows_.size());
  }
  QVariant data(const QModelIndex& index, int role) const override {
    const std::string& number = rows_.at(static_cast<std::size_t>(index.row()));
    switch (role) {
      case Qt::DisplayRole:
      case Qt::EditRole:
        return Qt8(number);
      case Qt::AccessibleTextRole:
        return number.empty() ? hint_ : Qt8(number);
      default:
        return {};
    }
  }
  Qt::ItemFlags flags(const QModelIndex& index) const override {
    const Qt::ItemFlags flags = QAbstractListModel::flags(index);
    return index.isValid() ? flags | Qt::ItemIsEditable : flags;
  }
  const QString& Hint() const { return hint_; }

  void Show(const std::vector<std::string>& wanted) {
    const auto [old_end, new_end] =
        std::mismatch(rows_.begin(), rows_.end(), wanted.begin(), wanted.end());
    const auto same = static_cast<int>(old_end - rows_.begin());
    const auto tail =
        std::mismatch(std::make_reverse_iterator(rows_.end()), std::make_reverse_iterator(old_end),
                      wanted.rbegin(), std::make_reverse_iterator(new_end));
    const auto kept = static_cast<int>(tail.first - rows_.rbegin());
    const int gone = rowCount() - same - kept;
    const int come = static_cast<int>(wanted.size()) - same - kept;
    const int changed = std::min(gone, come);
    const int from = same + changed;
    if (gone > come) {
      beginRemoveRows({}, from, from + gone - come - 1);
      rows_ = wanted;
      endRemoveRows();
    } else if (come > gone) {
      beginInsertRows({}, from, from + come - gone - 1);
      rows_ = wanted;
      endInsertRows();
    } else {
      rows_ = wanted;
    }
    if (changed > 0) Q_EMIT dataChanged(index(same), index(from - 1));
  }

 private:
  const QString hint_;
  std::vector<std::string> rows_;
};

// The editing field of a row.
class NumberInput::Field : public QStyledItemDelegate {
 public:
  using Ended = std::function<void(std::size_t row, std::string text)>;
  using Accepts = std::function<bool(char32_t character)>;
  using Pasted = std::function<void(const QString& text)>;

  Field(const Rows& rows, Ended ended, Accepts accepts, Pasted pasted)
      : rows_(rows),
        ended_(std::move(ended)),
        accepts_(std::move(accepts)),
        pasted_(std::move(pasted)) {}

  QLineEdit* Open() const { return open_; }
  void Finish() {
    QLineEdit* field = std::exchange(open_, nullptr);
    if (field == nullptr) return;
    Q_EMIT commitData(field);
    Q_EMIT closeEditor(field, NoHint);
  }

  QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem&,
                        const QModelIndex&) const override {
    auto* field = new QLineEdit(parent);
    field->setObjectName(QStringLiteral("numberEditor"));
    field->setAccessibleName(rows_.Hint());
    field->setInputMethodHints(Qt::ImhDigitsOnly);
    field->setFrame(false);
    LimitTyped(*field, NumberList::kNumberLength);
    ShowTestIds(*field);
    open_ = field;
    return field;
  }
  void setModelData(QWidget* editor, QAbstractItemModel*, const QModelIndex& index) const override {
    ended_(static_cast<std::size_t>(index.row()),
           static_cast<QLineEdit*>(editor)->text().toStdString());
  }
  void destroyEditor(QWidget* editor, const QModelIndex& index) const override {
    if (editor == open_) open_ = nullptr;
    QStyledItemDelegate::destroyEditor(editor, index);
  }
  // As tall as the field that opens in it.
  QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override {
    constexpr int kFieldMargins = 12;
    const QSize size = QStyledItemDelegate::sizeHint(option, index);
    return {size.width(), option.fontMetrics.height() + kFieldMargins};
  }
  void updateEditorGeometry(QWidget* editor, const QStyleOptionViewItem& option,
                            const QModelIndex&) const override {
    editor->setGeometry(option.rect);
  }
  void paint(QPainter* painter, const QStyleOptionViewItem& option,
             const QModelIndex& index) const override {
    QStyledItemDelegate::paint(painter, option, index);
    const bool is_last = index.row() == rows_.rowCount() - 1;
    if (!is_last || open_ != nullptr || !index.data().toString().isEmpty()) return;
    painter->setPen(option.palette.color(QPalette::PlaceholderText));
    painter->drawText(option.rect.adjusted(6, 0, -6, 0), Qt::AlignVCenter, rows_.Hint());
  }

 protected:
  bool eventFilter(QObject* editor, QEvent* event) override {
    if (event->type() == QEvent::KeyPress) {
      const auto& key = static_cast<const QKeyEvent&>(*event);
      if (key.key() == Qt::Key_Tab || key.key() == Qt::Key_Backtab) {
        Finish();  // and the list has the focus, not the next row's field
        return true;
      }
      if (key.matches(QKeySequence::Paste)) {
        pasted_(QGuiApplication::clipboard()->text());
        return true;
      }
      if (IsTyped(key) && Accepted(key.text()) != key.text()) return true;
    }
    if (event->type() == QEvent::InputMethod) {
      auto& composed = static_cast<QInputMethodEvent&>(*event);
      composed.setCommitString(Accepted(composed.commitString()), composed.replacementStart(),
                               composed.replacementLength());
    }
    if (editor == open_ && TakePaste(*event)) return true;
    return QStyledItemDelegate::eventFilter(editor, event);
  }

 private:
  QString Accepted(const QString& typed) const {
    QString accepted;
    for (const char32_t character : typed.toUcs4()) {
      if (accepts_(character)) accepted += QString::fromUcs4(&character, 1);
    }
    return accepted;
  }
  // The other ways of pasting: by the field's menu, the middle button, or dropping a text.
  bool TakePaste(QEvent& event) {
    switch (event.type()) {
      case QEvent::ContextMenu:
        OpenMenu(static_cast<const QContextMenuEvent&>(event).globalPos());
        return true;
      case QEvent::Drop:
        pasted_(static_cast<const QDropEvent&>(event).mimeData()->text());
        return true;
      case QEvent::MouseButtonRelease: {
        if (static_cast<const QMouseEvent&>(event).button() != Qt::MiddleButton ||
            !QGuiApplication::clipboard()->supportsSelection()) {
          return false;
        }
        pasted_(QGuiApplication::clipboard()->text(QClipboard::Selection));
        return true;
      }
      default:
        return false;
    }
  }
  // The field's own menu, its "Paste" replaced.
  void OpenMenu(QPoint place) {
    QMenu* menu = open_->createStandardContextMenu();
    menu->setAttribute(Qt::WA_DeleteOnClose);
    for (QAction* action : menu->actions()) {
      if (!action->text().startsWith(QLineEdit::tr("&Paste"))) continue;
      action->disconnect(open_);
      connect(action, &QAction::triggered, this,
              [this] { pasted_(QGuiApplication::clipboard()->text()); });
    }
    menu->popup(place);
  }

  const Rows& rows_;
  const Ended ended_;
  const Accepts accepts_;
  const Pasted pasted_;
  mutable QPointer<QLineEdit> open_;
};

NumberInput::NumberInput(QListView& list)
    : list_(list),
      rows_(std::make_unique<Rows>(list.toolTip())),
      field_(std::make_unique<Field>(
          *rows_,
          [this](std::size_t row, std::string text) {
            taken_ = selection_ == nullptr || selection_->EndNumberEdit(row, std::move(text));
          },
          [this](char32_t character) {
            return selection_ == nullptr || selection_->AcceptTyped(character);
          },
          [this](const QString& text) { PasteIntoField(text); })) {
  list_.setModel(rows_.get());
  list_.setItemDelegate(field_.get());
  list_.setEditTriggers(QListView::NoEditTriggers);
  list_.setSelectionMode(QListView::SingleSelection);
  list_.installEventFilter(this);
  list_.viewport()->installEventFilter(this);
}

NumberInput::~NumberInput() = default;

void NumberInput::SetSelection(RecipientSelection* selection) {
  selection_ = selection;
  if (selection_ != nullptr) ShowRows();
}

void NumberInput::ShowRows() { rows_->Show(selection_->Numbers().rows()); }

void NumberInput::BringIntoView(std::size_t row) {
  const QModelIndex index = rows_->index(static_cast<int>(row));
  list_.setCurrentIndex(index);  // where the next number is typed
  list_.scrollTo(index);
}

void NumberInput::Edit(std::size_t row, const std::optional<std::string>& text) {
  FinishEditing();
  const QModelIndex index = rows_->index(static_cast<int>(row));
  if (!index.isValid()) return;
  list_.scrollTo(index);
  list_.edit(index);
  QLineEdit* field = Editor();
  if (field != nullptr && text) field->setText(Qt8(*text));
}

bool NumberInput::FinishEditing() {
  taken_ = true;
  field_->Finish();
  return taken_;
}

void NumberInput::PasteIntoField(const QString& text) {
  if (selection_ == nullptr || Editor() == nullptr) return;
  const std::string bytes = text.toStdString();
  std::size_t room = NumberList::kNumberLength;
  if (PastedItems(bytes).size() > 1) {
    FinishEditing();
  } else {
    const std::size_t kept =
        CountCharacters(Editor()->text()) - CountCharacters(Editor()->selectedText());
    room -= std::min(room, kept);
  }
  const auto item = selection_->TakePaste(bytes, room);
  if (item && Editor() != nullptr) Editor()->insert(Qt8(*item));
}

QLineEdit* NumberInput::Editor() const { return field_->Open(); }

bool NumberInput::HasFocus() const { return list_.hasFocus(); }

std::optional<std::size_t> NumberInput::Selected() const {
  const QModelIndexList selected = list_.selectionModel()->selectedRows();
  if (selected.isEmpty()) return std::nullopt;
  return static_cast<std::size_t>(selected.front().row());
}

// An open editing field passes on what it has no use for: Shift and the locks, function and media
// keys. Only those that the list acts on end the edit, and Enter, which else would do so a moment
// later.
bool NumberInput::TakeKey(const QKeyEvent& key) {
  if ((key.modifiers() & kCommandKeys) != 0) return false;
  switch (key.key()) {
    case Qt::Key_Backspace:
    case Qt::Key_Space:
      FinishEditing();
      selection_->DeleteKey(Selected());
      return true;
    case Qt::Key_F2:
      FinishEditing();
      selection_->DoubleClick(Selected());
      return true;
    case Qt::Key_Up:
    case Qt::Key_Down:
    case Qt::Key_PageUp:
    case Qt::Key_PageDown:
    case Qt::Key_Return:
    case Qt::Key_Enter:
      FinishEditing();
      return false;  // the rest is the list's own
    default:
      break;
  }
  if (key.text().size() != 1 || !NumberList::IsAllowed(key.text()[0].unicode())) return false;
  FinishEditing();
  return selection_->DigitKey(key.text()[0].unicode(), Selected());
}

// What an input method enters into the list: as the keys, its first digit opens the row's field.
bool NumberInput::TakeComposed(const QInputMethodEvent& composed) {
  for (const char32_t character : composed.commitString().toUcs4()) {
    if (!selection_->AcceptTyped(character)) continue;
    if (Editor() == nullptr) {
      selection_->DigitKey(character, Selected());
    } else {
      Editor()->insert(QString::fromUcs4(&character, 1));
    }
  }
  return true;
}

bool NumberInput::eventFilter(QObject* watched, QEvent* event) {
  if (selection_ == nullptr) return false;
  if (watched == &list_) {
    if (event->type() == QEvent::InputMethod) {
      return TakeComposed(static_cast<const QInputMethodEvent&>(*event));
    }
    return event->type() == QEvent::KeyPress && TakeKey(static_cast<const QKeyEvent&>(*event));
  }
  const bool pressed = event->type() == QEvent::MouseButtonPress;
  const bool doubled = event->type() == QEvent::MouseButtonDblClick;
  if (!pressed && !doubled) return false;
  const QPoint place = static_cast<const QMouseEvent*>(event)->position().toPoint();
  const bool on_row = list_.indexAt(place).isValid();
  if (pressed && !on_row) list_.clearSelection();
  if (doubled) selection_->DoubleClick(on_row ? Selected() : selection_->Numbers().Last());
  return doubled;
}

}  // namespace orvalo::ui
