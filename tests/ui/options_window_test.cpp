#include "ui/options_window.h"

#include <gmock/gmock.h>

#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QRadioButton>
#include <QToolButton>
#include <QWheelEvent>

#include "app/data_file.h"
#include "gateway/engine_notices.h"
#include "ui/options_area.h"
#include "ui/window_fixture.h"

namespace orvalo::ui {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

class OptionsWindowTest : public test::WindowTest {
 protected:
  void OnPage(const std::function<void(OptionsArea&)>& test) {
    RunProgram([&](Program& program) {
      OptionsArea* area = nullptr;
      BalanceLines balance(program.GetAccount(), [&area] { area->Page().ShowBalance(); });
      OptionsArea made(program, kit_, browser_, main_window_, balance);
      area = &made;
      window_ = &made.Window();
      ShowActive(*window_);
      test(made);
    });
  }
  template <typename Control>
  Control& Get(const char* name) {
    return Child<Control>(*window_, name);
  }
  void Click(const char* name) { QTest::mouseClick(&Get<QAbstractButton>(name), Qt::LeftButton); }
  // A radio button takes clicks on its mark and words only, not in the room beside them.
  void Choose(const char* name) {
    QTest::mouseClick(&Get<QRadioButton>(name), Qt::LeftButton, Qt::NoModifier, QPoint(12, 12));
  }
  void Type(const char* name, const char* text) {
    auto& field = Get<QLineEdit>(name);
    field.setFocus();
    QTest::keyClicks(&field, QString::fromUtf8(text));
  }
  std::string Saved(std::string_view key) {
    AppSettings saved;
    saved.Load(DataFile(folder_.File("SMS.dat"), false), true);
    return saved.AsText(*AppSettings::Find(key));
  }
  std::string Voucher() {
    std::string number;
    for (const std::string& field : window_->Voucher()) number += field + "|";
    return number;
  }
  std::uint32_t LastPosted() { return std::get<0>(main_window_.messages().back()); }

  OptionsWindow* window_ = nullptr;
};

TEST_F(OptionsWindowTest, WhatIsEditedIsSavedWhenThePageIsApplied) {
  OnPage([&](OptionsArea& area) {
    EXPECT_FALSE(Get<QLineEdit>("optionProfile").isEnabled());
    EXPECT_FALSE(Get<QComboBox>("optionUploadDays").isEnabled());
    Type("optionPrefix", "00270000000009");
    Type("optionSignature", "Regards, your school");
    Type("optionSenderId", "012345678901234");
    for (const char* name : {"optionWriteLog", "optionDeliveryAcks", "optionSpanSms",
                             "optionTrackFailed", "optionStartMinimised"})
      Click(name);
    Choose("optionUploadToServer");
    Get<QComboBox>("optionUploadDays").setCurrentIndex(4);
    Choose("optionMapi");
    Type("optionProfile", "school");
    Type("optionProfilePassword", "pw");
    EXPECT_EQ(program_->GetSettings().Text(TextSetting::kPrefix), "") << "not applied yet";
    area.Page().Apply();

    const struct {
      const char* key;
      const char* value;
    } expected[] = {{"prefix", "2700000000"},
                    {"Sig", "Regards, your school"},
                    {"sender_id", "012345678901234"},
                    {"WriteLog", "1"},
                    {"DeliveryAcks", "1"},
                    {"SpanSMS", "1"},
                    {"IndividualSMSTracking", "0"},
                    {"StartMinimized", "1"},
                    {"ScheduleToServer", "1"},
                    {"UploadToServerXDaysBefore", "5"},
                    {"MAPI_AddressBook", "1"},
                    {"Outlook_Name", "school"},
                    {"Outlook_Password", "pw"},
                    {"WorkingOnLine", "1"}};
    for (const auto& setting : expected)
      EXPECT_EQ(Saved(setting.key), setting.value) << setting.key;
  });
}

TEST_F(OptionsWindowTest, TheChoiceFollowsWhatTheGatewaySays) {
  fake_.On("QueryBalance", "12.5");
  OnPage([&](OptionsArea&) {
    const auto& online = Get<QRadioButton>("optionOnline");
    const auto& balance = Get<QToolButton>("optionBalance");
    ASSERT_TRUE(online.isChecked());
    program_->GetNotices().GoOffline();  // as the engine does
    QCoreApplication::processEvents();
    EXPECT_TRUE(Get<QRadioButton>("optionOffline").isChecked());
    EXPECT_EQ(LastPosted(), kWmOffline);
    EXPECT_EQ(balance.text(), QStringLiteral("Balance: 0.0?"));

    fake_.On("AuthenticateClient", "", 110);
    Choose("optionOnline");
    EXPECT_FALSE(online.isChecked());
    ASSERT_EQ(boxes_.shown().size(), 1u);
    EXPECT_EQ(boxes_.shown()[0].text, "Unable to go online!\r\n\r\nUnknown username or password!");

    fake_.On("AuthenticateClient", "");
    Choose("optionOnline");
    EXPECT_TRUE(online.isChecked());
    EXPECT_EQ(LastPosted(), kWmOnline);
    EXPECT_EQ(balance.text(), QStringLiteral("Balance: 12.5"));

    Choose("optionOffline");
    EXPECT_FALSE(program_->GetSettings().Flag(FlagSetting::kWorkingOnLine));
    balance.menu()->actions().front()->trigger();
    EXPECT_EQ(LastPosted(), kWmBalance);
  });
}

TEST_F(OptionsWindowTest, AVoucherIsTypedOrPastedAndRedeemed) {
  OnPage([&](OptionsArea&) {
    auto& first = Get<QLineEdit>("voucher1");
    Type("voucher1", "12a34");
    EXPECT_EQ(QApplication::focusWidget(), &Get<QLineEdit>("voucher2")) << "full: it moves on";
    Type("voucher1", "5");
    EXPECT_EQ(Voucher(), "1234||||") << "no fifth digit";
    Click("redeemVoucher");
    EXPECT_EQ(boxes_.shown().back().caption, "Invalid voucher!");
    EXPECT_TRUE(fake_.Calls("TokenPay").empty());

    const struct {
      const char* field;
      const char* pasted;
      const char* voucher;
    } cases[] = {
        {"voucher1", "1234-5678-9012-3456", "1234|5678|9012|3456|"},
        {"voucher3", "1111222233334444", "1111|2222|3333|4444|"},  // wherever it is pasted
        {"voucher3", "98765", "||9876|5|"},
        {"voucher2", "no digits", "||||"},
        {"voucher4", "12345678901234567890", "1234|5678|9012|3456|"},
    };
    for (const auto& c : cases) {
      Click("clearVoucher");
      EXPECT_EQ(Voucher(), "||||");
      QApplication::clipboard()->setText(QString::fromLatin1(c.pasted));
      Get<QLineEdit>(c.field).paste();
      QCoreApplication::processEvents();
      EXPECT_EQ(Voucher(), c.voucher) << c.pasted;
    }
    first.setFocus();
    fake_.On("TokenPay", "", 607);
    Click("redeemVoucher");
    EXPECT_THAT(boxes_.shown().back().text, HasSubstr("already been redeemed"));
    EXPECT_EQ(Voucher(), "1234|5678|9012|3456|") << "kept";
    fake_.On("TokenPay", "");
    fake_.On("QueryBalance", "70");
    Click("redeemVoucher");
    EXPECT_EQ(fake_.Calls("TokenPay").back().Argument(0), "1234567890123456");
    EXPECT_EQ(Voucher(), "||||");
    EXPECT_EQ(Get<QToolButton>("optionBalance").text(), QStringLiteral("Balance: 70.0"));
    Click("buyCredits");
    EXPECT_EQ(browser_.opened.size(), 1u);
  });
}

TEST_F(OptionsWindowTest, TheProxyIsChosenOnThePageAndInItsDialog) {
  OnPage([&](OptionsArea& area) {
    auto& mode = Get<QComboBox>("proxyMode");
    ASSERT_EQ(mode.count(), 4);
    ASSERT_EQ(mode.currentIndex(), 0);
    fake_.ClearCalls();
    QWheelEvent wheel({5, 5}, mode.mapToGlobal(QPointF(5, 5)), {}, {0, -120}, Qt::NoButton,
                      Qt::NoModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(&mode, &wheel);
    EXPECT_TRUE(fake_.Calls("ConfigureProxyEx").empty()) << "the wheel chooses nothing";
    mode.setFocus();
    QTest::keyClick(&mode, Qt::Key_End);
    EXPECT_EQ(program_->GetSettings().Number(NumberSetting::kProxyType), 4);
    EXPECT_EQ(fake_.Calls("ConfigureProxyEx").size(), 1u);
    EXPECT_TRUE(Get<QLineEdit>("proxyHost").isEnabled());

    InNextDialog([this](QDialog& dialog) {
      EXPECT_EQ(dialog.objectName(), QStringLiteral("proxyDialog"));
      QTest::keyClicks(&Child<QLineEdit>(dialog, "proxyHost"), QStringLiteral("proxy.example"));
      QTest::keyClicks(&Child<QLineEdit>(dialog, "proxyPort"), QStringLiteral("80a80"));
      EXPECT_THAT(Child<QLabel>(dialog, "proxyDescription").text().toStdString(),
                  StartsWith("Passes requests to the entered proxy server."));
      QTest::mouseClick(&Child<QPushButton>(dialog, "proxyTest"), Qt::LeftButton);
      EXPECT_EQ(boxes_.shown().back().caption, "Proxy configuration ...");
      QTest::mouseClick(&Child<QPushButton>(dialog, "proxyOk"), Qt::LeftButton);
    });
    area.OpenProxySettings(window_);
    const auto calls = fake_.Calls("ConfigureProxyEx");
    ASSERT_EQ(calls.size(), 2u) << "OK has nothing left to apply";
    EXPECT_EQ(calls[1].Argument(2) + ":" + calls[1].Argument(3), "proxy.example:8080");
    EXPECT_EQ(Get<QLineEdit>("proxyHost").text(), QStringLiteral("proxy.example"));
    area.Page().Apply();
    EXPECT_EQ(Saved("ProxyHost"), "proxy.example");
    EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr);
  });
}

}  // namespace
}  // namespace orvalo::ui
