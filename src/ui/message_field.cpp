#include "ui/message_field.h"

#include <QApplication>
#include <QFocusEvent>
#include <QPlainTextEdit>
#include <QScopedValueRollback>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextOption>
#include <utility>

#include "ui/character_limit.h"
#include "ui/kit.h"

namespace orvalo::ui {

namespace {

// Beyond this many units a text is no longer one that people write, but a file's digits.
constexpr qsizetype kLongText = 10'000;

// Looking for the ends of words in a long line without any takes a time that grows with the square
// of its length: seconds for 100,000 digits.
QTextOption::WrapMode WrapModeFor(qsizetype units) {
  return units > kLongText ? QTextOption::WrapAnywhere : QTextOption::WrapAtWordBoundaryOrAnywhere;
}

}  // namespace

MessageField::MessageField(QPlainTextEdit& edit, Events events)
    : edit_(edit), events_(std::move(events)) {
  edit_.installEventFilter(this);
  connect(&edit_, &QPlainTextEdit::textChanged, this, [this] { TextChanged(); });
}

// Not toPlainText, which turns no-break spaces into spaces.
QString MessageField::Text() const {
  QString text = edit_.document()->toRawText();
  text.replace(QChar::ParagraphSeparator, u'\n');
  return text.replace(QChar::LineSeparator, u'\n');
}

void MessageField::Show(const std::string& text) {
  QString wanted = Qt8(text);
  waiting_.reset();
  if (visible_) {
    Put(wanted);
  } else {
    waiting_ = std::move(wanted);
  }
}

void MessageField::SetVisible(bool visible) {
  visible_ = visible;
  if (!visible_ || !waiting_) return;
  Put(*std::exchange(waiting_, std::nullopt));
}

void MessageField::Put(const QString& text) {
  QString shown;
  {
    const QScopedValueRollback own(own_change_, true);
    edit_.clear();  // nothing is laid out anew for the other way of wrapping
    edit_.setWordWrapMode(WrapModeFor(text.size()));
    edit_.setPlainText(text);
    shown = Text();
    count_ = CountCharacters(shown);
  }
  if (shown != text) events_.changed(shown.toStdString());
}

void MessageField::Insert(std::size_t position, const std::string& text) {
  const QScopedValueRollback own(own_change_, true);
  QTextCursor cursor(edit_.document());
  cursor.setPosition(static_cast<int>(UnitsOf(Text(), position)));
  cursor.insertText(Qt8(text));
  count_ = CountCharacters(Text());
}

void MessageField::SetCaret(std::size_t position) {
  QTextCursor cursor = edit_.textCursor();
  cursor.setPosition(static_cast<int>(UnitsOf(Text(), position)));
  edit_.setTextCursor(cursor);
}

std::size_t MessageField::SelectionStart() const {
  const QString text = Text();
  return CountCharacters(QStringView(text).first(edit_.textCursor().selectionStart()));
}

bool MessageField::HasFocus() const { return edit_.hasFocus(); }

void MessageField::Focus() {
  if (HasFocus()) {
    events_.focus_gained();
  } else {
    edit_.setFocus();
  }
}

void MessageField::Run(EditCommand command) {
  switch (command) {
    case EditCommand::kCut:
      return edit_.cut();
    case EditCommand::kCopy:
      return edit_.copy();
    case EditCommand::kPaste:
      return edit_.paste();
    case EditCommand::kSelectAll:
      return edit_.selectAll();
  }
}

void MessageField::TextChanged() {
  if (own_change_) return;
  CutExcess();
  const QString text = Text();
  count_ = CountCharacters(text);
  edit_.setWordWrapMode(WrapModeFor(text.size()));
  events_.changed(text.toStdString());
}

void MessageField::CutExcess() {
  if (!limit_) return;
  QTextCursor cursor = edit_.textCursor();
  const int caret = cursor.position();
  const auto excess = static_cast<int>(UnitsTooMany(Text(), caret, *limit_, count_));
  if (excess == 0) return;
  const QScopedValueRollback own(own_change_, true);
  cursor.joinPreviousEditBlock();
  cursor.setPosition(caret - excess);
  cursor.setPosition(caret, QTextCursor::KeepAnchor);
  cursor.removeSelectedText();
  cursor.endEditBlock();
  QApplication::beep();
}

// A menu over the field takes the focus for a moment only, and its commands act on the selection.
// Neither does the field forget its selection when the operator looks at another window.
bool MessageField::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::Hide) away_ = false;
  if (event->type() == QEvent::FocusOut || event->type() == QEvent::FocusIn) {
    const auto reason = static_cast<const QFocusEvent*>(event)->reason();
    if (reason == Qt::PopupFocusReason || reason == Qt::MenuBarFocusReason) return false;
    if (event->type() == QEvent::FocusOut) {
      away_ = reason == Qt::ActiveWindowFocusReason;
      events_.focus_lost(SelectionStart());
    } else if (!std::exchange(away_, false)) {
      events_.focus_gained();
    }
  }
  return QObject::eventFilter(watched, event);
}

}  // namespace orvalo::ui
