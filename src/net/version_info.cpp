#include "net/version_info.h"

#include <algorithm>
#include <utility>

#include "app/settings.h"
#include "app/texts.h"
#include "gateway/gateway_client.h"
#include "platform/code_page.h"
#include "platform/number.h"
#include "platform/version_resource.h"

namespace orvalo {

namespace {

constexpr std::string_view kOwnClient = "Orvalo";
constexpr int kProductNameTextId = 1024;
constexpr int kPlainNameTextId = 1025;
constexpr int kVersionTextId = 1488;
constexpr int kCommsTextId = 1489;
constexpr std::size_t kVersionPrefixLength = 4;  // "COM " in front of a component's version

std::string ComponentVersion(GatewayClient* gateway) {
  std::u16string version;
  if (gateway != nullptr) gateway->Version(&version);
  return version.size() <= kVersionPrefixLength
             ? std::string()
             : platform::FromWide(std::u16string_view(version).substr(kVersionPrefixLength));
}

}  // namespace

bool ReadVersionInfo(const std::string& module, VersionInfo* info) {
  auto block = platform::ReadVersionResource(module);
  VersionInfo read;
  if (!block || block->size() < 4 * read.fixed.size()) return false;
  const auto number = [&](std::size_t at, std::size_t bytes) {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < bytes; ++i)
      value |= std::uint32_t{static_cast<unsigned char>((*block)[at + i])} << 8 * i;
    return value;
  };
  for (std::size_t i = 0; i < read.fixed.size(); ++i) read.fixed[i] = number(4 * i, 4);
  if (read.fixed[0] != VersionInfo::kSignature) return false;
  const std::size_t translation = 4 * read.fixed.size();
  if (block->size() >= translation + 4) {
    read.language = static_cast<std::uint16_t>(number(translation, 2));
    read.code_page = static_cast<std::uint16_t>(number(translation + 2, 2));
  }
  read.block = *std::move(block);
  *info = std::move(read);
  return true;
}

FileVersion ParseFileVersion(std::string_view text) {
  std::array<std::int32_t, 4> parts{};
  for (std::int32_t& part : parts) {
    const std::size_t sign = text.find_first_not_of(" \t\r\n\v\f");
    if (sign == std::string_view::npos) break;
    const std::size_t first = sign + (text[sign] == '-' || text[sign] == '+' ? 1 : 0);
    const std::size_t end = std::min(text.find_first_not_of("0123456789", first), text.size());
    if (end == first) break;
    part = platform::ParseInteger(text);
    if (end == text.size() || text[end] != '.') break;
    text.remove_prefix(end + 1);
  }
  return FileVersion::FromParts(parts);
}

FileVersion ProgramVersion() {
  static const FileVersion version = [] {
    VersionInfo info;
    return ReadVersionInfo("", &info) ? info.file_version() : FileVersion();
  }();
  return version;
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
