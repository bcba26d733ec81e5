#include "ui/recovery_window.h"

#include <QKeyEvent>
#include <QLineEdit>
#include <QPushButton>

#include "ui/character_limit.h"
#include "ui/form_loader.h"

namespace orvalo::ui {

namespace {

constexpr int kRecoveryDialogId = 135;

}  // namespace

RecoveryWindow::RecoveryWindow(const Kit& kit, RecoveryDialog& dialog, QWidget* parent)
    : QDialog(parent) {
  kit.forms.LoadInto(*this, kRecoveryDialogId);
  user_ = &Child<QLineEdit>(*this, "recoveryUser");
  email_ = &Child<QLineEdit>(*this, "recoveryEmail");
  ok_ = &Child<QPushButton>(*this, "recoveryOk");
  LimitTyped(*user_, RecoveryDialog::kUserLength);
  LimitTyped(*email_, RecoveryDialog::kEmailLength);
  connect(user_, &QLineEdit::textChanged, this,
          [&dialog](const QString& text) { dialog.UserTyped(text.toStdString()); });
  connect(email_, &QLineEdit::textChanged, this,
          [&dialog](const QString& text) { dialog.EmailTyped(text.toStdString()); });
  connect(user_, &QLineEdit::returnPressed, this, [&dialog] { dialog.EnterInUser(); });
  connect(email_, &QLineEdit::returnPressed, this, [&dialog] { dialog.EnterInEmail(); });
  connect(ok_, &QPushButton::clicked, this, [&dialog] { dialog.Ok(); });
  connect(&Child<QPushButton>(*this, "recoveryCancel"), &QPushButton::clicked, this,
          [&dialog] { dialog.Cancel(); });
  user_->setFocus();
  dialog.SetView(this);
}

void RecoveryWindow::EnableOk(bool enabled) { ok_->setEnabled(enabled); }

void RecoveryWindow::FocusEmail() { email_->setFocus(); }

void RecoveryWindow::FocusOk() { ok_->setFocus(); }

void RecoveryWindow::keyPressEvent(QKeyEvent* event) {
  if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) return;
  QDialog::keyPressEvent(event);
}

}  // namespace orvalo::ui
