#include "ui/options_area.h"

#include "app/startup/program.h"
#include "gateway/engine_notices.h"
#include "ui/proxy_window.h"

namespace orvalo::ui {

OptionsArea::OptionsArea(Program& program, const Kit& kit, platform::Shell& shell,
                         platform::Mailbox& main_window, BalanceLines& balance)
    : program_(program),
      kit_(kit),
      window_(new OptionsWindow(kit)),
      proxy_(program.GetSettings(), *program.GetGateway(), program.GetTexts(),
             program.GetMessageBoxes()),
      proxy_form_({program.GetSettings(), proxy_, program.GetTexts(), program.GetMessageBoxes(),
                   window_->Proxy()},
                  ProxyForm::Place::kOptionsPage),
      mode_({program.GetSettings(), program.GetTexts(), program.GetMessageBoxes(), main_window,
             program.GetAccount(), balance, page_}),
      page_({program.GetSettings(), program.GetDataFile(), main_window, program.GetAccount(), shell,
             mode_, balance, proxy_form_, program.GetTexts(), program.GetMessageBoxes(), *window_}),
      mailbox_([this](std::uint32_t message, std::int32_t, std::int32_t) {
        if (message == kWmGoOffline) page_.OfflineChosen();
      }) {
  window_->Connect(page_, proxy_form_, [&main_window] { main_window.Post(kWmBalance, 0, 0); });
  page_.SetUp();
  program_.GetNotices().SetOptionsPage(&mailbox_);
}

OptionsArea::~OptionsArea() {
  program_.GetNotices().SetOptionsPage(nullptr);
  delete window_;
}

void OptionsArea::OpenProxySettings(QWidget* owner) {
  ProxyWindow window(kit_, owner);
  ProxyForm form({program_.GetSettings(), proxy_, program_.GetTexts(), program_.GetMessageBoxes(),
                  window.Controls()},
                 ProxyForm::Place::kDialog);
  window.Connect(form);
  form.SetUp();
  window.exec();
  page_.ProxyDialogClosed();
}

}  // namespace orvalo::ui
