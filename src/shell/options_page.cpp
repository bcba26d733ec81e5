#include "shell/options_page.h"

#include "app/file_texts.h"
#include "app/setting_rules.h"
#include "app/settings.h"
#include "app/texts.h"
#include "gateway/account.h"
#include "gateway/engine_notices.h"
#include "net/proxy_form.h"
#include "platform/code_page.h"
#include "platform/message_box.h"
#include "platform/sender_id.h"
#include "platform/shell.h"

namespace orvalo {

namespace {

constexpr int kBadSenderTextId = 2268;
constexpr int kBadSenderCaptionId = 2269;
constexpr int kBadPrefixTextId = 2316;
constexpr int kBadPrefixCaptionId = 2317;
constexpr std::size_t kVoucherFieldRead = 15;  // characters taken of each field

std::string FirstOf(std::string_view text, std::size_t length) {
  return std::string(platform::FirstCharacters(text, length));
}

// A prefix as it is stored: "0027" means "27".
std::string WithoutLeadingZeros(const std::string& prefix) {
  const std::size_t first = prefix.find_first_not_of('0');
  return first == std::string::npos ? std::string() : prefix.substr(first);
}

}  // namespace

void OptionsPage::SetUp() {
  std::vector<std::string> days;
  days.reserve(kLongestUpload);
  for (std::int32_t day = 1; day <= kLongestUpload; ++day) days.push_back(std::to_string(day));
  parts_.view.ListUploadDays(days);

  const AppSettings& settings = parts_.settings;
  OptionsValues values;
  values.prefix = settings.Text(TextSetting::kPrefix);
  values.signature = settings.Text(TextSetting::kSignature);
  values.sender_id = settings.Text(TextSetting::kSenderId);
  values.outlook_name = settings.Text(TextSetting::kOutlookName);
  values.outlook_password = settings.Text(TextSetting::kOutlookPassword);
  values.write_log = settings.Flag(FlagSetting::kWriteLog);
  values.delivery_acks = settings.Flag(FlagSetting::kDeliveryAcks);
  values.track_failed = settings.Flag(FlagSetting::kIndividualSmsTracking);
  values.span_sms = settings.Flag(FlagSetting::kSpanSms);
  values.online = settings.Flag(FlagSetting::kWorkingOnLine);
  values.start_minimised = settings.Flag(FlagSetting::kStartMinimized);
  values.mapi = settings.Flag(FlagSetting::kMapiAddressBook);
  values.schedule_to_server = settings.Flag(FlagSetting::kScheduleToServer);
  const std::int32_t upload = settings.Number(NumberSetting::kUploadToServerDaysBefore);
  if (upload >= 1 && upload <= kLongestUpload)
    values.upload_entry = static_cast<std::size_t>(upload - 1);

  parts_.view.ShowValues(values);
  parts_.view.EnableProfileFields(values.mapi);
  parts_.view.EnableUploadDays(values.schedule_to_server);
  ClearVoucher();
  parts_.proxy.SetUp();
  ShowBalance();
}

void OptionsPage::Apply() {
  StoreControls();
  Save();
}

bool OptionsPage::Save() {
  if (parts_.settings.Save(parts_.data_file)) return true;
  TellSettingsNotSaved(parts_.data_file, false, parts_.texts, parts_.boxes);
  return false;
}

void OptionsPage::StoreControls() {
  AppSettings& settings = parts_.settings;
  const OptionsValues values = parts_.view.Values();
  const std::string prefix = WithoutLeadingZeros(FirstOf(values.prefix, kTextLength));
  settings.SetText(TextSetting::kSignature, FirstOf(values.signature, kTextLength));
  StoreSwitches(values);
  parts_.main_window.Post(values.online ? kWmOnline : kWmOffline, 0, 0);
  parts_.proxy.Apply();  // asks whether the program works on-line
  settings.SetText(TextSetting::kOutlookName, FirstOf(values.outlook_name, kTextLength));
  settings.SetText(TextSetting::kOutlookPassword, FirstOf(values.outlook_password, kTextLength));
  const std::string sender = FirstOf(values.sender_id, kTextLength);
  StoreChecked(TextSetting::kSenderId, sender, sender.empty() || platform::IsSenderId(sender),
               kBadSenderTextId, kBadSenderCaptionId);
  StoreChecked(TextSetting::kPrefix, prefix, IsPrefix(prefix), kBadPrefixTextId,
               kBadPrefixCaptionId);
  StoreUpload(values);
}

void OptionsPage::StoreSwitches(const OptionsValues& values) {
  AppSettings& settings = parts_.settings;
  settings.SetFlag(FlagSetting::kWriteLog, values.write_log);
  settings.SetFlag(FlagSetting::kDeliveryAcks, values.delivery_acks);
  settings.SetFlag(FlagSetting::kIndividualSmsTracking, values.track_failed);
  settings.SetFlag(FlagSetting::kSpanSms, values.span_sms);
  // On comes by a login only.
  if (!values.online) settings.SetFlag(FlagSetting::kWorkingOnLine, false);
  settings.SetFlag(FlagSetting::kStartMinimized, values.start_minimised);
}

// One that was stored before it was checked stays until it is changed.
void OptionsPage::StoreChecked(TextSetting setting, const std::string& value, bool good,
                               int problem_text_id, int problem_caption_id) {
  if (value == parts_.settings.Text(setting)) return;
  if (good) {
    parts_.settings.SetText(setting, value);
    return;
  }
  parts_.boxes.Show(parts_.texts.Format(problem_text_id, {value}).value_or(value),
                    parts_.texts.Load(problem_caption_id), platform::BoxIcon::kStop);
}

void OptionsPage::StoreUpload(const OptionsValues& values) {
  parts_.settings.SetFlag(FlagSetting::kScheduleToServer, values.schedule_to_server);
  if (!values.upload_entry) return;
  parts_.settings.SetNumber(NumberSetting::kUploadToServerDaysBefore,
                            static_cast<std::int32_t>(*values.upload_entry) + 1);
}

void OptionsPage::OnlineChosen() {
  StoreControls();
  const bool saved = Save();  // the login may take long
  if (!parts_.view.Values().online) return;
  parts_.mode.GoOnline();
  if (saved) {
    Save();
  } else {
    parts_.settings.Save(parts_.data_file);  // that it fails has just been told
  }
}

void OptionsPage::OfflineChosen() { parts_.mode.GoOffline(); }

void OptionsPage::DataSourceChosen(bool mapi) {
  parts_.settings.SetFlag(FlagSetting::kMapiAddressBook, mapi);
  parts_.view.EnableProfileFields(mapi);
}

void OptionsPage::UploadChosen(bool to_server) { parts_.view.EnableUploadDays(to_server); }

void OptionsPage::ProxyDialogClosed() { parts_.proxy.Refresh(); }

bool OptionsPage::AcceptsVoucher(std::string_view text) {
  return text.size() <= kVoucherFieldLength &&
         text.find_first_not_of("1234567890") == std::string_view::npos;
}

void OptionsPage::RedeemVoucher() {
  std::string number;
  for (const std::string& field : parts_.view.Voucher())
    number += platform::FirstCharacters(field, kVoucherFieldRead);
  if (!parts_.account.RedeemVoucher(number)) return;
  ClearVoucher();
  parts_.balance.Show();
}

void OptionsPage::ClearVoucher() { parts_.view.ShowVoucher({}); }

void OptionsPage::BuyCredits() { parts_.shell.OpenAddress(parts_.account.AccountPageAddress()); }

void OptionsPage::ShowBalance() {
  parts_.view.ShowBalance(parts_.account.BalanceText(Account::kOptionsBalanceTextId),
                          parts_.account.BalanceHint());
}

}  // namespace orvalo
