#include "shell/login_page.h"

#include <gtest/gtest.h>

#include <functional>

#include "shell/shell_bench.h"

namespace orvalo {
namespace {

class FakeRecovery : public RecoveryView {
 public:
  void EnableOk(bool enabled) override { ok = enabled; }
  void FocusEmail() override {}
  void FocusOk() override {}
  void Close() override { closed = true; }
  bool ok = true, closed = false;
};

class FakeLogin : public LoginView {
 public:
  void ShowValues(const LoginValues& values) override { shown = values; }
  void ShowTicks(bool remember, bool offline) override {
    shown.remember = remember;
    shown.offline = offline;
  }
  void EnableOk(bool enabled) override { ok = enabled; }
  void FocusPassword() override { ++focused; }
  void ShowMessage(const std::string& text) override { message = text; }
  void OpenRecovery(RecoveryDialog& dialog) override {
    FakeRecovery window;
    dialog.SetView(&window);
    operator_does(dialog, window);
  }
  LoginValues shown;
  bool ok = true;
  int focused = 0;
  std::string message;
  std::function<void(RecoveryDialog&, FakeRecovery&)> operator_does;
};

struct LoginBench : test::ShellBench {
  FakeLogin view;
  int logins = 0;
  LoginPage page{{settings, data_file, texts, *account, shell, boxes, view, [this] { ++logins; }}};

  LoginBench() {
    settings.SetText(TextSetting::kLogin, "demo");
    settings.SetText(TextSetting::kPassword, "secret");
    fake.On("QueryBalance", "12.5");
  }
};

TEST(LoginPageTest, OpensWithWhatIsRemembered) {
  const struct {
    bool remember, online;
    const char* user;
    const char* password;
    bool offline_shown, ok;
  } cases[] = {
      {true, true, "demo", "secret", false, true},    {true, false, "demo", "secret", true, true},
      {true, false, "demo", "", false, false},        {true, false, "", "secret", false, false},
      {false, false, "demo", "secret", false, false},
  };
  for (const auto& c : cases) {
    LoginBench bench;
    bench.settings.SetText(TextSetting::kLogin, c.user);
    bench.settings.SetText(TextSetting::kPassword, c.password);
    bench.settings.SetFlag(FlagSetting::kRememberPassword, c.remember);
    bench.settings.SetFlag(FlagSetting::kWorkingOnLine, c.online);
    bench.page.SetUp();
    EXPECT_EQ(bench.view.shown.user, c.remember ? c.user : "");
    EXPECT_EQ(bench.view.shown.remember, c.remember);
    EXPECT_EQ(bench.view.shown.offline, c.offline_shown);
    EXPECT_EQ(bench.view.ok, c.ok);
  }
}

TEST(LoginPageTest, EnablesOkAndAnswersEnter) {
  const struct {
    const char* user;
    const char* password;
    bool ok;
    int focused;  // the password field, after Enter in the user name
    int logins;   // after Enter in the password
  } cases[] = {
      {"", "", false, 0, 0},   {"u", "", false, 1, 0},  {"u", "  ", false, 1, 1},
      {" ", "p", false, 1, 1}, {"u", " p", true, 1, 1},
  };
  for (const auto& c : cases) {
    LoginBench bench;
    bench.page.SetUp();
    bench.page.UserTyped(c.user);
    bench.page.PasswordTyped(c.password);
    EXPECT_EQ(bench.view.ok, c.ok) << c.user << "/" << c.password;
    bench.page.EnterInUser();
    EXPECT_EQ(bench.view.focused, c.focused);
    bench.page.EnterInPassword();
    EXPECT_EQ(bench.logins, c.logins);
  }
  LoginBench bench;
  bench.page.UserTyped(std::string(200, 'u'));
  bench.page.PasswordTyped("p");
  bench.page.Ok();
  EXPECT_EQ(bench.settings.Text(TextSetting::kLogin), std::string(126, 'u'));
}

TEST(LoginPageTest, OkLogsInOnlineOrComparesOffline) {
  const struct {
    bool offline;
    const char* password;
    int error;
    bool in;
    std::size_t calls;
    const char* message = "Unknown username or password!";
  } cases[] = {
      {false, "new", 0, true, 1},
      {false, "new", 110, false, 1},
      {false, "new", 113, false, 1, "Too many requests (gateway code 113)"},
      {true, "secret", 0, true, 0},
      {true, "Secret", 0, false, 0},
  };
  for (const auto& c : cases) {
    LoginBench bench;
    bench.fake.On("AuthenticateClient", [&](const test::FakeGateway::Call&) {
      EXPECT_FALSE(bench.settings.Flag(FlagSetting::kWorkingOnLine)) << "not yet";
      return test::FakeGateway::Answer{"ERR: 113, Too many requests", c.error};
    });
    bench.page.SetUp();
    bench.page.UserTyped("demo");
    bench.page.PasswordTyped(c.password);
    bench.page.ToggleRemember();
    if (c.offline) bench.page.ToggleOffline();
    bench.page.Ok();
    EXPECT_EQ(bench.logins, c.in ? 1 : 0) << c.password;
    EXPECT_EQ(bench.fake.Calls("AuthenticateClient").size(), c.calls);
    EXPECT_EQ(bench.view.message, c.in ? "" : c.message);
    EXPECT_EQ(bench.settings.Flag(FlagSetting::kWorkingOnLine), c.in && !c.offline);
    EXPECT_EQ(bench.Saved("Password"), c.in ? c.password : "");
    EXPECT_EQ(bench.Saved("RememberPassword"), c.in ? "1" : "0");
    EXPECT_EQ(bench.settings.Number(NumberSetting::kLastBalance), c.in && !c.offline ? 125 : 0);
  }
}

TEST(LoginPageTest, ALoginThatCannotBeSavedIsToldAndCounts) {
  LoginBench bench;
  bench.PutInTheWayOfSettings();
  bench.page.UserTyped("demo");
  bench.page.PasswordTyped("new");
  bench.page.Ok();
  EXPECT_EQ(bench.logins, 1);
  EXPECT_EQ(bench.settings.Text(TextSetting::kPassword), "new");
  ASSERT_EQ(bench.boxes.shown().size(), 1u);
  EXPECT_TRUE(bench.boxes.shown()[0].text.starts_with("The settings could not be saved in "));
  EXPECT_NE(bench.boxes.shown()[0].text.find("\n\nThe system says: "), std::string::npos);
}

TEST(LoginPageTest, ForgottenPasswordsAreSentOrExplained) {
  const struct {
    const char* email;
    int error;
    const char* message;
    std::size_t calls;
    const char* why = "";
  } cases[] = {
      {"  ", 0, "", 0},
      {"a@b", 0, "Your password has been sent", 1},
      {"a@b", 99, "Failed to notify", 1, "cannot be reached."},
  };
  for (const auto& c : cases) {
    LoginBench bench;
    bench.settings.SetText(TextSetting::kClientId, "Orvalo");
    bench.fake.On("RecoverPassword", "", c.error);
    bench.view.operator_does = [&](RecoveryDialog& dialog, FakeRecovery& window) {
      EXPECT_FALSE(window.ok);
      dialog.UserTyped(std::string(40, 'u'));
      dialog.EmailTyped(c.email);
      dialog.Ok();
      EXPECT_EQ(window.ok, c.calls == 1);
      EXPECT_EQ(window.closed, c.calls == 1);
    };
    bench.page.ForgotPassword();
    EXPECT_EQ(bench.view.message.substr(0, std::string(c.message).size()), c.message);
    EXPECT_EQ(bench.view.message.empty(), c.calls == 0);
    EXPECT_TRUE(bench.view.message.ends_with(c.why)) << bench.view.message;
    const auto calls = bench.fake.Calls("RecoverPassword");
    ASSERT_EQ(calls.size(), c.calls);
    for (const auto& call : calls) EXPECT_EQ(call.Argument(0), std::string(31, 'u'));
  }
  LoginBench elsewhere;
  elsewhere.settings.SetText(TextSetting::kHelpUrl, "https://help.example");
  elsewhere.page.ForgotPassword();
  EXPECT_EQ(elsewhere.shell.opened, std::vector<std::string>{"https://help.example"});
}

}  // namespace
}  // namespace orvalo
