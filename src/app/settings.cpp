#include "app/settings.h"

#include <algorithm>
#include <charconv>
#include <utility>

#include "app/data_file.h"
#include "app/data_file_format.h"
#include "platform/collation.h"

namespace orvalo {
namespace {

template <typename Enumeration>
constexpr std::size_t Index(Enumeration which) {
  return static_cast<std::size_t>(which);
}

constexpr SettingInfo TextLine(std::string_view key, TextSetting which, std::string_view fallback,
                               SavedBy saved_by, bool secret = false) {
  return {key, SettingInfo::Kind::kText, static_cast<int>(which), saved_by, secret, fallback};
}
constexpr SettingInfo FlagLine(std::string_view key, FlagSetting which, std::string_view fallback,
                               SavedBy saved_by) {
  return {key, SettingInfo::Kind::kFlag, static_cast<int>(which), saved_by, false, fallback};
}
constexpr SettingInfo NumberLine(std::string_view key, NumberSetting which,
                                 std::string_view fallback, SavedBy saved_by) {
  return {key, SettingInfo::Kind::kNumber, static_cast<int>(which), saved_by, false, fallback};
}

constexpr bool kSecret = true;
constexpr SavedBy kSaved = SavedBy::kSaveSettings;
constexpr SavedBy kSavedAtLogin = SavedBy::kSaveLogin;
constexpr SavedBy kReadOnly = SavedBy::kNobody;

constexpr std::array kSettings = {
    TextLine("prefix", TextSetting::kPrefix, "", kSaved),
    TextLine("Sig", TextSetting::kSignature, "", kSaved),
    FlagLine("WriteLog", FlagSetting::kWriteLog, "0", kSaved),
    FlagLine("SpanSMS", FlagSetting::kSpanSms, "0", kSaved),
    FlagLine("DeliveryAcks", FlagSetting::kDeliveryAcks, "0", kSaved),
    FlagLine("StartMinimized", FlagSetting::kStartMinimized, "0", kSaved),
    TextLine("sender_id", TextSetting::kSenderId, "", kSaved),
    TextLine("Outlook_Name", TextSetting::kOutlookName, "", kSaved),
    TextLine("Outlook_Password", TextSetting::kOutlookPassword, "", kSaved, kSecret),
    FlagLine("MAPI_AddressBook", FlagSetting::kMapiAddressBook, "0", kSaved),
    TextLine("bg_image_path", TextSetting::kBackgroundImagePath, "", kSaved),
    NumberLine("LastBalance", NumberSetting::kLastBalance, "0", kSaved),
    FlagLine("BalanceWithFraction", FlagSetting::kBalanceWithFraction, "0", kSaved),
    TextLine("Login", TextSetting::kLogin, "", kSavedAtLogin),
    TextLine("Password", TextSetting::kPassword, "", kSavedAtLogin, kSecret),
    FlagLine("RememberPassword", FlagSetting::kRememberPassword, "0", kSavedAtLogin),
    FlagLine("WorkingOnLine", FlagSetting::kWorkingOnLine, "1", SavedBy::kBoth),
    TextLine("client_id", TextSetting::kClientId, "", kReadOnly),
    TextLine("voucher_url", TextSetting::kVoucherUrl, "https://www.orvalo.example/account", kSaved),
    TextLine("help_url", TextSetting::kHelpUrl, "", kReadOnly),
    FlagLine("ScheduleToServer", FlagSetting::kScheduleToServer, "0", kSaved),
    NumberLine("UploadToServerXDaysBefore", NumberSetting::kUploadToServerDaysBefore, "1", kSaved),
    TextLine("UpdateVersionURL", TextSetting::kUpdateVersionUrl, "", kReadOnly),
    TextLine("UpdateFileURL", TextSetting::kUpdateFileUrl, "", kReadOnly),
    TextLine("UpdateURL", TextSetting::kUpdateUrl, "", kReadOnly),
    TextLine("UpdatePublicKey", TextSetting::kUpdatePublicKey, "", kReadOnly),
    // The address at which the demonstration gateway service listens.
    TextLine("COMBaseURL", TextSetting::kComBaseUrl, "http://127.0.0.1:8480", kReadOnly),
    NumberLine("ProxyType", NumberSetting::kProxyType, "1", kSaved),
    TextLine("ProxyHost", TextSetting::kProxyHost, "", kSaved),
    TextLine("ProxyPort", TextSetting::kProxyPort, "", kSaved),
    TextLine("ProxyUsername", TextSetting::kProxyUsername, "", kSaved),
    TextLine("ProxyPassword", TextSetting::kProxyPassword, "", kSaved, kSecret),
    FlagLine("IndividualSMSTracking", FlagSetting::kIndividualSmsTracking, "1", kSaved),
    FlagLine("i18n", FlagSetting::kI18n, "1", kReadOnly),
};

// Whether every enumerator of one kind has exactly one line.
constexpr bool Complete(SettingInfo::Kind kind, std::size_t count) {
  for (std::size_t index = 0; index < count; ++index) {
    const auto lines = std::count_if(kSettings.begin(), kSettings.end(), [=](const auto& line) {
      return line.kind == kind && line.index == static_cast<int>(index);
    });
    if (lines != 1) return false;
  }
  return true;
}
static_assert(Complete(SettingInfo::Kind::kText, Index(TextSetting::kCount)));
static_assert(Complete(SettingInfo::Kind::kFlag, Index(FlagSetting::kCount)));
static_assert(Complete(SettingInfo::Kind::kNumber, Index(NumberSetting::kCount)));

constexpr std::string_view kNumRecentKey = "NumRecent";
std::string RecentKey(std::size_t position) { return "Recent" + std::to_string(position); }

constexpr bool IsLoginValue(const SettingInfo& setting) {
  return setting.saved_by == SavedBy::kSaveLogin || setting.saved_by == SavedBy::kBoth;
}

bool ReadWholeNumber(std::string_view text, std::int32_t* number) {
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), *number);
  return error == std::errc() && end == text.data() + text.size();
}

std::int32_t Limited(NumberSetting which, std::int32_t value) {
  return which == NumberSetting::kProxyType ? std::clamp(value, 1, 4) : value;
}

constexpr std::string_view kRecentLetters = "ABCDEFGHIJKLMNOP";

unsigned char LetterValue(std::string_view letters, std::size_t position) {
  if (position >= letters.size()) return 0;
  const std::size_t value = kRecentLetters.find(letters[position]);
  return value == std::string_view::npos ? 0 : static_cast<unsigned char>(value);
}

}  // namespace

AppSettings::AppSettings() {
  for (const SettingInfo& setting : kSettings) SetFromText(setting, setting.fallback);
}

std::string AppSettings::Text(TextSetting which) const {
  const std::lock_guard lock(mutex_);
  return texts_[Index(which)];
}

bool AppSettings::Flag(FlagSetting which) const { return flags_[Index(which)].load(); }

std::int32_t AppSettings::Number(NumberSetting which) const {
  return numbers_[Index(which)].load();
}

void AppSettings::SetText(TextSetting which, std::string value) {
  const std::lock_guard lock(mutex_);
  texts_[Index(which)] = std::move(value);
}

void AppSettings::SetFlag(FlagSetting which, bool value) { flags_[Index(which)].store(value); }

void AppSettings::SetNumber(NumberSetting which, std::int32_t value) {
  numbers_[Index(which)].store(value);
}

void AppSettings::SetRecent(std::vector<RecentRecord> entries) {
  if (entries.size() > kMaxRecent) entries.resize(kMaxRecent);
  recent_ = std::move(entries);
}

void AppSettings::Load(const DataFile& file, bool with_login_values) {
  for (const SettingInfo& setting : kSettings) {
    if (with_login_values || !IsLoginValue(setting)) LoadOne(file, setting);
  }
  std::int32_t count = 0;
  file.GetInteger(kNumRecentKey, &count, 0);
  std::vector<RecentRecord> entries;
  for (std::size_t i = 0; i < kMaxRecent && static_cast<std::int32_t>(i) < count; ++i) {
    std::string letters;
    file.GetString(RecentKey(i), &letters, "");
    entries.push_back(DecodeRecent(letters));
  }
  SetRecent(std::move(entries));
}

void AppSettings::LoadOne(const DataFile& file, const SettingInfo& setting) {
  switch (setting.kind) {
    case SettingInfo::Kind::kText: {
      std::string text;
      file.GetString(setting.key, &text, setting.fallback);
      SetText(static_cast<TextSetting>(setting.index), std::move(text));
      return;
    }
    case SettingInfo::Kind::kFlag: {
      bool flag = false;
      file.GetFlag(setting.key, &flag, setting.fallback == "1");
      SetFlag(static_cast<FlagSetting>(setting.index), flag);
      return;
    }
    case SettingInfo::Kind::kNumber: {
      const auto which = static_cast<NumberSetting>(setting.index);
      std::int32_t fallback = 0;
      ReadWholeNumber(setting.fallback, &fallback);
      std::int32_t number = 0;
      file.GetInteger(setting.key, &number, fallback);
      SetNumber(which, Limited(which, number));
      return;
    }
  }
}

bool AppSettings::Save(DataFile& file) const {
  for (const SettingInfo& setting : kSettings) {
    if (setting.saved_by == SavedBy::kSaveSettings || setting.saved_by == SavedBy::kBoth) {
      file.SetString(setting.key, AsText(setting));
    }
  }
  file.SetInteger(kNumRecentKey, static_cast<std::int32_t>(recent_.size()));
  for (std::size_t i = 0; i < recent_.size(); ++i) {
    file.SetString(RecentKey(i), EncodeRecent(recent_[i]));
  }
  return file.Save();
}

bool AppSettings::SaveLoginValues(DataFile& file) const {
  for (const SettingInfo& setting : kSettings) {
    if (IsLoginValue(setting)) file.SetString(setting.key, AsText(setting));
  }
  return file.Save();
}

std::span<const SettingInfo> AppSettings::Table() { return kSettings; }

const SettingInfo* AppSettings::Find(std::string_view key) {
  const auto found = std::find_if(kSettings.begin(), kSettings.end(), [&](const auto& setting) {
    return platform::EqualNoCaseAscii(setting.key, key);
  });
  return found == kSettings.end() ? nullptr : &*found;
}

std::string AppSettings::AsText(const SettingInfo& setting) const {
  switch (setting.kind) {
    case SettingInfo::Kind::kText:
      return Text(static_cast<TextSetting>(setting.index));
    case SettingInfo::Kind::kFlag:
      return Flag(static_cast<FlagSetting>(setting.index)) ? "1" : "0";
    case SettingInfo::Kind::kNumber:
      break;
  }
  return std::to_string(Number(static_cast<NumberSetting>(setting.index)));
}

bool AppSettings::SetFromText(const SettingInfo& setting, std::string_view text) {
  switch (setting.kind) {
    case SettingInfo::Kind::kText:
      if (text.size() > kMaxDataValue || text.find('\0') != std::string_view::npos) return false;
      SetText(static_cast<TextSetting>(setting.index),
              std::string(text.empty() ? setting.fallback : text));
      return true;
    case SettingInfo::Kind::kFlag:
      if (text != "0" && text != "1") return false;
      SetFlag(static_cast<FlagSetting>(setting.index), text == "1");
      return true;
    case SettingInfo::Kind::kNumber:
      break;
  }
  std::int32_t number = 0;
  if (!ReadWholeNumber(text, &number)) return false;
  const auto which = static_cast<NumberSetting>(setting.index);
  SetNumber(which, Limited(which, number));
  return true;
}

std::string EncodeRecent(const RecentRecord& entry) {
  std::string letters;
  letters.reserve(entry.size() * 2);
  for (const unsigned char byte : entry) {
    letters += kRecentLetters[byte >> 4];
    letters += kRecentLetters[byte & 0xF];
  }
  return letters;
}

RecentRecord DecodeRecent(std::string_view letters) {
  RecentRecord entry{};
  for (std::size_t i = 0; i < entry.size(); ++i) {
    const int high = LetterValue(letters, i * 2);
    entry[i] = static_cast<unsigned char>(high << 4 | LetterValue(letters, i * 2 + 1));
  }
  return entry;
}

}  // namespace orvalo
