#pragma once
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "app/settings.h"
#include "shell/working_mode.h"

namespace orvalo::platform {
class MessageBoxes;
class Shell;
}  // namespace orvalo::platform

namespace orvalo {

class DataFile;
class ProxyForm;
class Texts;

// What stands in the options page's own controls; the proxy group has its own.
struct OptionsValues {
  std::string prefix, signature, sender_id, outlook_name, outlook_password;
  bool write_log = false;
  bool delivery_acks = false;
  bool track_failed = false;
  bool span_sms = false;
  bool online = false;  // of the two choices how to work
  bool start_minimised = false;
  bool mapi = false;                        // of the two data sources: Outlook/MAPI, not WAB
  bool schedule_to_server = false;          // of the two choices for scheduled messages
  std::optional<std::size_t> upload_entry;  // of the list of days; nothing when none is chosen
};

inline constexpr std::size_t kVoucherFields = 4;
using VoucherTexts = std::array<std::string, kVoucherFields>;

// The options page's window, as far as its logic needs it. Main thread.
class OptionsView {
 public:
  virtual ~OptionsView() = default;
  virtual void ListUploadDays(const std::vector<std::string>& days) = 0;
  // Must not report the values back as chosen.
  virtual void ShowValues(const OptionsValues& values) = 0;
  virtual OptionsValues Values() const = 0;            // as they stand now
  virtual void ShowOnlineChoice(bool online) = 0;      // must not report it back as chosen
  virtual void EnableProfileFields(bool enabled) = 0;  // of the Outlook profile
  virtual void EnableUploadDays(bool enabled) = 0;
  virtual void ShowVoucher(const VoucherTexts& fields) = 0;
  virtual VoucherTexts Voucher() const = 0;
  virtual void ShowBalance(const std::string& line, const std::string& hint) = 0;
};

// The options page without its window. Main thread; owned by whoever owns the window. What the
// operator edits stays in the controls until the page is applied; choosing how to work, a proxy
// mode or a data source takes effect at once.
class OptionsPage : public WorkingModeView {
 public:
  // Limits of the controls, in characters.
  static constexpr std::size_t kPrefixLength = 12;
  static constexpr std::size_t kSignatureLength = 160;
  static constexpr std::size_t kSenderLength = 20;
  static constexpr std::size_t kTextLength = 254;  // of every other text
  static constexpr std::size_t kVoucherFieldLength = 4;
  static constexpr std::int32_t kLongestUpload = 7;  // days; the list holds 1 to this

  // All of it must outlive the page.
  struct Parts {
    AppSettings& settings;
    DataFile& data_file;
    platform::Mailbox& main_window;
    Account& account;
    platform::Shell& shell;
    WorkingMode& mode;
    BalanceLines& balance;
    ProxyForm& proxy;
    const Texts& texts;
    platform::MessageBoxes& boxes;
    OptionsView& view;
  };

  explicit OptionsPage(const Parts& parts) : parts_(parts) {}

  void SetUp();  // once, when the window is there

  // Writes the controls into the settings and saves those; when they cannot be saved, they count
  // for this run, and the operator is told. A country code that is none, and a sender ID that phone
  // networks would refuse, are not written: the operator is told, and they stay in their controls.
  void Apply();

  // --- Choices that take effect at once ---
  void OnlineChosen();   // applies the page, then logs in
  void OfflineChosen();  // also the answer to the engine's kWmGoOffline
  void DataSourceChosen(bool mapi);
  void UploadChosen(bool to_server);  // one of the choices for scheduled messages

  // The "Proxy Settings" dialog has been closed: the proxy group shows what it stored, so that
  // applying the page does not undo it.
  void ProxyDialogClosed();

  // --- Vouchers and the balance ---
  // Whether `text` may stand in a voucher field.
  static bool AcceptsVoucher(std::string_view text);
  void RedeemVoucher();
  void ClearVoucher();
  void BuyCredits();   // opens the account's page
  void ShowBalance();  // as last known

  void ShowWorkingMode(bool online) override { parts_.view.ShowOnlineChoice(online); }

 private:
  void StoreControls();
  bool Save();  // false, the operator having been told, when that failed
  void StoreSwitches(const OptionsValues& values);
  // Unless it is good, the operator is told why and the stored value stays.
  void StoreChecked(TextSetting setting, const std::string& value, bool good, int problem_text_id,
                    int problem_caption_id);
  void StoreUpload(const OptionsValues& values);

  Parts parts_;
};

}  // namespace orvalo
