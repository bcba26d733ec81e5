#include "ui/desktop.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QAbstractItemModel>
#include <QEventLoop>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QTableView>
#include <QTimer>
#include <QTreeView>
#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "support/scripted_http_server.h"
#include "ui/application.h"
#include "ui/desktop_run.h"
#include "ui/desktop_stage.h"
#include "ui/message_dialogs.h"
#include "ui/window_fixture.h"

namespace orvalo::ui {
namespace {

using test::DesktopStage;
using ::testing::AllOf;
using ::testing::Field;
using ::testing::IsEmpty;

using ShutdownTest = test::WindowTest;
constexpr auto npos = std::string::npos;

// What the store holds of every message, by id.
std::vector<MessageRow> Messages(Program& program) {
  std::vector<MessageRow> rows;
  program.GetDatabase().ForEachSms([&](const MessageRow& row) {
    rows.push_back(row);
    return true;
  });
  return rows;
}

std::vector<MessageRow> MessagesIn(Program& program, SmsStatus status) {
  auto rows = Messages(program);
  std::erase_if(rows, [status](const MessageRow& row) {
    return row.stat != static_cast<std::int32_t>(status);
  });
  return rows;
}

// The journeys of an operator through the real windows, with the real gateway service.
class DesktopJourney : public ::testing::Test {
 protected:
  // One run of the program, logged in.
  void Run(const DesktopStage::Body& body, bool offline = false) {
    stage_.Run([&](Desktop& desktop, Program& program) {
      DesktopStage::LogIn(desktop, offline);
      ASSERT_EQ(desktop.Shell().Page(), ShellPage::kCompose);
      body(desktop, program);
    });
    ASSERT_FALSE(HasFatalFailure());
  }

  // Two friends, known to the program at its next start.
  void MakeFriends() {
    stage_.Run([this](Desktop&, Program& program) {
      friends_ = program.GetDatabase().AddGroup("Friends").gid;
      program.GetDatabase().AddContact({"Ann", "Archer", "Ms", "", "27821110001", {1, friends_}});
      program.GetDatabase().AddContact({"Bob", "Brewer", "Mr", "", "27821110002", {1, friends_}});
    });
  }

  static void Write(Desktop& desktop, const char* text) {
    auto& field = DesktopStage::Find<QPlainTextEdit>(desktop, "messageText");
    field.setFocus();
    QTest::keyClicks(&field, QString::fromUtf8(text));
  }

  static void TickFirstGroup(Desktop& desktop) {
    auto& tree = DesktopStage::Find<QTreeView>(desktop, "recipientTree");
    const QModelIndex book = tree.model()->index(0, 0);
    tree.expand(book);
    ASSERT_GE(tree.model()->rowCount(book), 1);
    tree.setCurrentIndex(tree.model()->index(0, 0, book));
    QTest::keyClick(&tree, Qt::Key_Space);
  }

  // Right-clicks a row of the outbox and runs a command of its menu.
  static void RunInOutbox(Desktop& desktop, std::size_t row, OutboxCommand command) {
    DesktopStage::Click(desktop, "tabOutbox");
    OutboxPage& outbox = desktop.Outbox().Page();
    outbox.SelectionLost();
    outbox.RowSelected(row, true);
    ASSERT_TRUE(outbox.OpenMenu(static_cast<std::int64_t>(row)));
    ASSERT_TRUE(outbox.IsEnabled(command));
    outbox.Run(command);
  }

  DesktopStage stage_;
  std::int32_t friends_ = 0;
};

TEST_F(DesktopJourney, AWrongPasswordIsRefusedAndTheRightOneOpensTheTabs) {
  stage_.Run([](Desktop&, Program& program) {
    NewSms left;  // by a run that ended before its turn
    left.to = ",27821110001";
    left.msg = "Hi";
    program.GetDatabase().AddSms(left);
  });
  stage_.Run([this](Desktop& desktop, Program& program) {
    QTest::qWait(300);
    EXPECT_EQ(MessagesIn(program, SmsStatus::kPending).size(), 1u) << "nobody is logged in";
    EXPECT_FALSE(DesktopStage::Find<QWidget>(desktop, "tabs").isVisible());
    QTest::keyClicks(&DesktopStage::Find<QLineEdit>(desktop, "loginUser"), QStringLiteral("demo"));
    QTest::keyClicks(&DesktopStage::Find<QLineEdit>(desktop, "loginPassword"),
                     QStringLiteral("wrong"));
    QTest::keyClick(&DesktopStage::Find<QLineEdit>(desktop, "loginPassword"), Qt::Key_Return);
    EXPECT_EQ(DesktopStage::Find<QLabel>(desktop, "loginMessage").text(),
              QStringLiteral("Unknown username or password!"));
    EXPECT_EQ(desktop.Shell().Page(), ShellPage::kLogin);
    DesktopStage::LogIn(desktop);
    EXPECT_TRUE(DesktopStage::Find<QWidget>(desktop, "tabs").isVisible());
    EXPECT_TRUE(program.GetSettings().Flag(FlagSetting::kWorkingOnLine));
    EXPECT_TRUE(
        DesktopStage::Until([&] { return MessagesIn(program, SmsStatus::kUnknown).size() == 1; }));
    EXPECT_THAT(stage_.boxes.shown(), IsEmpty());
  });
}

TEST_F(DesktopJourney, AGroupGetsItsMessage) {
  MakeFriends();
  Run([this](Desktop& desktop, Program& program) {
    TickFirstGroup(desktop);
    Write(desktop, "See you tonight");
    DesktopStage::Click(desktop, "sendButton");
    EXPECT_TRUE(DesktopStage::Until([&] { return Messages(program).size() == 3; }));
    EXPECT_EQ(MessagesIn(program, SmsStatus::kExpanded).size(), 1u);
    EXPECT_EQ(stage_.Gateway().Ledger().size(), 2u);
    DesktopStage::Click(desktop, "tabOutbox");
    auto& list = DesktopStage::Find<QTableView>(desktop, "outboxList");
    EXPECT_EQ(list.model()->rowCount(), 3);
    EXPECT_EQ(list.model()->index(0, 4).data().toString(), QStringLiteral("See you tonight"));
    program.GetNotices().QueryFailed("No news.");  // the engine, of what the operator has asked
    ASSERT_TRUE(DesktopStage::Until([&] { return !stage_.boxes.shown().empty(); }));
    EXPECT_EQ(stage_.boxes.shown().back().caption, "Query failed");
  });
}

TEST_F(DesktopJourney, OfflineMessagesWaitForSendNow) {
  MakeFriends();
  Run([](Desktop& desktop, Program&) { EXPECT_TRUE(desktop.Window().isVisible()); });
  Run(
      [this](Desktop& desktop, Program& program) {
        TickFirstGroup(desktop);
        Write(desktop, "Later");
        DesktopStage::Click(desktop, "sendButton");
        QTest::qWait(300);
        ASSERT_EQ(MessagesIn(program, SmsStatus::kPending).size(), 1u);
        EXPECT_THAT(stage_.Gateway().Ledger(), IsEmpty());
        DesktopStage::Click(desktop, "tabOutbox");
        DesktopStage::Click(desktop, "outboxSendNow");
        EXPECT_TRUE(DesktopStage::Until([&] { return stage_.Gateway().Ledger().size() == 2; }));
        EXPECT_TRUE(DesktopStage::Until([&] { return Messages(program).size() == 3; }));
      },
      true);
}

TEST_F(DesktopJourney, AWaitingMessageIsEditedAndASentOneIsSentAgain) {
  MakeFriends();
  Run([](Desktop&, Program&) {});
  Run(
      [](Desktop& desktop, Program& program) {
        TickFirstGroup(desktop);
        Write(desktop, "Tonight at sevn");
        DesktopStage::Click(desktop, "sendButton");
        ASSERT_EQ(Messages(program).size(), 1u);
        RunInOutbox(desktop, 0, OutboxCommand::kEdit);
        ASSERT_TRUE(
            DesktopStage::Until([&] { return desktop.Shell().Page() == ShellPage::kCompose; }));
        EXPECT_EQ(MessagesIn(program, SmsStatus::kEditing).size(), 1u);
        auto& text = DesktopStage::Find<QPlainTextEdit>(desktop, "messageText");
        EXPECT_EQ(text.toPlainText(), QStringLiteral("Tonight at sevn"));
        text.setFocus();
        text.selectAll();
        Write(desktop, "Tonight at seven");
        DesktopStage::Click(desktop, "sendButton");
        ASSERT_EQ(Messages(program).size(), 1u);
        EXPECT_THAT(Messages(program).front(), AllOf(Field(&MessageRow::msg, "Tonight at seven"),
                                                     Field(&MessageRow::stat, 0)));
      },
      true);
  Run([this](Desktop& desktop, Program& program) {
    DesktopStage::Click(desktop, "tabOutbox");
    DesktopStage::Click(desktop, "outboxSendNow");
    ASSERT_TRUE(DesktopStage::Until([&] { return Messages(program).size() == 3; }));
    RunInOutbox(desktop, 0, OutboxCommand::kResend);
    ASSERT_TRUE(DesktopStage::Until([&] { return desktop.Shell().Page() == ShellPage::kCompose; }));
    DesktopStage::Click(desktop, "sendButton");
    EXPECT_TRUE(DesktopStage::Until([&] { return stage_.Gateway().Ledger().size() > 2; }));
  });
}

TEST_F(DesktopJourney, EachLoginFetchesTheBanner) {
  test::ScriptedHttpServer server([](const auto&) { return test::ScriptedReply{404, ""}; });
  stage_.Run([&](Desktop& desktop, Program& program) {
    program.GetSettings().SetText(TextSetting::kBackgroundImagePath, server.address() + "/banner");
    QTest::qWait(50);
    EXPECT_THAT(server.requests(), IsEmpty());
    DesktopStage::LogIn(desktop);
    EXPECT_TRUE(DesktopStage::Until([&] { return server.requests().size() == 1; }));
    EXPECT_TRUE(DesktopStage::Until([&] {
      return program.GetAccount().LoginToGateway("demo", "demo") && server.requests().size() > 1;
    }));
  });
}

TEST_F(DesktopJourney, ExitStoresTheOptionsInFrontAndCloseAppOnlyHides) {
  Run([this](Desktop& desktop, Program& program) {
    DesktopStage::Click(desktop, "tabOptions");
    auto& prefix = DesktopStage::Find<QLineEdit>(desktop, "optionPrefix");
    prefix.clear();
    QTest::keyClicks(&prefix, QStringLiteral("0027"));
    DesktopStage::Click(desktop, "closeApp");
    EXPECT_TRUE(desktop.Window().isMinimized());  // there is no notification area here
    desktop.Shell().TrayLeftClick();
    EXPECT_FALSE(desktop.Window().isMinimized());
    // The end takes an open dialog along: nobody may be there to answer it.
    QTimer::singleShot(0, [&] { desktop.Shell().Run(ShellCommand::kExit); });
    desktop.Shell().Run(ShellCommand::kShowVersion);
    EXPECT_FALSE(desktop.Window().isVisible());
    // So do those that what was running still opens.
    QTimer::singleShot(5000, qApp, [] { QApplication::exit(); });
    EXPECT_EQ(MessageDialogs(stage_.shell)
                  .Show("Save a list?", "Import", platform::BoxIcon::kQuestion,
                        platform::BoxButtons::kYesNo),
              platform::BoxAnswer::kNo);
    EXPECT_EQ(program.GetSettings().Text(TextSetting::kPrefix), "27");
  });
}

// A handler's fault while the end is shown in its three steps, and one after them.
TEST_F(ShutdownTest, AFaultIsToldUntilTheLastMoment) {
  constexpr int kPauses = 3;
  for (int at = 0; at <= kPauses; ++at) {
    int pauses = 0;
    bool thrown = false;
    std::unique_ptr<Program> program;
    test::RecordingClipboard clipboard;
    const Surroundings around{files_,
                              browser_,
                              clipboard,
                              [&](const std::function<void()>& end) {
                                if (!end) return;
                                program->GetSettings().SetFlag(FlagSetting::kWriteLog, true);
                                QTimer::singleShot(0, qApp, [&program, end] {
                                  EXPECT_TRUE(program->GetEngine().StartEngine());
                                  end();
                                });
                              },
                              [&] {
                                if (std::exchange(thrown, false))
                                  throw std::runtime_error("fault at the end");
                              },
                              [&] { thrown = thrown || (at == kPauses && pauses == kPauses); },
                              [&](int) { thrown = pauses++ == at; }};
    program = std::make_unique<Program>(boxes_, clock_, registry_);
    Program::Options options;
    options.data_folder = folder_.path();
    options.enter_data_folder = false;
    std::filesystem::remove(folder_.File("SMS.log"));
    EXPECT_EQ(RunDesktop(*program, options, around), EXIT_FAILURE) << at;
    EXPECT_EQ(pauses, std::min(at + 1, kPauses));
    ASSERT_EQ(boxes_.shown().size(), static_cast<std::size_t>(at) + 1) << at;
    EXPECT_EQ(boxes_.shown().back().caption, "Unexpected error ...");
    const bool logged = test::Slurp(folder_.File("SMS.log")).find("fault at the end") != npos;
    EXPECT_EQ(logged, at < kPauses) << "the log is closed last";
  }
}

// The fault of a handler ends every loop; the message that tells of it needs one of its own.
TEST(ApplicationTest, AFaultIsThrownAgainAndCanBeTold) {
  auto& application = dynamic_cast<Application&>(*qApp);
  QEventLoop without_window;
  QTimer::singleShot(0, [] { throw FormError("No such dialog."); });
  QTimer::singleShot(1, &without_window, &QEventLoop::quit);
  without_window.exec();
  EXPECT_NO_THROW(application.RethrowFault());

  QTimer::singleShot(0, [] { throw std::runtime_error("the first"); });
  QTimer::singleShot(0, [] { throw std::runtime_error("what comes of it"); });
  QEventLoop().exec();
  try {
    application.RethrowFault();
    ADD_FAILURE() << "forgotten";
  } catch (const std::runtime_error& fault) {
    EXPECT_STREQ(fault.what(), "the first");
  }
  bool told = false;
  test::RecordingShell shell;
  MessageDialogs boxes(shell);
  QTimer::singleShot(0, [] { throw std::runtime_error("and once more"); });
  QTimer::singleShot(10, [&] {
    told = QApplication::activeModalWidget() != nullptr;
    if (told) QApplication::activeModalWidget()->close();
  });
  boxes.Show("It ended.", "Unexpected error ...", platform::BoxIcon::kStop,
             platform::BoxButtons::kOkOnly);
  EXPECT_TRUE(told);
}

}  // namespace
}  // namespace orvalo::ui
