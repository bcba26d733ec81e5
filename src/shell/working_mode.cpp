#include "shell/working_mode.h"

#include "app/settings.h"
#include "app/texts.h"
#include "gateway/account.h"
#include "gateway/engine_notices.h"
#include "platform/message_box.h"

namespace orvalo {

namespace {

constexpr int kLoginFailedCaptionId = 1028;
constexpr int kUnableToGoOnlineTextId = 1397;

}  // namespace

void BalanceLines::Refresh() {
  account_.QueryBalanceTenths();
  show_();
}

bool WorkingMode::GoOnline() {
  const bool online = parts_.account.LoginToGateway(parts_.settings.Text(TextSetting::kLogin),
                                                    parts_.settings.Text(TextSetting::kPassword));
  Announce(online);
  if (!online) {
    parts_.boxes.Show(
        parts_.texts.Load(kUnableToGoOnlineTextId) + "\r\n\r\n" + parts_.account.LoginFailure(),
        parts_.texts.Load(kLoginFailedCaptionId), platform::BoxIcon::kStop);
  }
  return online;
}

void WorkingMode::GoOffline() { Announce(false); }

void WorkingMode::Announce(bool online) {
  parts_.settings.SetFlag(FlagSetting::kWorkingOnLine, online);
  parts_.main_window.Post(online ? kWmOnline : kWmOffline, 0, 0);
  parts_.view.ShowWorkingMode(online);
  parts_.balance.Refresh();
}

}  // namespace orvalo
