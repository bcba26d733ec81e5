#include "net/proxy_form.h"

#include <algorithm>
#include <array>
#include <utility>

#include "app/setting_rules.h"
#include "app/settings.h"
#include "app/texts.h"
#include "gateway/gateway_client.h"
#include "net/proxy_settings.h"
#include "platform/code_page.h"
#include "platform/collation.h"
#include "platform/message_box.h"

namespace orvalo {

namespace {

constexpr std::int32_t kFirstMode = 1;
constexpr std::int32_t kProxyListMode = 4;
constexpr int kSuccessCaptionId = 1384;
constexpr int kSuccessTextId = 1385;

// The entry of a mode in the list, its name's and its description's text: modes count from 1.
constexpr int ModeNameId(std::int32_t mode) { return 1376 + 2 * (mode - kFirstMode); }
constexpr int ModeDescriptionId(std::int32_t mode) { return ModeNameId(mode) + 1; }
constexpr bool IsMode(std::int32_t mode) { return mode >= kFirstMode && mode <= kProxyListMode; }

constexpr std::array<std::pair<TextSetting, std::string ProxyValues::*>, 4> kProxyFields{
    {{TextSetting::kProxyHost, &ProxyValues::host},
     {TextSetting::kProxyPort, &ProxyValues::port},
     {TextSetting::kProxyUsername, &ProxyValues::user},
     {TextSetting::kProxyPassword, &ProxyValues::password}}};

}  // namespace

void ProxyForm::SetUp() {
  std::vector<std::string> names;
  names.reserve(kProxyListMode);
  for (std::int32_t mode = kFirstMode; mode <= kProxyListMode; ++mode)
    names.push_back(parts_.texts.Load(ModeNameId(mode)));
  parts_.view.ListProxyModes(names);

  known_ = FromSettings();
  parts_.view.ShowProxy(known_);
  Update(false);
}

void ProxyForm::Refresh() {
  if (FromSettings() != known_) SetUp();
}

bool ProxyForm::AcceptsPort(std::string_view text) { return text.empty() || IsPort(text); }

void ProxyForm::Update(bool test) {
  const ProxyValues values = Read();
  const std::int32_t mode = Mode(values);
  parts_.view.EnableProxyFields(mode == kProxyListMode);
  parts_.view.ShowProxyDescription(IsMode(mode) ? parts_.texts.Load(ModeDescriptionId(mode))
                                                : std::string());
  if (!test && !Differs(values, mode)) return;

  parts_.settings.SetNumber(NumberSetting::kProxyType, mode);
  for (const auto& [setting, field] : kProxyFields) parts_.settings.SetText(setting, values.*field);
  known_ = FromSettings();

  const bool try_connection =
      place_ == Place::kDialog || test || parts_.settings.Flag(FlagSetting::kWorkingOnLine);
  parts_.view.ShowWaitCursor(true);
  const std::int32_t error = parts_.proxy.ApplyProxySettings(try_connection);
  parts_.view.ShowWaitCursor(false);
  if (error == kGatewayOk && test) {
    parts_.boxes.Show(parts_.texts.Load(kSuccessTextId), parts_.texts.Load(kSuccessCaptionId),
                      platform::BoxIcon::kNone);
  }
}

ProxyValues ProxyForm::FromSettings() const {
  ProxyValues values;
  const std::int32_t mode = parts_.settings.Number(NumberSetting::kProxyType);
  if (IsMode(mode)) values.entry = static_cast<std::size_t>(mode - kFirstMode);
  for (const auto& [setting, field] : kProxyFields) values.*field = parts_.settings.Text(setting);
  return values;
}

ProxyValues ProxyForm::Read() const {
  ProxyValues values = parts_.view.Proxy();
  for (const auto& [setting, field] : kProxyFields) {
    std::string& text = values.*field;
    text.resize(platform::FirstCharacters(text, kFieldLength).size());
  }
  return values;
}

std::int32_t ProxyForm::Mode(const ProxyValues& values) const {
  if (!values.entry) return parts_.settings.Number(NumberSetting::kProxyType);
  return kFirstMode + static_cast<std::int32_t>(*values.entry);
}

// The fields count in the mode that uses them only; letter case makes no difference.
bool ProxyForm::Differs(const ProxyValues& values, std::int32_t mode) const {
  if (mode != parts_.settings.Number(NumberSetting::kProxyType)) return true;
  return mode == kProxyListMode &&
         std::any_of(kProxyFields.begin(), kProxyFields.end(), [&](const auto& entry) {
           return !platform::EqualNoCase(values.*entry.second, parts_.settings.Text(entry.first));
         });
}

}  // namespace orvalo
