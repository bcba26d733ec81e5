#include "ui/proxy_window.h"

#include <QPushButton>

#include "ui/form_loader.h"

namespace orvalo::ui {

namespace {

constexpr int kProxyDialogId = 140;

QWidget& WithProxyForm(const Kit& kit, QWidget& window) {
  kit.forms.LoadInto(window, kProxyDialogId);
  return window;
}

}  // namespace

ProxyWindow::ProxyWindow(const Kit& kit, QWidget* parent)
    : QDialog(parent), controls_(WithProxyForm(kit, *this)) {}

void ProxyWindow::Connect(ProxyForm& form) {
  controls_.Connect(form);
  connect(&Child<QPushButton>(*this, "proxyOk"), &QPushButton::clicked, this, [this, &form] {
    form.Apply();
    accept();
  });
}

}  // namespace orvalo::ui
