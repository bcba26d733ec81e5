#pragma once
#include <array>
#include <atomic>
#include <cstdint>
#include <mutex>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace orvalo {

class DataFile;

// Settings by kind. Their keys, defaults and who saves them stand in one table in settings.cpp; a
// setting is known by its enumerator in the code and by its key ("sender_id") in the file and on
// the command line.
enum class TextSetting {
  kPrefix,
  kSignature,
  kSenderId,
  kOutlookName,
  kOutlookPassword,
  kBackgroundImagePath,
  kLogin,
  kPassword,
  kClientId,
  kVoucherUrl,
  kHelpUrl,
  kUpdateVersionUrl,
  kUpdateFileUrl,
  kUpdateUrl,
  kUpdatePublicKey,
  kComBaseUrl,
  kProxyHost,
  kProxyPort,
  kProxyUsername,
  kProxyPassword,
  kCount
};
enum class FlagSetting {
  kWriteLog,
  kSpanSms,
  kDeliveryAcks,
  kStartMinimized,
  kMapiAddressBook,
  kBalanceWithFraction,
  kRememberPassword,
  kWorkingOnLine,
  kScheduleToServer,
  kIndividualSmsTracking,
  kI18n,
  kCount
};
enum class NumberSetting { kLastBalance, kUploadToServerDaysBefore, kProxyType, kCount };

// Which operation writes a setting to the data file.
enum class SavedBy { kSaveSettings, kSaveLogin, kBoth, kNobody };

// One line of the settings table, for whoever lists or edits settings by key.
struct SettingInfo {
  enum class Kind { kText, kFlag, kNumber };
  std::string_view key;
  Kind kind;
  int index;  // of the enumerator of that kind
  SavedBy saved_by;
  bool secret;                // a password: masked wherever settings are listed
  std::string_view fallback;  // what a missing or empty value reads as, in the form of AsText
};

// A recent-numbers entry as it is stored: 108 bytes whose meaning belongs to the recent list.
using RecentRecord = std::array<unsigned char, 108>;
inline constexpr std::size_t kMaxRecent = 10;

// All settings in memory. Loaded once at start-up; nothing reaches the file but through the two
// save operations. Values may be read and written from any thread, each on its own; loading, saving
// and the recent list belong to the main thread.
class AppSettings {
 public:
  AppSettings();  // every setting at its default

  std::string Text(TextSetting which) const;
  bool Flag(FlagSetting which) const;
  std::int32_t Number(NumberSetting which) const;
  void SetText(TextSetting which, std::string value);
  void SetFlag(FlagSetting which, bool value);
  void SetNumber(NumberSetting which, std::int32_t value);

  // The recent-numbers list, newest first, at most kMaxRecent.
  const std::vector<RecentRecord>& Recent() const { return recent_; }
  void SetRecent(std::vector<RecentRecord> entries);  // more than kMaxRecent are cut

  // Reads every key; the login values (Login, Password, RememberPassword, WorkingOnLine) only when
  // asked for.
  void Load(const DataFile& file, bool with_login_values);
  // Write to the data file and make it write itself. False when that failed; the values in memory
  // stay.
  bool Save(DataFile& file) const;
  bool SaveLoginValues(DataFile& file) const;

  // The settings table, in the order in which settings are loaded.
  static std::span<const SettingInfo> Table();
  static const SettingInfo* Find(
      std::string_view key);  // without regard to case; null when there is none

  // By table line, as text: flags "0"/"1", numbers decimal. SetFromText does as loading does (an
  // empty text takes the default, ProxyType is limited to 1 to 4) and is false, changing nothing,
  // when `text` is no value of the setting's kind or too long for the data file.
  std::string AsText(const SettingInfo& setting) const;
  bool SetFromText(const SettingInfo& setting, std::string_view text);

 private:
  void LoadOne(const DataFile& file, const SettingInfo& setting);

  mutable std::mutex mutex_;  // guards texts_
  std::array<std::string, static_cast<std::size_t>(TextSetting::kCount)> texts_;
  std::array<std::atomic<bool>, static_cast<std::size_t>(FlagSetting::kCount)> flags_;
  std::array<std::atomic<std::int32_t>, static_cast<std::size_t>(NumberSetting::kCount)> numbers_;
  std::vector<RecentRecord> recent_;
};

// The letters-for-bytes form in which a recent entry stands in the data file: two of
// "ABCDEFGHIJKLMNOP" a byte. Letters that are missing or foreign read as "A".
std::string EncodeRecent(const RecentRecord& entry);
RecentRecord DecodeRecent(std::string_view letters);

}  // namespace orvalo
