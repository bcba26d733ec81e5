#pragma once
#include <QDialog>

#include "shell/login_page.h"
#include "ui/kit.h"

QT_BEGIN_NAMESPACE
class QLineEdit;
class QPushButton;
QT_END_NAMESPACE

namespace orvalo::ui {

// The password recovery dialog (dialog 135), for one showing of `dialog`. Main thread.
class RecoveryWindow : public QDialog, public RecoveryView {
 public:
  // Throws FormError.
  RecoveryWindow(const Kit& kit, RecoveryDialog& dialog, QWidget* parent);

  void EnableOk(bool enabled) override;
  void FocusEmail() override;
  void FocusOk() override;
  void Close() override { done(QDialog::Accepted); }

 protected:
  // Enter is the fields' own: it moves on instead of pressing OK.
  void keyPressEvent(QKeyEvent* event) override;

 private:
  QLineEdit* user_ = nullptr;
  QLineEdit* email_ = nullptr;
  QPushButton* ok_ = nullptr;
};

}  // namespace orvalo::ui
