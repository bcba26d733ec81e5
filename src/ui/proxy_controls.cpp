#include "ui/proxy_controls.h"

#include <QComboBox>
#include <QGuiApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalBlocker>
#include <QValidator>

#include "ui/character_limit.h"
#include "ui/form_loader.h"
#include "ui/kit.h"
#include "ui/wheel_guard.h"

namespace orvalo::ui {

namespace {

// Refuses what is no port.
class PortValidator : public QValidator {
 public:
  using QValidator::QValidator;
  State validate(QString& text, int&) const override {
    return ProxyForm::AcceptsPort(text.toStdString()) ? Acceptable : Invalid;
  }
};

}  // namespace

ProxyControls::ProxyControls(QWidget& form)
    : mode_(Child<QComboBox>(form, "proxyMode")),
      host_(Child<QLineEdit>(form, "proxyHost")),
      port_(Child<QLineEdit>(form, "proxyPort")),
      user_(Child<QLineEdit>(form, "proxyUser")),
      password_(Child<QLineEdit>(form, "proxyPassword")),
      test_(Child<QPushButton>(form, "proxyTest")),
      description_(form.findChild<QLabel*>(QStringLiteral("proxyDescription"))) {
  for (QLineEdit* field : {&host_, &port_, &user_, &password_})
    LimitTyped(*field, ProxyForm::kFieldLength);
  GuardFromWheel(mode_);
}

void ProxyControls::Connect(ProxyForm& form) {
  port_.setValidator(new PortValidator(this));
  connect(&mode_, &QComboBox::currentIndexChanged, this, [&form] { form.ModeChosen(); });
  connect(&test_, &QPushButton::clicked, this, [&form] { form.Test(); });
}

void ProxyControls::ListProxyModes(const std::vector<std::string>& names) {
  const QSignalBlocker quiet(mode_);
  mode_.clear();
  for (const std::string& name : names) mode_.addItem(Qt8(name));
}

void ProxyControls::ShowProxy(const ProxyValues& values) {
  const QSignalBlocker quiet(mode_);
  mode_.setCurrentIndex(values.entry ? static_cast<int>(*values.entry) : -1);
  host_.setText(Qt8(values.host));
  port_.setText(Qt8(values.port));
  user_.setText(Qt8(values.user));
  password_.setText(Qt8(values.password));
}

ProxyValues ProxyControls::Proxy() const {
  ProxyValues values;
  if (mode_.currentIndex() >= 0) values.entry = static_cast<std::size_t>(mode_.currentIndex());
  values.host = host_.text().toStdString();
  values.port = port_.text().toStdString();
  values.user = user_.text().toStdString();
  values.password = password_.text().toStdString();
  return values;
}

void ProxyControls::EnableProxyFields(bool enabled) {
  for (QLineEdit* field : {&host_, &port_, &user_, &password_}) field->setEnabled(enabled);
}

void ProxyControls::ShowProxyDescription(const std::string& text) {
  if (description_ != nullptr) description_->setText(Qt8(text));
}

void ProxyControls::ShowWaitCursor(bool shown) {
  if (shown) {
    QGuiApplication::setOverrideCursor(Qt::WaitCursor);
  } else {
    QGuiApplication::restoreOverrideCursor();
  }
}

}  // namespace orvalo::ui
