#pragma once
#include <QPointer>

#include "net/proxy_form.h"
#include "net/proxy_settings.h"
#include "shell/options_page.h"
#include "shell/working_mode.h"
#include "ui/kit.h"
#include "ui/options_window.h"
#include "ui/window_mailbox.h"

namespace orvalo {
class Program;
}

namespace orvalo::ui {

// The options page with its window, the proxy settings, and the switch between working on-line and
// off-line. Answers the engine's wish to go off-line as long as it lives. Main thread; owned by the
// desktop. The window may be given to a parent; it goes with the area or with that parent,
// whichever goes first.
class OptionsArea {
 public:
  // All of it must outlive the area. Throws FormError.
  OptionsArea(Program& program, const Kit& kit, platform::Shell& shell,
              platform::Mailbox& main_window, BalanceLines& balance);
  ~OptionsArea();
  OptionsArea(const OptionsArea&) = delete;
  OptionsArea& operator=(const OptionsArea&) = delete;

  OptionsWindow& Window() { return *window_; }
  OptionsPage& Page() { return page_; }

  // The "Proxy Settings" dialog; returns when it has been closed. Throws FormError.
  void OpenProxySettings(QWidget* owner);

 private:
  Program& program_;
  Kit kit_;
  QPointer<OptionsWindow> window_;
  ProxySettings proxy_;
  ProxyForm proxy_form_;
  WorkingMode mode_;
  OptionsPage page_;
  WindowMailbox mailbox_;
};

}  // namespace orvalo::ui
