#include "ui/contacts_area.h"

#include "app/startup/program.h"

namespace orvalo::ui {

ContactsArea::ContactsArea(Program& program, const Kit& kit, platform::Mailbox& main_window,
                           RecipientTaker& recipients)
    : window_(new ContactsWindow(kit)),
      page_({program.GetDatabase(), kit.texts, program.GetMessageBoxes(), main_window, recipients,
             program.GetExportPlaces()},
            *window_) {
  window_->SetPage(&page_);
}

ContactsArea::~ContactsArea() { delete window_.data(); }

}  // namespace orvalo::ui
