#pragma once
#include <QPointer>
#include <functional>
#include <string>

#include "messages/message_texts.h"
#include "messages/outbox_copy.h"
#include "messages/outbox_export.h"
#include "messages/outbox_page.h"
#include "ui/kit.h"
#include "ui/outbox_window_page.h"
#include "ui/window_mailbox.h"

namespace orvalo {
class Program;
}

namespace orvalo::ui {

// The outbox put together: its logic, its window, and the engine's word to them. Made once the
// program runs, by whoever makes the main window, and destroyed before the program ends; main
// thread. The engine tells it of its work for as long as it lives.
class OutboxArea {
 public:
  // All of it outlives the area. Throws FormError.
  OutboxArea(Program& program, const Kit& kit, platform::Clipboard& clipboard,
             platform::Mailbox& main_window,
             std::function<void(const std::string&)> set_tab_caption,
             std::function<bool()> is_on_show);
  ~OutboxArea();
  OutboxArea(const OutboxArea&) = delete;
  OutboxArea& operator=(const OutboxArea&) = delete;

  // The page, to be placed in the main window, which may destroy it before the area goes.
  OutboxWindowPage& Window() { return *window_; }
  OutboxPage& Page() { return page_; }

 private:
  OutboxParts Parts(platform::Mailbox& main_window);
  void OpenExport(std::vector<std::int32_t> selected);
  void OpenHelp();

  Program& program_;
  const Kit& kit_;
  MessageTexts fields_;
  OutboxCopy copy_;
  OutboxExport export_;
  WindowMailbox mailbox_;
  QPointer<OutboxWindowPage> window_;
  OutboxPage page_;
};

}  // namespace orvalo::ui
