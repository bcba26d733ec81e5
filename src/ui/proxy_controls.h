#pragma once
#include <QObject>
#include <string>
#include <vector>

#include "net/proxy_form.h"

QT_BEGIN_NAMESPACE
class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QWidget;
QT_END_NAMESPACE

namespace orvalo::ui {

// The controls of the proxy settings, on the options page and in their dialog: "proxyMode",
// "proxyHost", "proxyPort", "proxyUser", "proxyPassword", "proxyTest" and, where the form has it,
// "proxyDescription". Main thread; owned by the form's window.
class ProxyControls : public QObject, public ProxyView {
 public:
  // Throws FormError.
  explicit ProxyControls(QWidget& form);

  // The rules behind the controls; alive as long as they are used.
  void Connect(ProxyForm& form);

  void ListProxyModes(const std::vector<std::string>& names) override;
  void ShowProxy(const ProxyValues& values) override;
  ProxyValues Proxy() const override;
  void EnableProxyFields(bool enabled) override;
  void ShowProxyDescription(const std::string& text) override;
  void ShowWaitCursor(bool shown) override;

 private:
  QComboBox& mode_;
  QLineEdit& host_;
  QLineEdit& port_;
  QLineEdit& user_;
  QLineEdit& password_;
  QPushButton& test_;
  QLabel* description_;  // may be null
};

}  // namespace orvalo::ui
