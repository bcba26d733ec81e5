#include "app/setting_rules.h"

#include <charconv>
#include <cstdint>

#include "app/settings.h"
#include "platform/sender_id.h"

namespace orvalo {

namespace {

constexpr std::string_view kDigits = "0123456789";

int HexValue(char digit) {
  if (digit >= '0' && digit <= '9') return digit - '0';
  if (digit >= 'a' && digit <= 'f') return digit - 'a' + 10;
  if (digit >= 'A' && digit <= 'F') return digit - 'A' + 10;
  return -1;
}

bool IsNumberBetween(std::string_view text, std::int32_t least, std::int32_t most) {
  std::int32_t number = 0;
  const char* end = text.data() + text.size();
  return text.find_first_not_of(kDigits) == std::string_view::npos &&
         std::from_chars(text.data(), end, number) == std::from_chars_result{end, std::errc()} &&
         number >= least && number <= most;
}

bool Is(const SettingInfo& setting, TextSetting which) {
  return setting.kind == SettingInfo::Kind::kText && setting.index == static_cast<int>(which);
}

bool Is(const SettingInfo& setting, NumberSetting which) {
  return setting.kind == SettingInfo::Kind::kNumber && setting.index == static_cast<int>(which);
}

}  // namespace

std::optional<UpdateKey> ReadUpdateKey(std::string_view digits) {
  if (digits.size() != 2 * kUpdateKeyBytes) return std::nullopt;
  UpdateKey key;
  for (std::size_t i = 0; i < key.size(); ++i) {
    const int high = HexValue(digits[2 * i]);
    const int low = HexValue(digits[2 * i + 1]);
    if (high < 0 || low < 0) return std::nullopt;
    key[i] = static_cast<unsigned char>(high << 4 | low);
  }
  return key;
}

bool IsPort(std::string_view text) { return IsNumberBetween(text, 1, 65535); }

bool IsPrefix(std::string_view text) {
  return text.find_first_not_of(kDigits) == std::string_view::npos;
}

std::string SettingProblem(const SettingInfo& setting, std::string_view value) {
  if (value.empty()) return {};
  if (Is(setting, TextSetting::kPrefix) && !IsPrefix(value))
    return "a country code is digits only, such as 27";
  if (Is(setting, TextSetting::kSenderId) && !platform::IsSenderId(value))
    return "a sender is up to 11 letters, digits and simple signs, or a number of up to 15 digits";
  if (Is(setting, TextSetting::kProxyPort) && !IsPort(value))
    return "a port is a number from 1 to 65535";
  if (Is(setting, TextSetting::kUpdatePublicKey) && !ReadUpdateKey(value))
    return "a key is 64 hexadecimal digits";
  if (Is(setting, NumberSetting::kProxyType) && !IsNumberBetween(value, 1, 4))
    return "a proxy mode is a number from 1 to 4";
  return {};
}

}  // namespace orvalo
