#include "net/proxy_settings.h"

#include <string>

#include "app/settings.h"
#include "app/texts.h"
#include "gateway/gateway_client.h"
#include "net/link_message.h"
#include "platform/code_page.h"

namespace orvalo {

namespace {

constexpr std::size_t kFieldWidth = 254;  // characters of each proxy field that are used

int FailureTextId(std::int32_t error) {
  switch (error) {
    case kProxyUnreachable:
      return 1140;
    case kProxyRefused:
      return 1141;
    default:
      return 1136;
  }
}

}  // namespace

std::int32_t ProxySettings::ApplyProxySettings(bool test) {
  const auto field = [this](TextSetting which) {
    const std::string text = settings_.Text(which);
    return platform::ToWide(platform::FirstCharacters(text, kFieldWidth));
  };
  std::u16string reply;
  gateway_.ConfigureProxy(test, settings_.Number(NumberSetting::kProxyType),
                          field(TextSetting::kProxyHost), field(TextSetting::kProxyPort),
                          field(TextSetting::kProxyUsername), field(TextSetting::kProxyPassword),
                          &reply);
  const std::int32_t error = gateway_.LastError();
  if (error != kGatewayOk) {
    ShowLinkMessage(boxes_, texts_.Load(FailureTextId(error)), texts_.Load(1137),
                    settings_.Text(TextSetting::kHelpUrl), 0);
  }
  return error;
}

}  // namespace orvalo
