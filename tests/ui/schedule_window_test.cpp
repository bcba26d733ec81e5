#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QStackedWidget>
#include <QTimer>

#include "ui/compose_fixture.h"

namespace orvalo::test {
namespace {

class ScheduleWindowTest : public ComposeWindowTest {
 protected:
  // Presses "Schedule ..." and runs `operate` on the dialog that opens.
  void Schedule(const std::function<void(QDialog&)>& operate) {
    bool opened = false;
    QTimer::singleShot(0, [&] {
      auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
      ASSERT_NE(dialog, nullptr);
      opened = dialog->objectName() == u"scheduleDialog";
      operate(*dialog);
      if (dialog->isVisible()) dialog->reject();
    });
    Get<QPushButton>("scheduleButton").click();
    EXPECT_TRUE(opened);
  }
  template <typename Control>
  static Control& In(QDialog& dialog, const char* name) {
    return ui::Child<Control>(dialog, name);
  }
  static void Choose(QDialog& dialog, const char* list, const char* item) {
    In<QComboBox>(dialog, list).setCurrentText(QString::fromLatin1(item));
  }
  static void Click(QDialog& dialog, const char* button) {
    auto& control = In<QAbstractButton>(dialog, button);
    QTest::mouseClick(&control, Qt::LeftButton, {}, QPoint(12, control.height() / 2));
  }
  void WriteMessage() {
    Get<QPlainTextEdit>("messageText").setPlainText(QStringLiteral("later"));
    area_->Recipients().EndNumberEdit(0, "111");
  }
};

TEST_F(ScheduleWindowTest, ChoicesBecomeRowsAndComeBackNextTime) {
  OnPage([&] {
    WriteMessage();
    Schedule([](QDialog& dialog) {
      EXPECT_FALSE(In<QCheckBox>(dialog, "uploadToServer").isEnabled() ||
                   In<QComboBox>(dialog, "uploadDays").isEnabled());
      Choose(dialog, "scheduleDay", "31");
      Choose(dialog, "scheduleMonth", "February");
      auto& days = In<QComboBox>(dialog, "scheduleDay");
      EXPECT_EQ(days.currentText() + QString::number(days.count()), QStringLiteral("2829"));
      Click(dialog, "scheduleCancel");
    });
    EXPECT_EQ(Rows(), "");
    EXPECT_EQ(Get<QPlainTextEdit>("messageText").toPlainText(), QStringLiteral("later"));

    Schedule([](QDialog& dialog) {
      EXPECT_EQ(In<QComboBox>(dialog, "scheduleMonth").currentIndex(), 0);  // it was cancelled
      auto& pages = In<QStackedWidget>(dialog, "recurrencePages");
      Click(dialog, "recurWeekly");
      EXPECT_EQ(pages.currentWidget()->objectName(), QStringLiteral("weeklyPage"));
      EXPECT_TRUE(In<QWidget>(dialog, "endAfterRow").isVisible());
      Choose(dialog, "endAfter", "3");
      Click(dialog, "scheduleOk");
      EXPECT_TRUE(dialog.isVisible());  // no weekday is ticked
      Click(dialog, "weeklyTuesday");
      Click(dialog, "scheduleOk");
      EXPECT_FALSE(dialog.isVisible());
    });
    EXPECT_EQ(Rows(), "4 0 ,111 later\n4 0 ,111 later\n4 0 ,111 later\n");
    const auto rows = Store().AllSms();
    ASSERT_EQ(rows.size(), 3u);
    EXPECT_EQ(rows[1].time - rows[0].time, 7 * 86400);
    EXPECT_EQ(clock_.ToLocal(rows[2].time).weekday, 2);

    WriteMessage();
    program_->GetSettings().SetFlag(FlagSetting::kScheduleToServer, true);
    Schedule([](QDialog& dialog) {
      EXPECT_TRUE(In<QRadioButton>(dialog, "recurWeekly").isChecked() &&
                  In<QCheckBox>(dialog, "weeklyTuesday").isChecked());
      EXPECT_EQ(In<QComboBox>(dialog, "endAfter").currentText(), QStringLiteral("3"));
      EXPECT_TRUE(In<QCheckBox>(dialog, "uploadToServer").isChecked());
      Click(dialog, "recurMonthly");
      Choose(dialog, "monthlyOrdinal", "2nd");  // chooses its form too
      Choose(dialog, "monthlyWeekday", "Friday");
      EXPECT_TRUE(In<QRadioButton>(dialog, "monthlyThe").isChecked());
      Choose(dialog, "endAfter", "1");
      Choose(dialog, "uploadDays", "2");
      Click(dialog, "scheduleOk");
    });
    const auto last = Store().AllSms().back();
    EXPECT_EQ(last.stat, static_cast<std::int32_t>(SmsStatus::kDelayScheduled));
    EXPECT_EQ(last.delay, 2 * 86400);
    const auto day = clock_.ToLocal(last.time);
    EXPECT_TRUE(day.weekday == 5 && day.day >= 8 && day.day <= 14);
  });
}

}  // namespace
}  // namespace orvalo::test
