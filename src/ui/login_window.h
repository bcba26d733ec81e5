#pragma once
#include <QWidget>
#include <string>

#include "shell/login_page.h"
#include "ui/kit.h"

QT_BEGIN_NAMESPACE
class QCheckBox;
class QLabel;
class QLineEdit;
class QPushButton;
QT_END_NAMESPACE

namespace orvalo::ui {

// The login page (dialog 130). Main thread; made by LoginArea.
class LoginWindow : public QWidget, public LoginView {
 public:
  // Throws FormError.
  explicit LoginWindow(const Kit& kit, QWidget* parent = nullptr);

  // The logic that this is the window of; alive as long as the window.
  void Connect(LoginPage& page);
  void SetProductName(const std::string& name);

  void ShowValues(const LoginValues& values) override;
  void ShowTicks(bool remember, bool offline) override;
  void EnableOk(bool enabled) override;
  void FocusPassword() override;
  void ShowMessage(const std::string& text) override;
  void OpenRecovery(RecoveryDialog& dialog) override;

 protected:
  void showEvent(QShowEvent* event) override;

 private:
  Kit kit_;
  QLabel& product_;
  QLabel& logo_;
  QLineEdit& user_;
  QLineEdit& password_;
  QCheckBox& remember_;
  QCheckBox& offline_;
  QLabel& message_;
  QPushButton& ok_;
  QPushButton& forgot_;
};

}  // namespace orvalo::ui
