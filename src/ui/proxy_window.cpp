#include "ui/proxy_window.h"

#include <QLayout>
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

// On a small screen a dialog opens smaller than its wrapped texts want it.
void ProxyWindow::showEvent(QShowEvent* event) {
  setMinimumHeight(layout()->totalHeightForWidth(width()));
  QDialog::showEvent(event);
}

}  // namespace orvalo::ui
