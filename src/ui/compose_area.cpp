#include "ui/compose_area.h"

#include "app/startup/program.h"
#include "ui/form_loader.h"
#include "ui/guarded.h"
#include "ui/schedule_window.h"

namespace orvalo::ui {

ComposeArea::ComposeArea(Program& program, const Kit& kit, OutboxCaption& outbox,
                         ExternalAddressBook& external)
    : program_(program),
      kit_(kit),
      services_(program.GetEngine(), program.GetAccount()),
      recent_(program.GetSettings()),
      window_(new ComposeWindow(
          kit,
          {.boxes = program.GetMessageBoxes(),
           .clock = program.GetClock(),
           .ask_schedule = [this](QWidget& owner) { return AskSchedule(owner); },
           .request_balance = [&program] { program.GetNotices().ToMainWindow(kWmBalance); }})) {
  recipients_.emplace(RecipientSelection::Parts{program.GetDatabase(), program.GetSettings(),
                                                recent_, external, program.GetTexts(),
                                                program.GetMessageBoxes(), window_->Recipients()});
  page_.emplace(ComposePage::Parts{program.GetDatabase(), program.GetSettings(), program.GetTexts(),
                                   program.GetTypeNames(), program.GetMessageBoxes(), services_,
                                   outbox, *recipients_, *window_, program.GetClock()});
  window_->Connect(*page_, *recipients_);
  page_->SetUp();
}

ComposeArea::~ComposeArea() { delete window_.data(); }

void ComposeArea::PageShown() {
  Guarded(program_.GetMessageBoxes(), program_.GetTexts(), [this] { recipients_->PageShown(); });
}

std::optional<Schedule> ComposeArea::AskSchedule(QWidget& owner) {
  ScheduleDialog logic(program_.GetDataFile(), program_.GetSettings(), program_.GetTexts(),
                       program_.GetClock());
  try {
    return ScheduleWindow(kit_, logic, owner).Ask();
  } catch (const FormError&) {
    return std::nullopt;  // the dialog does not open
  }
}

}  // namespace orvalo::ui
