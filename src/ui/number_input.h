#pragma once
#include <QObject>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>

#include "ui/kit.h"

QT_BEGIN_NAMESPACE
class QInputMethodEvent;
class QKeyEvent;
class QLineEdit;
class QListView;
QT_END_NAMESPACE

namespace orvalo {
class RecipientSelection;
}

namespace orvalo::ui {

// The list of typed numbers on the compose page: draws the rows, opens the editing field of a row,
// and forwards keys, clicks and finished edits. Owned by RecipientInputs; main thread. The
// list's tool tip stands as a hint in the empty last row.
class NumberInput : public QObject {
 public:
  explicit NumberInput(QListView& list);
  ~NumberInput() override;

  // Null again before the selection goes.
  void SetSelection(RecipientSelection* selection);

  void ShowRows();  // as the selection has them now
  void BringIntoView(std::size_t row);
  // Opens the editing field with the row's own text selected, or with `text`, the caret behind it.
  void Edit(std::size_t row, const std::optional<std::string>& text);
  // An open editing field hands over what stands in it. False when that was not simply a number or
  // nothing; the operator has then been told.
  bool FinishEditing();
  // Pastes into the open editing field; a list of several numbers comes into rows of their own.
  void PasteIntoField(const QString& text);

  std::optional<std::size_t> Selected() const;
  bool HasFocus() const;      // the list itself
  QLineEdit* Editor() const;  // the open editing field, or null

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  class Rows;
  class Field;

  bool TakeKey(const QKeyEvent& key);
  bool TakeComposed(const QInputMethodEvent& composed);

  QListView& list_;
  RecipientSelection* selection_ = nullptr;
  bool taken_ = true;  // the field that was closed last held a number or nothing
  std::unique_ptr<Rows> rows_;
  std::unique_ptr<Field> field_;
};

}  // namespace orvalo::ui
