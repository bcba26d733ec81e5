#include "ui/outbox_area.h"

#include <utility>

#include "app/startup/program.h"
#include "ui/export_dialog.h"
#include "ui/status_legend.h"

namespace orvalo::ui {

OutboxArea::OutboxArea(Program& program, const Kit& kit, platform::Clipboard& clipboard,
                       platform::Mailbox& main_window,
                       std::function<void(const std::string&)> set_tab_caption,
                       std::function<bool()> is_on_show)
    : program_(program),
      kit_(kit),
      fields_(program.GetDatabase(), program.GetSettings(), kit.texts, program.GetStatusNames(),
              program.GetTypeNames(), program.GetClock()),
      copy_(program.GetDatabase(), fields_, kit.texts, clipboard),
      export_(program.GetDatabase(), fields_, kit.texts, program.GetMessageBoxes(),
              program.GetExportPlaces()),
      window_(new OutboxWindowPage(
          kit, {std::move(set_tab_caption), std::move(is_on_show),
                [this](std::vector<std::int32_t> selected) { OpenExport(std::move(selected)); },
                [this] { OpenHelp(); }})),
      page_(Parts(main_window), *window_) {
  window_->SetPage(&page_);
  mailbox_.SetHandler([this](std::uint32_t message, std::int32_t, std::int32_t) {
    if (message == kWmOutboxRefresh && window_ != nullptr) page_.RefreshRequested();
    if (message == kWmOutboxUnreadable) page_.TellUnreadable();
  });
  page_.SetUp();
  program_.GetNotices().SetOutboxView(&page_);
}

OutboxArea::~OutboxArea() {
  program_.GetNotices().SetOutboxView(nullptr);
  delete window_.data();
}

OutboxParts OutboxArea::Parts(platform::Mailbox& main_window) {
  return {.database = program_.GetDatabase(),
          .settings = program_.GetSettings(),
          .texts = kit_.texts,
          .fields = fields_,
          .boxes = program_.GetMessageBoxes(),
          .main_window = main_window,
          .own_mailbox = mailbox_,
          .engine = program_.GetEngine(),
          .copy = copy_,
          .log_in =
              [this](std::string_view user, std::string_view password) {
                return program_.GetAccount().LoginToGateway(user, password);
              },
          .login_failure = [this] { return program_.GetAccount().LoginFailure(); }};
}

void OutboxArea::OpenExport(std::vector<std::int32_t> selected) {
  ExportDialog(kit_, export_, std::move(selected), window_).exec();
}

void OutboxArea::OpenHelp() { StatusLegend(kit_, page_.StatusDescriptions(), window_).exec(); }

}  // namespace orvalo::ui
