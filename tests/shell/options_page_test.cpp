#include "shell/options_page.h"

#include <gtest/gtest.h>

#include "net/proxy_form.h"
#include "net/proxy_settings.h"
#include "shell/shell_bench.h"

namespace orvalo {
namespace {

class FakeProxyView : public ProxyView {
 public:
  void ListProxyModes(const std::vector<std::string>& texts) override { names = texts; }
  void ShowProxy(const ProxyValues& shown) override { values = shown; }
  ProxyValues Proxy() const override { return values; }
  void EnableProxyFields(bool on) override { enabled = on; }
  void ShowProxyDescription(const std::string& text) override { description = text; }
  void ShowWaitCursor(bool shown) override { waits += shown ? "[" : "]"; }
  std::vector<std::string> names;
  ProxyValues values;
  bool enabled = true;
  std::string description, waits;
};

class FakeOptions : public OptionsView {
 public:
  void ListUploadDays(const std::vector<std::string>& texts) override { days = texts; }
  void ShowValues(const OptionsValues& shown) override { values = shown; }
  OptionsValues Values() const override { return values; }
  void ShowOnlineChoice(bool online) override { values.online = online; }
  void EnableProfileFields(bool on) override { profile = on; }
  void EnableUploadDays(bool on) override { upload = on; }
  void ShowVoucher(const VoucherTexts& fields) override { voucher = fields; }
  VoucherTexts Voucher() const override { return voucher; }
  void ShowBalance(const std::string& line) override { balance = line; }
  std::vector<std::string> days;
  OptionsValues values;
  bool profile = true, upload = true;
  VoucherTexts voucher;
  std::string balance;
};

struct OptionsBench : test::ShellBench {
  FakeProxyView proxy_view;
  FakeOptions view;
  int balances = 0;
  ProxySettings proxy{settings, *gateway, texts, boxes};
  ProxyForm form{{settings, proxy, texts, boxes, proxy_view}, ProxyForm::Place::kOptionsPage};
  BalanceLines lines{*account, [this] {
                       ++balances;
                       page.ShowBalance();
                     }};
  WorkingMode mode{{settings, texts, boxes, window, *account, lines, page}};
  OptionsPage page{{settings, data_file, window, *account, shell, mode, lines, form, view}};

  OptionsBench() { fake.On("QueryBalance", "20"); }
  std::vector<std::uint32_t> Posted() const {
    std::vector<std::uint32_t> numbers;
    for (const auto& message : window.messages()) numbers.push_back(std::get<0>(message));
    return numbers;
  }
  // The text of the last message box, or "".
  std::string LastBox() const { return boxes.shown().empty() ? "" : boxes.shown().back().text; }
};

TEST(OptionsPageTest, ShowsTheSettings) {
  OptionsBench bench;
  bench.settings.SetText(TextSetting::kPrefix, "27");
  bench.settings.SetFlag(FlagSetting::kMapiAddressBook, true);
  bench.settings.SetFlag(FlagSetting::kSpanSms, true);
  bench.settings.SetNumber(NumberSetting::kUploadToServerDaysBefore, 3);
  bench.settings.SetNumber(NumberSetting::kLastBalance, 125);
  bench.page.SetUp();
  EXPECT_EQ(bench.view.values.prefix, "27");
  EXPECT_TRUE(bench.view.values.span_sms && bench.view.values.online && bench.view.profile);
  EXPECT_FALSE(bench.view.values.write_log || bench.view.values.start_minimised);
  EXPECT_FALSE(bench.view.upload);
  ASSERT_EQ(bench.view.days.size(), 7u);
  EXPECT_EQ(bench.view.days.at(bench.view.values.upload_entry.value()), "3");
  EXPECT_EQ(bench.view.balance, "Balance: 12.5");
  EXPECT_TRUE(bench.fake.Calls().empty());
  bench.page.DataSourceChosen(false);
  bench.page.UploadChosen(true);
  EXPECT_FALSE(bench.settings.Flag(FlagSetting::kMapiAddressBook));
  EXPECT_FALSE(bench.view.profile);
  EXPECT_TRUE(bench.view.upload);
}

TEST(OptionsPageTest, ApplyingStoresEveryControlInItsSetting) {
  const struct {
    const char* key;
    void (*edit)(OptionsValues&);
    std::string saved;
  } cases[] = {
      {"prefix", [](OptionsValues& v) { v.prefix = "0027"; }, "27"},
      {"prefix", [](OptionsValues& v) { v.prefix = "1234567890123"; }, "123456789012"},
      {"prefix", [](OptionsValues& v) { v.prefix = "000"; }, ""},
      {"Sig", [](OptionsValues& v) { v.signature = std::string(170, 's'); }, std::string(160, 's')},
      {"sender_id", [](OptionsValues& v) { v.sender_id = std::string(30, 'i'); },
       std::string(20, 'i')},
      {"Outlook_Name", [](OptionsValues& v) { v.outlook_name = std::string(300, 'n'); },
       std::string(254, 'n')},
      {"Outlook_Password", [](OptionsValues& v) { v.outlook_password = "pw"; }, "pw"},
      {"WriteLog", [](OptionsValues& v) { v.write_log = true; }, "1"},
      {"DeliveryAcks", [](OptionsValues& v) { v.delivery_acks = true; }, "1"},
      {"IndividualSMSTracking", [](OptionsValues& v) { v.track_failed = false; }, "0"},
      {"SpanSMS", [](OptionsValues& v) { v.span_sms = true; }, "1"},
      {"StartMinimized", [](OptionsValues& v) { v.start_minimised = true; }, "1"},
      {"WorkingOnLine", [](OptionsValues& v) { v.online = false; }, "0"},
      {"ScheduleToServer", [](OptionsValues& v) { v.schedule_to_server = true; }, "1"},
      {"UploadToServerXDaysBefore", [](OptionsValues& v) { v.upload_entry = 6; }, "7"},
      {"UploadToServerXDaysBefore", [](OptionsValues& v) { v.upload_entry.reset(); }, "1"},
  };
  for (const auto& c : cases) {
    OptionsBench bench;
    bench.page.SetUp();
    c.edit(bench.view.values);
    bench.page.Apply();
    EXPECT_EQ(bench.Saved(c.key), c.saved) << c.key;
    const bool online = bench.view.values.online;
    EXPECT_EQ(bench.Posted(), std::vector{online ? kWmOnline : kWmOffline});
    for (const SettingInfo& other : AppSettings::Table()) {
      if (other.key == c.key) continue;
      EXPECT_EQ(bench.Saved(other.key), AppSettings().AsText(other)) << c.key << "/" << other.key;
    }
  }
}

TEST(OptionsPageTest, TheChoiceGoesOnlineAndOffline) {
  OptionsBench bench;
  bench.settings.SetFlag(FlagSetting::kWorkingOnLine, false);
  bench.settings.SetText(TextSetting::kLogin, "demo");
  bench.page.SetUp();
  bench.page.OnlineChosen();
  EXPECT_EQ(bench.CallCount("AuthenticateClient"), 0u) << "the choice is not set";

  bench.view.values.online = true;
  bench.view.values.prefix = "027";
  bench.page.OnlineChosen();
  EXPECT_EQ(bench.Saved("prefix"), "27") << "applied first";
  EXPECT_EQ(bench.fake.Calls("AuthenticateClient").at(0).Argument(1), "demo");
  EXPECT_EQ(bench.Posted().back(), kWmOnline);
  EXPECT_EQ(bench.view.balance, "Balance: 20.0");

  bench.page.OfflineChosen();
  EXPECT_FALSE(bench.settings.Flag(FlagSetting::kWorkingOnLine));
  EXPECT_FALSE(bench.view.values.online);
  EXPECT_EQ(bench.Posted().back(), kWmOffline);
  EXPECT_EQ(bench.view.balance, "Balance: 20.0?");

  bench.fake.On("AuthenticateClient", "", 110);
  bench.view.values.online = true;
  bench.page.OnlineChosen();
  EXPECT_FALSE(bench.settings.Flag(FlagSetting::kWorkingOnLine));
  EXPECT_FALSE(bench.view.values.online);
  EXPECT_EQ(bench.Posted().back(), kWmOffline);
  EXPECT_EQ(bench.LastBox(), "Unable to go online!");
  EXPECT_EQ(bench.boxes.shown().back().caption, "Login failed ...");
  EXPECT_EQ(bench.balances, 3);
}

TEST(OptionsPageTest, RedeemsVouchersOfFourFields) {
  for (const char* text : {"", "1", "1234"}) EXPECT_TRUE(OptionsPage::AcceptsVoucher(text));
  for (const char* text : {"a", "12345", "12-4", " "})
    EXPECT_FALSE(OptionsPage::AcceptsVoucher(text)) << text;

  OptionsBench bench;
  bench.page.SetUp();
  bench.view.voucher = {"1234", "5678", "9012", "345"};
  bench.page.RedeemVoucher();
  EXPECT_EQ(bench.CallCount("TokenPay"), 0u);
  EXPECT_EQ(bench.view.voucher[3], "345") << "kept for correcting";
  bench.view.voucher[3] = "3456";
  bench.page.RedeemVoucher();
  EXPECT_EQ(bench.fake.Calls("TokenPay").at(0).Argument(0), "1234567890123456");
  EXPECT_EQ(bench.view.voucher, VoucherTexts{});
  EXPECT_EQ(bench.view.balance, "Balance: 20.0");
  EXPECT_EQ(bench.balances, 1) << "the other pages show it too";
  bench.view.voucher = {"9", "9", "9", "9"};
  bench.page.ClearVoucher();
  EXPECT_EQ(bench.view.voucher, VoucherTexts{});
  bench.settings.SetText(TextSetting::kVoucherUrl, "https://pay.example");
  bench.page.BuyCredits();
  EXPECT_EQ(bench.shell.opened, std::vector<std::string>{"https://pay.example"});
}

TEST(ProxyFormTest, StoresAppliesAndTests) {
  using Place = ProxyForm::Place;
  enum class Act { kChoose, kApply, kTest };
  const ProxyValues stored{3, "proxy.example", "8080", "me", "pw"};
  const auto host = [&](const char* name) {
    ProxyValues values = stored;
    values.host = name;
    return values;
  };
  const auto entry = [&](std::optional<std::size_t> chosen) {
    ProxyValues values = host("other");
    values.entry = chosen;
    return values;
  };
  const struct {
    const char* what;
    Place place;
    bool online;
    Act act;
    ProxyValues values;
    const char* test;  // the component's test flag; "" when it is not called
    int type;
    const char* stored_host;
  } cases[] = {
      {"OK, nothing changed", Place::kDialog, true, Act::kApply, stored, "", 4, "proxy.example"},
      {"other letter case", Place::kDialog, true, Act::kApply, host("PROXY.example"), "", 4,
       "proxy.example"},
      {"another mode", Place::kDialog, false, Act::kChoose, entry(0), "1", 1, "other"},
      {"another host", Place::kDialog, false, Act::kApply, host("other"), "1", 4, "other"},
      {"test, unchanged", Place::kDialog, false, Act::kTest, stored, "1", 4, "proxy.example"},
      {"options, offline", Place::kOptionsPage, false, Act::kChoose, entry(1), "0", 2, "other"},
      {"options, online", Place::kOptionsPage, true, Act::kChoose, entry(1), "1", 2, "other"},
      {"options, test", Place::kOptionsPage, false, Act::kTest, stored, "1", 4, "proxy.example"},
      {"no mode", Place::kDialog, true, Act::kTest, entry(std::nullopt), "1", 4, "other"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    OptionsBench bench;
    bench.settings.SetNumber(NumberSetting::kProxyType, 4);
    bench.settings.SetText(TextSetting::kProxyHost, stored.host);
    bench.settings.SetText(TextSetting::kProxyPort, stored.port);
    bench.settings.SetText(TextSetting::kProxyUsername, stored.user);
    bench.settings.SetText(TextSetting::kProxyPassword, stored.password);
    bench.settings.SetFlag(FlagSetting::kWorkingOnLine, c.online);
    ProxyForm form({bench.settings, bench.proxy, bench.texts, bench.boxes, bench.proxy_view},
                   c.place);
    form.SetUp();
    EXPECT_EQ(bench.proxy_view.values.entry, stored.entry);
    EXPECT_EQ(bench.proxy_view.values.password, "pw");
    EXPECT_TRUE(bench.proxy_view.enabled);
    EXPECT_EQ(form.AcceptsPort("http"), c.place == Place::kOptionsPage);
    bench.proxy_view.values = c.values;
    if (c.act == Act::kChoose) form.ModeChosen();
    if (c.act == Act::kApply) form.Apply();
    if (c.act == Act::kTest) form.Test();
    const auto calls = bench.fake.Calls("ConfigureProxyEx");
    ASSERT_EQ(calls.size(), std::string(c.test).empty() ? 0u : 1u);
    if (!calls.empty()) {
      EXPECT_EQ(calls[0].Argument(0) == "0", std::string(c.test) == "0");
      EXPECT_EQ(calls[0].Argument(2), c.stored_host);
      EXPECT_EQ(bench.proxy_view.waits, "[]");
    }
    EXPECT_EQ(bench.settings.Number(NumberSetting::kProxyType), c.type);
    EXPECT_EQ(bench.settings.Text(TextSetting::kProxyHost), c.stored_host);
    EXPECT_EQ(bench.proxy_view.enabled, c.type == 4);
    EXPECT_EQ(bench.LastBox().rfind("The proxy settings are correct.", 0) == 0,
              c.act == Act::kTest);
  }
}

TEST(ProxyFormTest, DescribesTheModesAndReportsFailures) {
  OptionsBench bench;
  bench.settings.SetNumber(NumberSetting::kProxyType, 0);
  bench.form.SetUp();
  EXPECT_EQ(bench.proxy_view.values.entry, std::nullopt);
  ASSERT_EQ(bench.proxy_view.names.size(), 4u);
  EXPECT_EQ(bench.proxy_view.names[3], "Use proxy list");
  EXPECT_EQ(bench.proxy_view.description, "");
  EXPECT_TRUE(bench.fake.Calls().empty());
  bench.fake.On("ConfigureProxyEx", "", 95);
  bench.proxy_view.values.entry = 0;
  bench.form.ModeChosen();
  EXPECT_EQ(bench.proxy_view.description, "Resolves all host names locally.");
  EXPECT_EQ(bench.LastBox().rfind("Failed to communicate with the proxy server.", 0), 0u);
  bench.form.Test();
  EXPECT_EQ(bench.boxes.shown().size(), 2u) << "no success beside the failure";
}

}  // namespace
}  // namespace orvalo
