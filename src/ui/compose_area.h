#pragma once
#include <QPointer>
#include <functional>
#include <optional>
#include <string>

#include "contacts/external_address_book.h"
#include "contacts/recent_list.h"
#include "messages/compose_page.h"
#include "messages/compose_services.h"
#include "messages/recipient_selection.h"
#include "ui/compose_window.h"
#include "ui/kit.h"

namespace orvalo {
class Program;
}

namespace orvalo::ui {

// The compose page put together: its logic and its window. Owned by Desktop; main thread. The
// window may be given to a parent; it goes with the area or with that parent, whichever goes first.
class ComposeArea {
 public:
  // `outbox` is told when messages were queued; `external` is offered in the recipient tree. Both
  // must outlive the area, as must the program and the kit. Throws FormError.
  ComposeArea(Program& program, const Kit& kit, OutboxCaption& outbox,
              ExternalAddressBook& external);
  ~ComposeArea();
  ComposeArea(const ComposeArea&) = delete;
  ComposeArea& operator=(const ComposeArea&) = delete;

  ComposeWindow& Window() { return *window_; }
  ComposePage& Page() { return *page_; }
  RecipientSelection& Recipients() { return *recipients_; }

  void PageShown();  // the page comes to the front

 private:
  std::optional<Schedule> AskSchedule(QWidget& owner);

  Program& program_;
  const Kit& kit_;
  EngineServices services_;
  RecentList recent_;
  QPointer<ComposeWindow> window_;
  std::optional<RecipientSelection> recipients_;  // these two speak to the window
  std::optional<ComposePage> page_;
};

}  // namespace orvalo::ui
