#pragma once
#include <QDialog>

#include "ui/kit.h"
#include "ui/proxy_controls.h"

namespace orvalo::ui {

// The "Proxy Settings" dialog (dialog 140). Main thread; made for one showing.
class ProxyWindow : public QDialog {
 public:
  // Throws FormError.
  ProxyWindow(const Kit& kit, QWidget* parent);

  ProxyControls& Controls() { return controls_; }
  // The rules behind the dialog; alive as long as it is open.
  void Connect(ProxyForm& form);

 protected:
  void showEvent(QShowEvent* event) override;

 private:
  ProxyControls controls_;
};

}  // namespace orvalo::ui
