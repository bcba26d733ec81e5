#pragma once
#include <QPointer>

#include "contacts/contacts_page.h"
#include "ui/contacts_window.h"
#include "ui/kit.h"

namespace orvalo {
class Program;
class RecipientTaker;
}  // namespace orvalo

namespace orvalo::ui {

// The address book's page put together: its logic and its window. Made once the program runs, by
// whoever makes the main window, and destroyed before the program ends; main thread.
class ContactsArea {
 public:
  // `recipients` is the compose page's; `main_window` brings that page to the front. All of it
  // outlives the area. Throws FormError.
  ContactsArea(Program& program, const Kit& kit, platform::Mailbox& main_window,
               RecipientTaker& recipients);
  ~ContactsArea();
  ContactsArea(const ContactsArea&) = delete;
  ContactsArea& operator=(const ContactsArea&) = delete;

  // The page, to be placed in the main window, which may destroy it before the area goes.
  ContactsWindow& Window() { return *window_; }
  void PageShown() { page_.BroughtToFront(); }

 private:
  QPointer<ContactsWindow> window_;
  ContactsPage page_;
};

}  // namespace orvalo::ui
