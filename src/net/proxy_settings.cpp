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

constexpr int kProxySetupFailedTextId = 1136;

}  // namespace

// A proxy's own failures have texts of their own; any other gets the cause as a second paragraph.
std::string ProxySettings::FailureMessage(const GatewayFailure& failure) const {
  std::string why = FailureText(failure, texts_, settings_.Text(TextSetting::kComBaseUrl));
  if (failure.code == kProxyUnreachable || failure.code == kProxyRefused) return why;
  return texts_.Load(kProxySetupFailedTextId) + "\r\n\r\n" + why;
}

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
  const GatewayFailure failure = gateway_.LastFailure(reply);
  if (failure.code != kGatewayOk) {
    ShowLinkMessage(boxes_, FailureMessage(failure), texts_.Load(1137),
                    settings_.Text(TextSetting::kHelpUrl), 0);
  }
  return failure.code;
}

}  // namespace orvalo
