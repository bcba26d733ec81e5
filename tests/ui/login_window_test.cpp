#include "ui/login_window.h"

#include <gmock/gmock.h>

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include "ui/login_area.h"
#include "ui/window_fixture.h"

namespace orvalo::ui {
namespace {

using ::testing::StartsWith;

class LoginWindowTest : public test::WindowTest {
 protected:
  // Runs `test` with the page shown, as a start of the program would find it.
  void OnPage(const std::function<void(LoginWindow&)>& test) {
    RunProgram([&](Program& program) {
      LoginArea area(program, kit_, browser_, [this] { ++logins_; });
      ShowActive(area.Window());
      test(area.Window());
    });
  }
  std::string Message(const LoginWindow& window) {
    const auto& line = Child<QLabel>(window, "loginMessage");
    return line.isVisible() ? line.text().toStdString() : "";
  }
  static QWidget* Focus() { return QApplication::focusWidget(); }

  int logins_ = 0;
};

TEST_F(LoginWindowTest, TheKeyboardAloneLogsInAndTheNextStartRemembers) {
  fake_.On("AuthenticateClient", [](const test::FakeGateway::Call& call) {
    return test::FakeGateway::Answer{"", call.Argument(2) == "secret" ? 0 : 110};
  });
  OnPage([&](LoginWindow& window) {
    auto& user = Child<QLineEdit>(window, "loginUser");
    auto& password = Child<QLineEdit>(window, "loginPassword");
    const auto& ok = Child<QPushButton>(window, "loginOk");
    EXPECT_EQ(Child<QLabel>(window, "productName").text(), QStringLiteral("SMS"));
    ASSERT_EQ(Focus(), &user);
    QTest::keyClick(&user, Qt::Key_Return);
    EXPECT_EQ(Focus(), &user) << "empty";
    QTest::keyClicks(&user, QStringLiteral("demo"));
    QTest::keyClick(&user, Qt::Key_Return);
    ASSERT_EQ(Focus(), &password);
    EXPECT_FALSE(ok.isEnabled());
    QTest::keyClicks(&password, QStringLiteral("secre"));
    EXPECT_TRUE(ok.isEnabled());
    QTest::keyClick(&password, Qt::Key_Return);
    EXPECT_EQ(logins_, 0);
    EXPECT_EQ(Message(window), "Unknown username or password!");

    QTest::keyClicks(&password, QStringLiteral("t"));
    QTest::keyClick(&password, Qt::Key_Tab);
    QTest::keyClick(Focus(), Qt::Key_Space);  // "Remember Password:"
    QTest::keyClick(Focus(), Qt::Key_Tab);
    QTest::keyClick(Focus(), Qt::Key_Tab);
    EXPECT_EQ(Focus(), &ok);
    QTest::keyClick(Focus(), Qt::Key_Space);
    EXPECT_EQ(logins_, 1);
    EXPECT_EQ(Message(window), "");
  });
  OnPage([&](LoginWindow& window) {
    EXPECT_EQ(Child<QLineEdit>(window, "loginUser").text(), QStringLiteral("demo"));
    EXPECT_TRUE(Child<QCheckBox>(window, "rememberPassword").isChecked());
    auto& offline = Child<QCheckBox>(window, "workOffline");
    QTest::mouseClick(&offline, Qt::LeftButton, Qt::NoModifier, QPoint(4, 12));  // on the words
    EXPECT_TRUE(offline.isChecked());
    fake_.ClearCalls();
    QTest::mouseClick(&Child<QPushButton>(window, "loginOk"), Qt::LeftButton);
    EXPECT_EQ(logins_, 2);
    EXPECT_TRUE(fake_.Calls("AuthenticateClient").empty());
    EXPECT_FALSE(program_->GetSettings().Flag(FlagSetting::kWorkingOnLine));
  });
  OnPage([&](LoginWindow& window) {
    EXPECT_TRUE(Child<QCheckBox>(window, "workOffline").isChecked());
  });
}

TEST_F(LoginWindowTest, AForgottenPasswordIsAskedForByKeyboard) {
  OnPage([&](LoginWindow& window) {
    program_->GetSettings().SetText(TextSetting::kClientId, "Orvalo");
    InNextDialog([](QDialog& dialog) {
      ASSERT_EQ(Focus(), &Child<QLineEdit>(dialog, "recoveryUser"));
      QTest::keyClicks(Focus(), QString(40, u'u'));
      QTest::keyClick(Focus(), Qt::Key_Return);
      ASSERT_EQ(Focus(), &Child<QLineEdit>(dialog, "recoveryEmail"));
      EXPECT_FALSE(Child<QPushButton>(dialog, "recoveryOk").isEnabled());
      QTest::keyClicks(Focus(), QStringLiteral("a@b.example"));
      QTest::keyClick(Focus(), Qt::Key_Return);
      ASSERT_EQ(Focus(), &Child<QPushButton>(dialog, "recoveryOk"));
      EXPECT_TRUE(dialog.isVisible()) << "Enter in a field only moves on";
      QTest::keyClick(Focus(), Qt::Key_Return);
    });
    QTest::mouseClick(&Child<QPushButton>(window, "forgotPassword"), Qt::LeftButton);
    const auto calls = fake_.Calls("RecoverPassword");
    ASSERT_EQ(calls.size(), 1u);
    EXPECT_EQ(calls[0].Argument(0), std::string(31, 'u'));
    EXPECT_EQ(calls[0].Argument(1), "a@b.example");
    EXPECT_THAT(Message(window), StartsWith("Your password has been sent"));
  });
}

}  // namespace
}  // namespace orvalo::ui
