#include "net/version_info.h"

#include <cstddef>
#include <string_view>

#include "app/settings.h"
#include "app/texts.h"
#include "gateway/gateway_client.h"
#include "platform/code_page.h"
#include "platform/number.h"

namespace orvalo {

namespace {

constexpr std::string_view kOwnClient = "Orvalo";
constexpr int kProductNameTextId = 1024;
constexpr int kPlainNameTextId = 1025;
constexpr int kVersionTextId = 1488;
constexpr int kCommsTextId = 1489;
constexpr std::size_t kVersionPrefixLength = 4;  // "COM " in front of a component's version

constexpr FileVersion VersionOf(std::string_view text) {
  std::array<std::int32_t, 4> parts{};
  for (std::int32_t& part : parts) {
    part = platform::ParseInteger(text);
    const std::size_t point = text.find('.');
    text = point == std::string_view::npos ? std::string_view() : text.substr(point + 1);
  }
  return FileVersion::FromParts(parts);
}

std::string ComponentVersion(GatewayClient* gateway) {
  std::u16string version;
  if (gateway != nullptr) gateway->Version(&version);
  return version.size() <= kVersionPrefixLength
             ? std::string()
             : platform::FromWide(std::u16string_view(version).substr(kVersionPrefixLength));
}

}  // namespace

FileVersion ProgramVersion() {
  static constexpr FileVersion kVersion = VersionOf(ORVALO_PROGRAM_VERSION);
  return kVersion;
}

bool IsOwnInstallation(const AppSettings& settings) {
  return settings.Text(TextSetting::kClientId) == kOwnClient;
}

std::string ProgramTitle(const AppSettings& settings, const Texts& texts) {
  return texts.Load(IsOwnInstallation(settings) ? kProductNameTextId : kPlainNameTextId);
}

std::array<std::string, 3> VersionLines(const AppSettings& settings, const Texts& texts,
                                        GatewayClient* gateway) {
  const auto parts = ProgramVersion().Parts();
  return {ProgramTitle(settings, texts),
          texts.Format(kVersionTextId, {parts[0], parts[1], parts[2], parts[3]})
              .value_or(std::string()),
          texts.Format(kCommsTextId, {ComponentVersion(gateway)}).value_or(std::string())};
}

}  // namespace orvalo
