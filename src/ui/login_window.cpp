#include "ui/login_window.h"

#include <QAccessible>
#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalBlocker>

#include "ui/character_limit.h"
#include "ui/form_loader.h"
#include "ui/images.h"
#include "ui/recovery_window.h"

namespace orvalo::ui {

namespace {

constexpr int kLoginDialogId = 130;
constexpr QSize kLoginLogo(96, 96);

// Loads the form before the members that look for its controls.
QWidget& WithLoginForm(const Kit& kit, QWidget& window) {
  kit.forms.LoadInto(window, kLoginDialogId);
  return window;
}

}  // namespace

LoginWindow::LoginWindow(const Kit& kit, QWidget* parent)
    : QWidget(parent),
      kit_(kit),
      product_(Child<QLabel>(WithLoginForm(kit, *this), "productName")),
      logo_(Child<QLabel>(*this, "logo")),
      user_(Child<QLineEdit>(*this, "loginUser")),
      password_(Child<QLineEdit>(*this, "loginPassword")),
      remember_(Child<QCheckBox>(*this, "rememberPassword")),
      offline_(Child<QCheckBox>(*this, "workOffline")),
      message_(Child<QLabel>(*this, "loginMessage")),
      ok_(Child<QPushButton>(*this, "loginOk")),
      forgot_(Child<QPushButton>(*this, "forgotPassword")) {
  LimitTyped(user_, LoginPage::kFieldLength);
  LimitTyped(password_, LoginPage::kFieldLength);
  message_.hide();
}

void LoginWindow::Connect(LoginPage& page) {
  connect(&user_, &QLineEdit::textChanged, this,
          [&page](const QString& text) { page.UserTyped(text.toStdString()); });
  connect(&password_, &QLineEdit::textChanged, this,
          [&page](const QString& text) { page.PasswordTyped(text.toStdString()); });
  connect(&user_, &QLineEdit::returnPressed, this, [&page] { page.EnterInUser(); });
  connect(&password_, &QLineEdit::returnPressed, this, [&page] { page.EnterInPassword(); });
  connect(&remember_, &QCheckBox::toggled, this, [&page] { page.ToggleRemember(); });
  connect(&offline_, &QCheckBox::toggled, this, [&page] { page.ToggleOffline(); });
  connect(&ok_, &QPushButton::clicked, this, [&page] { page.Ok(); });
  connect(&forgot_, &QPushButton::clicked, this, [&page] { page.ForgotPassword(); });
}

void LoginWindow::SetProductName(const std::string& name) {
  product_.setText(Qt8(name));
  logo_.setAccessibleName(Qt8(name));
}

void LoginWindow::ShowValues(const LoginValues& values) {
  const QSignalBlocker no_user(user_), no_password(password_);
  user_.setText(Qt8(values.user));
  password_.setText(Qt8(values.password));
  ShowTicks(values.remember, values.offline);
}

void LoginWindow::ShowTicks(bool remember, bool offline) {
  const QSignalBlocker no_remember(remember_), no_offline(offline_);
  remember_.setChecked(remember);
  offline_.setChecked(offline);
}

void LoginWindow::EnableOk(bool enabled) { ok_.setEnabled(enabled); }

void LoginWindow::FocusPassword() { password_.setFocus(); }

void LoginWindow::ShowMessage(const std::string& text) {
  message_.setText(Qt8(text));
  message_.setVisible(!text.empty());
  if (text.empty()) return;
  QAccessibleEvent spoken(&message_, QAccessible::Alert);
  QAccessible::updateAccessibility(&spoken);
}

void LoginWindow::OpenRecovery(RecoveryDialog& dialog) {
  RecoveryWindow(kit_, dialog, this).exec();
}

void LoginWindow::showEvent(QShowEvent* event) {
  QWidget::showEvent(event);
  logo_.setPixmap(kit_.images.Pixmap("logo", kLoginLogo, devicePixelRatioF()));
  (user_.text().isEmpty() ? user_ : password_).setFocus();
}

}  // namespace orvalo::ui
