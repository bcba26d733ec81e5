#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QRadioButton>
#include <QTableView>
#include <QTableWidget>
#include <QTest>
#include <QTimer>
#include <functional>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "app/startup/program.h"
#include "support/fake_clock.h"
#include "support/fake_component.h"
#include "support/recording_mailbox.h"
#include "support/scripted_message_boxes.h"
#include "support/temporary_folder.h"
#include "ui/form_loader.h"
#include "ui/images.h"
#include "ui/outbox_area.h"
#include "ui/scripted_file_dialogs.h"
#include "ui/shutdown_window.h"
#include "ui/system_desktop.h"
#include "ui/version_dialog.h"

namespace orvalo::ui {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

constexpr auto kPending = SmsStatus::kPending;

// The outbox of a running program, in a window of its own.
class OutboxWindowTest : public ::testing::Test {
 protected:
  OutboxWindowTest() { fake_.Register(registry_); }

  // One message for each status, a second apart, then the outbox is shown and the test runs.
  void With(const std::vector<SmsStatus>& statuses, const std::function<void()>& test) {
    Program::Options options;
    options.data_folder = folder_.path();
    options.enter_data_folder = false;
    Program(boxes_, clock_, registry_).Run(options, [&](Program& program) {
      program_ = &program;
      program.GetSettings().SetFlag(FlagSetting::kWorkingOnLine, true);
      for (const SmsStatus status : statuses) Add(status, "0821234");
      const Kit kit{forms_, images_, program.GetTexts(), files_};
      OutboxArea area(
          program, kit, clipboard_, main_window_,
          [this](const std::string& text) { caption_ = text; }, [] { return true; });
      area_ = &area;
      window_ = &area.Window();
      list_ = &Child<QTableView>(*window_, "outboxList");
      window_->resize(904, 510);
      window_->show();
      QApplication::setActiveWindow(window_);
      EXPECT_TRUE(QTest::qWaitForWindowActive(window_));
      list_->setFocus();
      test();
      return 0;
    });
  }
  std::int32_t Add(SmsStatus status, const std::string& to) {
    NewSms sms;
    sms.time = ++time_;
    sms.to = "," + to;
    sms.msg = "Hello";
    sms.status = status;
    return program_->GetDatabase().AddSms(sms);
  }

  QPoint CellAt(int row) const { return list_->visualRect(list_->model()->index(row, 1)).center(); }
  void Click(int row, Qt::KeyboardModifiers keys = {}) {
    QTest::mouseClick(list_->viewport(), Qt::LeftButton, keys, CellAt(row));
  }
  void RightClick(const QPoint& at) {
    QTest::mouseClick(list_->viewport(), Qt::RightButton, {}, at);
    QContextMenuEvent event(QContextMenuEvent::Mouse, at, list_->viewport()->mapToGlobal(at));
    QApplication::sendEvent(list_->viewport(), &event);
  }
  void MenuKey() {
    QContextMenuEvent event(QContextMenuEvent::Keyboard, QPoint(), QPoint());
    QApplication::sendEvent(list_, &event);
  }
  QMenu& Menu() const { return Child<QMenu>(*window_, "menu213"); }
  // The entries that can be chosen, of the open menu ("closed" when it is not).
  std::string Offered() {
    if (!Menu().isVisible()) return "closed";
    std::string offered;
    for (const QAction* action : Menu().actions()) {
      if (action->isSeparator()) continue;
      offered += action->isEnabled() ? action->text().remove(u'&').left(3).toStdString() : "-";
    }
    Menu().hide();
    return offered;
  }
  void Choose(const char* entry) {
    for (QAction* action : Menu().actions()) {
      if (action->text().remove(u'&').startsWith(QLatin1String(entry))) action->trigger();
    }
    Menu().hide();
  }
  QString Text(int row, OutboxColumn column) const {
    return list_->model()->index(row, static_cast<int>(column)).data().toString();
  }
  // Recipients in the order shown; a selected line's in brackets.
  std::string Lines() const {
    std::string lines;
    for (int row = 0; row < list_->model()->rowCount(); ++row) {
      const std::string who = Text(row, OutboxColumn::kRecipient).toStdString();
      const bool shown = list_->selectionModel()->isRowSelected(row);
      EXPECT_EQ(area_->Page().IsSelected(static_cast<std::size_t>(row)), shown) << row;
      lines += shown ? "[" + who + "]" : who;
      lines += ' ';
    }
    return lines;
  }
  void Press(const char* button) {
    QTest::mouseClick(&Child<QPushButton>(*window_, button), Qt::LeftButton);
  }
  // Handles the dialog that the next press opens.
  static void WhenDialogOpens(const std::function<void(QWidget&)>& handle) {
    QTimer::singleShot(0, qApp, [handle] {
      QWidget* dialog = QApplication::activeModalWidget();
      ASSERT_NE(dialog, nullptr);
      handle(*dialog);
    });
  }

  test::TemporaryFolder folder_;
  test::FakeClock clock_;
  test::ScriptedMessageBoxes boxes_;
  test::FakeGateway fake_;
  platform::ClassRegistry registry_;
  FormLoader forms_{platform::ResourceContainer::BuiltIn()};
  Images images_{platform::ResourceContainer::BuiltIn()};
  test::ScriptedFileDialogs files_;
  SystemClipboard clipboard_;
  test::RecordingMailbox main_window_;
  Program* program_ = nullptr;
  OutboxArea* area_ = nullptr;
  OutboxWindowPage* window_ = nullptr;
  QTableView* list_ = nullptr;
  std::string caption_;
  std::int32_t time_ = 1'104'537'600;
};

TEST_F(OutboxWindowTest, OnlyTheLinesOnShowAreRead) {
  const Texts texts;
  const Kit kit{forms_, images_, texts, files_};
  OutboxModel model(kit);
  std::set<std::size_t> read;
  model.SetSource([&](std::size_t position) {
    read.insert(position);
    return OutboxLine{{"?", "0821234", "Sent", "?", std::string(100'000, 'A')}, 3};
  });
  QTableView list;
  list.verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
  list.setModel(&model);
  list.resize(600, 400);
  model.SetRowCount(1'000'000);
  list.show();
  list.selectAll();
  list.grab();
  list.scrollToBottom();
  list.grab();
  EXPECT_LT(read.size(), 60u);
  EXPECT_EQ(read.count(999'999), 1u);
  EXPECT_EQ(model.index(5, 4).data().toString().size(), 500);
  const auto tip = model.index(5, 4).data(Qt::ToolTipRole).toString();
  EXPECT_LT(tip.size(), 1'000);
}

TEST_F(OutboxWindowTest, ShowsWhatTheStoreHoldsAndTakesNothingForMarkup) {
  With({kPending}, [&] {
    EXPECT_EQ(caption_, "Outbox (1)");
    NewSms sms;
    sms.time = time_ + 1;
    sms.to = ",1";
    sms.msg = "<b>one</b>\ntwo";
    sms.status = SmsStatus::kRoutingError;
    program_->GetDatabase().AddSms(sms);
    area_->Page().BroughtToFront();
    EXPECT_EQ(Text(1, OutboxColumn::kTime).toStdString(), "01/01/2005 00:00");
    EXPECT_EQ(Text(1, OutboxColumn::kStatus).toStdString(), "Routing error");
    EXPECT_EQ(Text(1, OutboxColumn::kMessage).toStdString(), "<b>one</b> two");
    EXPECT_FALSE(list_->model()
                     ->index(1, 4)
                     .data(Qt::ToolTipRole)
                     .toString()
                     .contains(QStringLiteral("<b>")));
    EXPECT_GE(list_->columnWidth(0), 110);
    area_->Page().SetActivity("Querying");
    EXPECT_EQ(Child<QLabel>(*window_, "outboxStatus").text(), QStringLiteral("Querying"));
    EXPECT_FALSE(Child<QWidget>(*window_, "outboxEmpty").isVisible());
    QApplication::clipboard()->setText(QStringLiteral("kept"));
    Click(1);
    QTest::keyClick(list_, Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QApplication::clipboard()->text(), QStringLiteral("kept"));
    RightClick(CellAt(1));
    Choose("Copy");
    EXPECT_THAT(QApplication::clipboard()->text().toStdString(), HasSubstr("<b>one</b>"));
  });
}

TEST_F(OutboxWindowTest, SelectsByMouseAndKeyAndKeepsTheSelectionThroughSorting) {
  With({}, [&] {
    for (const char* who : {"5", "3", "1", "4", "2"}) Add(kPending, who);
    area_->Page().BroughtToFront();
    EXPECT_EQ(Lines(), "5 3 1 4 2 ");
    Click(1);
    Click(3, Qt::ShiftModifier);
    EXPECT_EQ(Lines(), "5 [3] [1] [4] 2 ");
    Click(2, Qt::ControlModifier);
    EXPECT_EQ(Lines(), "5 [3] 1 [4] 2 ");
    QHeaderView& header = *list_->horizontalHeader();
    const auto click_header = [&](int column) {
      const QPoint at(header.sectionViewportPosition(column) + 20, header.height() / 2);
      QTest::mouseClick(header.viewport(), Qt::LeftButton, {}, at);
    };
    click_header(1);
    EXPECT_EQ(Lines(), "1 2 [3] [4] 5 ");
    click_header(1);
    EXPECT_EQ(Lines(), "5 [4] [3] 2 1 ");
    EXPECT_EQ(header.sortIndicatorOrder(), Qt::DescendingOrder);
    QTest::keyClick(list_, Qt::Key_Backtab, Qt::ShiftModifier);
    ASSERT_TRUE(header.hasFocus());
    QTest::keyClick(&header, Qt::Key_Space);
    EXPECT_EQ(Lines(), "5 [3] 1 [4] 2 ");
    EXPECT_EQ(header.sortIndicatorSection(), 0);
    QTest::keyClick(&header, Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(Lines(), "[5] [3] [1] [4] [2] ");
    Click(4);
    EXPECT_EQ(Lines(), "5 3 1 4 [2] ");
    QTest::keyClick(list_, Qt::Key_Up, Qt::ShiftModifier);
    EXPECT_EQ(Lines(), "5 3 1 [4] [2] ");

    boxes_.Answer(platform::BoxAnswer::kNo);
    boxes_.Answer(platform::BoxAnswer::kYes);
    for (int i = 0; i < 2; ++i) {
      MenuKey();
      Choose("Delete");
      EXPECT_EQ(boxes_.shown().back().text, "Are you sure you want to delete 2 message(s)?");
      EXPECT_EQ(program_->GetDatabase().CountSms(), i == 0 ? 5 : 3);
    }
    EXPECT_EQ(Lines(), "5 3 1 ");
    EXPECT_EQ(caption_, "Outbox (3)");
  });
}

TEST_F(OutboxWindowTest, TheMenuGreysWhatTheLineDoesNotAllow) {
  With({kPending, SmsStatus::kEditing, SmsStatus::kProcessing, SmsStatus::kExpanded}, [&] {
    const std::string all = "EdiCopDelSenSelResRef";
    const std::string offered[] = {all, "----Sel--", "----Sel--", "EdiCopDelSenSelRes-"};
    for (int row = 0; row < 4; ++row) {
      RightClick(CellAt(row));
      EXPECT_EQ(Offered(), offered[row]) << row;
    }
    RightClick(QPoint(50, list_->viewport()->height() - 5));
    EXPECT_EQ(Offered(), "----Sel--");
    QTest::keyClick(list_, Qt::Key_Home, Qt::ControlModifier);
    MenuKey();
    EXPECT_EQ(Offered(), all);
    for (int id = 1; id <= 4; ++id) {
      program_->GetDatabase().SetSmsStatus(id, SmsStatus::kFailed);
      program_->GetDatabase().DeleteSms(id);
    }
    area_->Page().BroughtToFront();
    EXPECT_TRUE(Child<QWidget>(*window_, "outboxEmpty").isVisible());
    RightClick(QPoint(50, 50));
    EXPECT_EQ(Offered(), "closed");
    Press("outboxExport");
    EXPECT_EQ(boxes_.shown().back().text, "There is nothing to export");
  });
}

TEST_F(OutboxWindowTest, TheStatusTellsWhyAMessageWasRefused) {
  With({SmsStatus::kProcessing, kPending}, [&] {
    program_->GetDatabase().SetOutcome(1, SmsStatus::kProcessing,
                                       {SmsStatus::kFailed, {}, 0, 0, {}, "208: <b>Refused</b>"});
    area_->Page().BroughtToFront();
    const auto details = [&](int row, int role) {
      return list_->model()
          ->index(row, static_cast<int>(OutboxColumn::kStatus))
          .data(role)
          .toString()
          .toStdString();
    };
    EXPECT_THAT(details(0, Qt::ToolTipRole),
                HasSubstr("\n\nThe reason: 208: &lt;b&gt;Refused&lt;/b&gt;"));
    EXPECT_THAT(details(0, Qt::AccessibleDescriptionRole), HasSubstr("208: <b>Refused</b>"));
    EXPECT_THAT(details(1, Qt::ToolTipRole), testing::Not(HasSubstr("reason")));
  });
}

TEST_F(OutboxWindowTest, SendsWhatIsSelectedOnceTheProgramIsOnline) {
  With({kPending, kPending, kPending}, [&] {
    program_->GetSettings().SetFlag(FlagSetting::kWorkingOnLine, false);
    program_->GetEngine().StartEngine();
    fake_.On("AuthenticateClient", "", 110);
    Click(0);
    Click(2, Qt::ControlModifier);
    MenuKey();
    Choose("Send");
    Press("outboxSendNow");
    ASSERT_EQ(boxes_.shown().size(), 2u);
    const std::string why = "\r\n\r\nUnknown username or password!";
    EXPECT_EQ(boxes_.shown()[0].text,
              "Unable to go online and send the highlighted outbox items!" + why);
    EXPECT_EQ(boxes_.shown()[1].text, "Unable to go online and send the outbox items!" + why);
    EXPECT_TRUE(fake_.Calls("SendMsg").empty());

    fake_.On("AuthenticateClient", "");
    fake_.On("SendMsg", "ID: 0123456789abcdef0123456789abcdef");
    MenuKey();
    Choose("Send");
    // The engine's word brings the list up to date.
    EXPECT_TRUE(QTest::qWaitFor([&] {
      return Text(0, OutboxColumn::kStatus) != QStringLiteral("Pending") &&
             Text(2, OutboxColumn::kStatus) != QStringLiteral("Pending");
    }));
    EXPECT_EQ(Text(1, OutboxColumn::kStatus), QStringLiteral("Pending"));
    EXPECT_EQ(fake_.Calls("SendMsg").size(), 2u);
  });
}

TEST_F(OutboxWindowTest, TheEnginesWordComesFromItsThreadAndNoMoreWhenTheAreaIsGone) {
  With({kPending, SmsStatus::kSent}, [&] {
    const auto tell = [&](std::int32_t id) {
      std::thread([&, id] { program_->GetNotices().TellOutbox(id); }).join();
      QTest::qWait(0);
    };
    area_->Page().HeaderClicked(OutboxColumn::kStatus);
    Click(0);
    program_->GetDatabase().SetSmsStatus(1, SmsStatus::kDelivered);
    tell(1);
    EXPECT_EQ(Text(1, OutboxColumn::kStatus), QStringLiteral("Delivered"));
    EXPECT_TRUE(list_->selectionModel()->isRowSelected(1));
    Add(kPending, "9");
    tell(0);
    EXPECT_EQ(list_->model()->rowCount(), 3);
    EXPECT_FALSE(list_->selectionModel()->hasSelection());
    delete window_;  // as its main window does
    tell(0);
  });
}

TEST_F(OutboxWindowTest, ExportsThroughItsDialog) {
  test::TemporaryFolder outside;
  With({kPending, kPending}, [&] {
    files_.answers = {outside.File("some.txt")};
    Click(1);
    WhenDialogOpens([&](QWidget& dialog) {
      EXPECT_EQ(dialog.objectName(), QStringLiteral("exportDialog"));
      EXPECT_TRUE(Child<QRadioButton>(dialog, "exportSelected").isChecked());
      auto& ok = Child<QPushButton>(dialog, "exportOk");
      EXPECT_FALSE(ok.isEnabled());
      QTest::mouseClick(&Child<QPushButton>(dialog, "exportBrowse"), Qt::LeftButton);
      EXPECT_TRUE(ok.isEnabled());
      QTest::mouseClick(&ok, Qt::LeftButton);
    });
    Press("outboxExport");
    EXPECT_THAT(files_.names, ElementsAre("Outbox.txt"));
    const std::string some = test::Slurp(outside.File("some.txt"));
    EXPECT_THAT(some, HasSubstr("\r\n2\t01/01/2005"));
    EXPECT_EQ(some.find("\r\n1\t"), std::string::npos);

    area_->Page().BroughtToFront();  // nothing is selected then
    WhenDialogOpens([&](QWidget& dialog) {
      EXPECT_FALSE(Child<QRadioButton>(dialog, "exportSelected").isEnabled());
      EXPECT_TRUE(Child<QRadioButton>(dialog, "exportAll").isChecked());
      QTest::keyClicks(&Child<QLineEdit>(dialog, "exportFile"), Qt8(outside.File("all.txt")));
      QTest::keyClick(&dialog, Qt::Key_Return);
    });
    Press("outboxExport");
    EXPECT_THAT(test::Slurp(outside.File("all.txt")), HasSubstr("\r\n1\t01/01/2005"));
  });
}

// Without their colours the icons must differ as well, at the size of the list.
TEST_F(OutboxWindowTest, HelpShowsEveryStatusWithAnIconOfItsOwn) {
  With({}, [&] {
    std::vector<QImage> icons;
    WhenDialogOpens([&](QWidget& dialog) {
      EXPECT_EQ(dialog.objectName(), QStringLiteral("statusLegend"));
      auto& list = Child<QTableWidget>(dialog, "legendList");
      EXPECT_EQ(list.columnWidth(0), 20);
      EXPECT_EQ(list.columnWidth(1), 900);
      EXPECT_EQ(list.item(0, 1)->text().toStdString(),
                "The message is waiting to be sent to the distribution server.");
      for (int row = 0; row < list.rowCount(); ++row) {
        const QPixmap icon = list.item(row, 0)->icon().pixmap(QSize(16, 16), 1.0);
        icons.push_back(icon.toImage().convertToFormat(QImage::Format_Grayscale8));
      }
      QTest::keyClick(&list, Qt::Key_End, Qt::ControlModifier);
      EXPECT_EQ(list.currentRow(), 17);
      QTest::mouseClick(&Child<QPushButton>(dialog, "legendClose"), Qt::LeftButton);
    });
    Press("outboxHelp");
    ASSERT_EQ(icons.size(), 18u);
    constexpr int kClearly = 48;  // of 255 levels
    for (std::size_t a = 0; a < icons.size(); ++a) {
      for (std::size_t b = 0; b < a; ++b) {
        int differing = 0;
        for (int at = 0; at < 256; ++at) {
          const auto level = [at](const QImage& icon) {
            return qGray(icon.pixel(at % 16, at / 16));
          };
          differing += std::abs(level(icons[a]) - level(icons[b])) > kClearly ? 1 : 0;
        }
        EXPECT_GE(differing, 16) << a << " looks like " << b;
      }
    }
  });
}

TEST_F(OutboxWindowTest, TheSmallWindowsSayWhatTheyAreTold) {
  const Texts texts;
  const Kit kit{forms_, images_, texts, files_};
  VersionDialog version(kit, {"Orvalo", "Version: 3.2.1.16", "Comms: 1.0"}, nullptr);
  EXPECT_EQ(version.windowTitle(), QStringLiteral("Version information"));
  EXPECT_EQ(Child<QLabel>(version, "versionComms").text(), QStringLiteral("Comms: 1.0"));

  ShutdownWindow ending(kit);
  ending.show();
  ending.Mark(ShutdownWindow::kSaving);
  std::string spoken;
  for (int row = 0; row < ShutdownWindow::kRows; ++row) {
    const QByteArray name = "shutdownRow" + QByteArray::number(row);
    const auto& label = Child<QLabel>(ending, name);
    spoken += label.accessibleName().toStdString() + (label.isEnabled() ? "; " : " (grey); ");
  }
  EXPECT_EQ(spoken,
            "Completing SMS sending: finished; Stopping the scheduler: finished; "
            "Saving database: in progress; Completed!: still to come (grey); ");
  EXPECT_FALSE(ending.close());
  EXPECT_TRUE(ending.isVisible());
}

}  // namespace
}  // namespace orvalo::ui
