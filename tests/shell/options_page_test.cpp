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
  void ShowBalance(const std::string& line, const std::string& why) override {
    balance = line;
    hint = why;
  }
  std::vector<std::string> days;
  OptionsValues values;
  bool profile = true, upload = true;
  VoucherTexts voucher;
  std::string balance, hint;
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
  OptionsPage page{
      {settings, data_file, window, *account, shell, mode, lines, form, texts, boxes, view}};

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
  EXPECT_FALSE(bench.view.values.write_log || bench.view.upload);
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
      {"prefix", [](OptionsValues& v) { v.prefix = "000"; }, ""},
      // Longer than can be typed: from elsewhere, and kept.
      {"prefix", [](OptionsValues& v) { v.prefix = "1234567890123"; }, "1234567890123"},
      {"Sig", [](OptionsValues& v) { v.signature = std::string(170, 's'); }, std::string(170, 's')},
      {"sender_id", [](OptionsValues& v) { v.sender_id = "Shop"; }, "Shop"},
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
  EXPECT_TRUE(bench.fake.Calls("AuthenticateClient").empty()) << "the choice is not set";

  bool online_too_early = false;  // the engine would send, and the gateway refuse it all
  bench.fake.On("AuthenticateClient", [&](const test::FakeGateway::Call&) {
    online_too_early = bench.settings.Flag(FlagSetting::kWorkingOnLine);
    return test::FakeGateway::Answer{};
  });
  bench.view.values.online = true;
  bench.view.values.prefix = "027";
  bench.proxy_view.values.entry = 1;
  bench.page.OnlineChosen();
  EXPECT_EQ(bench.Saved("prefix") + bench.Saved("ProxyType"), "272") << "applied first";
  EXPECT_EQ(bench.fake.Calls("ConfigureProxyEx").at(0).Argument(0), "0") << "the login tests it";
  EXPECT_EQ(bench.fake.Calls("AuthenticateClient").at(0).Argument(1), "demo");
  EXPECT_FALSE(online_too_early);
  EXPECT_EQ(bench.Saved("WorkingOnLine"), "1");
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
  EXPECT_EQ(bench.LastBox(), "Unable to go online!\r\n\r\nUnknown username or password!");
  EXPECT_EQ(bench.boxes.shown().back().caption, "Login failed ...");
  EXPECT_EQ(bench.balances, 3);
}

TEST(OptionsPageTest, OptionsThatCannotBeSavedAreToldOnceAndCount) {
  OptionsBench bench;
  bench.page.SetUp();
  bench.PutInTheWayOfSettings();
  bench.view.values.prefix = "27";
  bench.page.Apply();
  EXPECT_EQ(bench.settings.Text(TextSetting::kPrefix), "27");
  EXPECT_TRUE(bench.LastBox().starts_with("The settings could not be saved in "));
  bench.view.values.online = true;
  bench.page.OnlineChosen();
  EXPECT_EQ(bench.boxes.shown().size(), 2u) << "one for each time that they were to be saved";
}

TEST(OptionsPageTest, RefusesASenderOrAPrefixOfNoUse) {
  OptionsBench bench;
  bench.settings.SetText(TextSetting::kSenderId, "Kept");
  bench.page.SetUp();
  for (const char* bad : {"Twelve signs", "Caf\u00e9", " Bank", "+1234567890123456", "+"}) {
    bench.view.values.sender_id = bad;
    bench.page.Apply();
    EXPECT_EQ(bench.Saved("sender_id"), "Kept") << bad;
    EXPECT_EQ(bench.view.values.sender_id, bad) << "left to be mended";
    EXPECT_NE(bench.LastBox().find(bad), std::string::npos);
  }
  bench.view.values.sender_id = "Kept";
  bench.settings.SetText(TextSetting::kPrefix, "44");
  for (const char* bad : {"27x", "+27", "2 7"}) {
    bench.view.values.prefix = std::string("00") + bad;
    bench.page.Apply();
    EXPECT_EQ(bench.Saved("prefix"), "44") << bad;
    EXPECT_NE(bench.LastBox().find(bad), std::string::npos);
  }
  bench.view.values.prefix = "";
  const auto boxes = bench.boxes.shown().size();
  for (const char* good : {"Bank & Co", "+27821110001", "123456789012345", ""}) {
    bench.view.values.sender_id = good;
    bench.page.Apply();
    EXPECT_EQ(bench.Saved("sender_id"), good);
  }
  EXPECT_EQ(bench.boxes.shown().size(), boxes);
}

TEST(OptionsPageTest, TheBalanceSaysWhenItIsNotTheAccountsOwnWord) {
  OptionsBench bench;
  bench.settings.SetFlag(FlagSetting::kWorkingOnLine, true);
  bench.fake.On("QueryBalance", "ERR: 500, Out of order", 500);
  bench.lines.Refresh();
  EXPECT_EQ(bench.view.balance, "Balance: 0.0?");
  EXPECT_NE(bench.view.hint.find("Out of order"), std::string::npos);
  bench.fake.On("QueryBalance", "20");
  bench.lines.Refresh();
  EXPECT_EQ(bench.view.balance + bench.view.hint, "Balance: 20.0");
}

TEST(OptionsPageTest, ApplyingKeepsWhatTheProxyDialogStored) {
  OptionsBench bench;
  bench.page.SetUp();
  bench.settings.SetNumber(NumberSetting::kProxyType, 3);
  bench.page.ProxyDialogClosed();
  bench.page.Apply();
  EXPECT_EQ(bench.Saved("ProxyType"), "3");
  bench.proxy_view.values.host = "edited";
  bench.page.ProxyDialogClosed();  // nothing was stored there
  EXPECT_EQ(bench.proxy_view.values.host, "edited");
  EXPECT_TRUE(bench.fake.Calls("ConfigureProxyEx").empty());
}

TEST(OptionsPageTest, RedeemsVouchersOfFourFields) {
  for (const char* text : {"", "1", "1234"}) EXPECT_TRUE(OptionsPage::AcceptsVoucher(text));
  for (const char* text : {"a", "12345", "12-4", " "})
    EXPECT_FALSE(OptionsPage::AcceptsVoucher(text)) << text;

  OptionsBench bench;
  bench.page.SetUp();
  bench.view.voucher = {"1234", "5678", "9012", "345"};
  bench.page.RedeemVoucher();
  EXPECT_TRUE(bench.fake.Calls("TokenPay").empty());
  EXPECT_EQ(bench.view.voucher[3], "345") << "kept for correcting";
  bench.view.voucher[3] = "3456";
  bench.page.RedeemVoucher();
  EXPECT_EQ(bench.fake.Calls("TokenPay").at(0).Argument(0), "1234567890123456");
  EXPECT_EQ(bench.view.voucher, VoucherTexts{});
  EXPECT_EQ(bench.view.balance, "Balance: 20.0");
  EXPECT_EQ(bench.balances, 1) << "the other pages show it too";
  bench.settings.SetText(TextSetting::kVoucherUrl, "https://pay.example");
  bench.page.BuyCredits();
  EXPECT_EQ(bench.shell.opened, std::vector<std::string>{"https://pay.example"});
}

constexpr auto kDialog = ProxyForm::Place::kDialog;
constexpr auto kOptions = ProxyForm::Place::kOptionsPage;

TEST(ProxyFormTest, StoresAppliesAndTests) {
  const std::optional<std::size_t> none;
  const struct {
    const char* what;
    ProxyForm::Place place;
    bool online;
    int stored_mode;
    std::optional<std::size_t> entry;
    const char* host;
    bool test;
    std::string flag;  // that the component gets; "" when it is not called
    int mode;          // stored afterwards
  } cases[] = {
      {"OK, nothing changed", kDialog, true, 4, 3, "proxy", false, "", 4},
      {"other letter case", kDialog, true, 4, 3, "PROXY", false, "", 4},
      {"another mode", kDialog, false, 4, 0, "other", false, "1", 1},
      {"another host", kDialog, false, 4, 3, "other", false, "1", 4},
      {"a host without use", kDialog, false, 2, 1, "other", false, "", 2},
      {"test, unchanged", kDialog, false, 4, 3, "proxy", true, "1", 4},
      {"options, offline", kOptions, false, 4, 1, "other", false, "0", 2},
      {"options, online", kOptions, true, 4, 1, "other", false, "1", 2},
      {"options, test", kOptions, false, 4, 3, "proxy", true, "1", 4},
      {"no mode", kDialog, true, 0, none, "other", true, "1", 0},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    OptionsBench bench;
    bench.settings.SetNumber(NumberSetting::kProxyType, c.stored_mode);
    bench.settings.SetText(TextSetting::kProxyHost, "proxy");
    bench.settings.SetText(TextSetting::kProxyPassword, "pw");
    bench.settings.SetFlag(FlagSetting::kWorkingOnLine, c.online);
    ProxyForm form({bench.settings, bench.proxy, bench.texts, bench.boxes, bench.proxy_view},
                   c.place);
    form.SetUp();
    ProxyValues& shown = bench.proxy_view.values;
    EXPECT_EQ(shown.entry ? *shown.entry + 1 : 0, static_cast<std::size_t>(c.stored_mode));
    EXPECT_EQ(shown.password, "pw");
    shown.entry = c.entry;
    shown.host = c.host;
    c.test ? form.Test() : form.ModeChosen();
    const auto calls = bench.fake.Calls("ConfigureProxyEx");
    ASSERT_EQ(calls.size(), c.flag.empty() ? 0u : 1u);
    if (!calls.empty()) {
      EXPECT_EQ(calls[0].Argument(0) == "0", c.flag == "0");
      EXPECT_EQ(calls[0].Argument(2), c.host);
    }
    EXPECT_EQ(bench.proxy_view.waits, c.flag.empty() ? "" : "[]");
    EXPECT_EQ(bench.settings.Number(NumberSetting::kProxyType), c.mode);
    EXPECT_EQ(bench.settings.Text(TextSetting::kProxyHost), c.flag.empty() ? "proxy" : c.host);
    EXPECT_EQ(bench.proxy_view.enabled, c.mode == 4);
    EXPECT_EQ(bench.LastBox().rfind("The proxy settings are correct.", 0) == 0, c.test);
  }
}

TEST(ProxyFormTest, DescribesTheModesAndReportsFailures) {
  for (const char* port : {"", "1", "8080", "65535"}) EXPECT_TRUE(ProxyForm::AcceptsPort(port));
  for (const char* port : {"0", "65536", "9x", "-1", "http", "4294967297"})
    EXPECT_FALSE(ProxyForm::AcceptsPort(port)) << port;
  OptionsBench bench;
  bench.form.SetUp();
  EXPECT_EQ(bench.proxy_view.names.at(3), "Use proxy list");
  EXPECT_EQ(bench.proxy_view.description, "Resolves all host names locally.");
  bench.fake.On("ConfigureProxyEx", "", 95);
  bench.form.Test();
  ASSERT_EQ(bench.boxes.shown().size(), 1u) << "no success beside the failure";
  EXPECT_EQ(bench.LastBox().rfind("Failed to communicate with the proxy server.", 0), 0u);
}

}  // namespace
}  // namespace orvalo
