#include "app/settings.h"

#include <gtest/gtest.h>

#include "app/data_file.h"
#include "app/data_file_format.h"
#include "support/temporary_folder.h"

namespace orvalo::test {
namespace {

constexpr const char* kVoucherUrl = "https://www.orvalo.example/account";

// Every key with its default, in the order of loading: the operators' files depend on them.
const std::string kDefaults =
    "prefix= Sig= WriteLog=0 SpanSMS=0 DeliveryAcks=0 StartMinimized=0 sender_id= Outlook_Name= "
    "Outlook_Password= MAPI_AddressBook=0 bg_image_path= LastBalance=0 BalanceWithFraction=0 "
    "Login= Password= RememberPassword=0 WorkingOnLine=1 client_id= "
    "voucher_url=https://www.orvalo.example/account help_url= ScheduleToServer=0 "
    "UploadToServerXDaysBefore=1 UpdateVersionURL= UpdateFileURL= UpdateURL= "
    "UpdatePublicKey= COMBaseURL=http://127.0.0.1:8480 ProxyType=1 ProxyHost= ProxyPort= "
    "ProxyUsername= "
    "ProxyPassword= IndividualSMSTracking=1 i18n=1 ";

std::string Listing(const AppSettings& settings) {
  std::string all;
  for (const SettingInfo& setting : AppSettings::Table()) {
    all += std::string(setting.key) + "=" + settings.AsText(setting) + " ";
  }
  return all;
}

// Gives every setting a value that is not its default.
void ChangeAll(AppSettings* settings) {
  for (const SettingInfo& setting : AppSettings::Table()) {
    const bool text = setting.kind == SettingInfo::Kind::kText;
    const bool flag = setting.kind == SettingInfo::Kind::kFlag;
    const std::string value = text                      ? "my" + std::string(setting.key)
                              : !flag                   ? "3"
                              : setting.fallback == "0" ? "1"
                                                        : "0";
    ASSERT_TRUE(settings->SetFromText(setting, value));
  }
}

class SettingsTest : public testing::Test {
 protected:
  // The keys on the disk, in their order.
  std::string StoredKeys() const {
    std::string keys;
    for (const auto& [key, value] : DecodeDataRecords(Slurp(path_))) keys += key + " ";
    return keys;
  }

  TemporaryFolder folder_;
  const std::string path_ = folder_.File("SMS.dat");
  DataFile file_{path_, false};
  AppSettings settings_;
};

TEST_F(SettingsTest, AnEmptyFileGivesTheDefaults) {
  EXPECT_EQ(Listing(settings_), kDefaults);
  ChangeAll(&settings_);
  settings_.SetRecent({RecentRecord{}});
  settings_.Load(file_, true);
  EXPECT_EQ(Listing(settings_), kDefaults);
  EXPECT_TRUE(settings_.Recent().empty());
}

TEST_F(SettingsTest, ReadsStoredValuesByTheirKind) {
  const struct {
    const char *key, *stored, *expected;
  } cases[] = {
      {"ProxyType", "7", "4"},
      {"ProxyType", "0", "1"},
      {"ProxyType", "abc", "1"},
      {"ProxyType", "2", "2"},
      {"Login", "", ""},
      {"Login", " anna ", " anna "},
      {"voucher_url", "x", "x"},
      {"WriteLog", "-5", "1"},
      {"voucher_url", "", kVoucherUrl},
      {"WriteLog", "yes", "0"},
      {"WorkingOnLine", "", "1"},
      {"WorkingOnLine", "0", "0"},
      {"LastBalance", "12.7", "12"},
      {"i18n", "off", "0"},
      {"LastBalance", "-99999999999", "-2147483648"},
  };
  for (const auto& test : cases) {
    file_.SetString(test.key, test.stored);
    settings_.Load(file_, true);
    EXPECT_EQ(settings_.AsText(*AppSettings::Find(test.key)), test.expected)
        << test.key << " stored as " << test.stored;
  }
}

TEST_F(SettingsTest, EachSaveWritesItsOwnKeysToTheDisk) {
  ChangeAll(&settings_);
  ASSERT_TRUE(settings_.SaveLoginValues(file_));
  EXPECT_EQ(StoredKeys(), "LOGIN PASSWORD REMEMBERPASSWORD WORKINGONLINE ");
  AppSettings loaded;
  loaded.Load(file_, false);
  EXPECT_EQ(Listing(loaded), kDefaults);

  file_.SetString("help_url", "https://help.example");
  file_.SetString("SchedulingInfo", "1,2,3");
  ASSERT_TRUE(settings_.Save(file_));
  loaded.Load(DataFile(path_, false), true);
  for (const SettingInfo& setting : AppSettings::Table()) {
    std::string expected = settings_.AsText(setting);
    if (setting.saved_by == SavedBy::kNobody) expected = setting.fallback;
    if (setting.key == "help_url") expected = "https://help.example";
    EXPECT_EQ(loaded.AsText(setting), expected) << setting.key;
  }
  for (const char* key :
       {"CLIENT_ID", "COMBASEURL", "I18N", "UPDATEFILEURL", "UPDATEURL", "UPDATEVERSIONURL"}) {
    EXPECT_EQ(StoredKeys().find(key), std::string::npos) << key;
  }
  EXPECT_NE(StoredKeys().find("SCHEDULINGINFO "), std::string::npos);

  DataFile nowhere(path_ + "/SMS.dat", false);  // below a file
  EXPECT_FALSE(settings_.Save(nowhere));
  EXPECT_FALSE(settings_.SaveLoginValues(nowhere));
}

TEST_F(SettingsTest, RecentEntriesAreStoredAsLettersUpToTheirCount) {
  RecentRecord record{};
  record[0] = 0x41;
  record[1] = 0xFF;
  const std::string letters = EncodeRecent(record);
  EXPECT_EQ(letters, "EBPP" + std::string(2 * 106, 'A'));
  for (const std::string& same : {letters, letters + "PPPP", std::string("EBPP!z\xFFq")}) {
    EXPECT_EQ(DecodeRecent(same), record) << same;
  }

  std::vector<RecentRecord> entries(12);
  for (std::size_t i = 0; i < entries.size(); ++i)
    entries[i].fill(static_cast<unsigned char>(i + 1));
  settings_.SetRecent(entries);
  settings_.Save(file_);
  settings_.SetRecent({record});
  settings_.Save(file_);
  // Entries beyond the count stay in the file.
  entries[0] = record;
  const std::pair<const char*, std::size_t> counts[] = {
      {"1", 1}, {"25", 10}, {"-1", 0}, {"many", 0}};
  for (const auto& [stored, count] : counts) {
    if (count != 1) file_.SetString("NumRecent", stored);
    settings_.Load(file_, true);
    EXPECT_EQ(settings_.Recent(), std::vector(entries.begin(), entries.begin() + count)) << stored;
  }
}

TEST_F(SettingsTest, SetFromTextTakesOnlyValuesOfTheKind) {
  const struct {
    const char* key;
    std::string text;
    bool accepted;
    std::string then;
  } cases[] = {
      {"writelog", "1", true, "1"},           {"WriteLog", "yes", false, "0"},
      {"WriteLog", "", false, "0"},           {"LastBalance", "-7", true, "-7"},
      {"ProxyType", "9", true, "4"},          {"LastBalance", "7x", false, "0"},
      {"ProxyType", "x", false, "1"},         {"LastBalance", "2147483648", false, "0"},
      {"PREFIX", "0044", true, "0044"},       {"Sig", std::string(2048, 's'), false, ""},
      {"voucher_url", "", true, kVoucherUrl}, {"Sig", std::string("a\0b", 3), false, ""},
  };
  for (const auto& test : cases) {
    AppSettings settings;
    const SettingInfo* setting = AppSettings::Find(test.key);
    ASSERT_NE(setting, nullptr) << test.key;
    EXPECT_EQ(settings.SetFromText(*setting, test.text), test.accepted) << test.key;
    EXPECT_EQ(settings.AsText(*setting), test.then) << test.key;
  }
  EXPECT_EQ(AppSettings::Find("NoSuchKey"), nullptr);
}

}  // namespace
}  // namespace orvalo::test
