#include <gtest/gtest.h>

#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QLineEdit>
#include <QListView>
#include <QPlainTextEdit>
#include <QTableView>
#include <string>

#include "support/message_kinds.h"
#include "support/phone_road.h"
#include "ui/desktop_stage.h"

namespace orvalo::ui {
namespace {

using test::DesktopStage;

// As an operator does it: the type from the list, the text from the clipboard or the path of its
// file, the number into the list, "Send".
void Send(Desktop& desktop, const test::MessageKind& kind, const std::string& file) {
  auto& type = DesktopStage::Find<QComboBox>(desktop, "messageType");
  type.setFocus();
  QTest::keyClick(&type, Qt::Key_Home);
  for (int i = 0; i < type.count() && type.currentText() != QString::fromUtf8(kind.name); ++i) {
    QTest::keyClick(&type, Qt::Key_Down);
  }
  ASSERT_EQ(type.currentText(), QString::fromUtf8(kind.name));
  auto& path = DesktopStage::Find<QLineEdit>(desktop, "filePath");
  if (path.isVisible()) {
    test::Spill(file, kind.text);
    path.setFocus();
    QTest::keyClicks(&path, QString::fromStdString(file));
    QTest::keyClick(&path, Qt::Key_Return);
  } else {
    auto& text = DesktopStage::Find<QPlainTextEdit>(desktop, "messageText");
    text.setFocus();
    QApplication::clipboard()->setText(QString::fromStdString(kind.text));
    QTest::keyClick(&text, Qt::Key_V, Qt::ControlModifier);
  }
  auto& numbers = DesktopStage::Find<QListView>(desktop, "numberList");
  numbers.setFocus();
  QTest::keyClick(&numbers, kind.number[0]);
  auto* const editor = qobject_cast<QLineEdit*>(QApplication::focusWidget());
  ASSERT_NE(editor, nullptr);
  QTest::keyClicks(editor, QString::fromStdString(kind.number.substr(1)));
  QTest::keyClick(editor, Qt::Key_Return);
  DesktopStage::Click(desktop, "sendButton");
}

// Asks for news of all messages; how many are delivered then, as the list shows it.
int Delivered(Desktop& desktop) {
  OutboxPage& outbox = desktop.Outbox().Page();
  outbox.Run(OutboxCommand::kSelectAll);
  EXPECT_TRUE(outbox.OpenMenu(0));
  outbox.Run(OutboxCommand::kRefreshStatus);
  QTest::qWait(200);
  const auto& model = *DesktopStage::Find<QTableView>(desktop, "outboxList").model();
  int delivered = 0;
  for (int row = 0; row < model.rowCount(); ++row) {
    const auto status = model.index(row, static_cast<int>(OutboxColumn::kStatus)).data();
    if (status.toString() == QStringLiteral("Delivered")) ++delivered;
  }
  return delivered;
}

TEST(PhoneJourney, EveryKindOfMessageReachesItsPhoneAndIsSeenToHaveDoneSo) {
  ASSERT_TRUE(test::KannelEngine::IsInstalled()) << "the package kannel";
  test::PhoneRoad road;
  ASSERT_TRUE(road.engine.Start()) << road.engine.Diagnosis();
  road.StartService();
  DesktopStage stage;
  stage.UseGateway(std::move(road.service));
  stage.Run([&](Desktop& desktop, Program& program) {
    DesktopStage::LogIn(desktop);
    program.GetSettings().SetFlag(FlagSetting::kSpanSms, true);
    desktop.Window().activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&desktop.Window()));
    const auto kinds = test::MessageKinds();
    for (const auto& kind : kinds) Send(desktop, kind, stage.Folder().File("card"));
    EXPECT_TRUE(
        DesktopStage::Until([&] { return stage.Gateway().Ledger().size() == kinds.size(); }));
    DesktopStage::Click(desktop, "tabOutbox");
    int delivered = 0;
    for (int i = 0; i < 50 && delivered < 5; ++i) delivered = Delivered(desktop);
    EXPECT_EQ(delivered, 5);
  });
  test::ExpectMessageKinds(road.network);
  EXPECT_TRUE(road.AddsUp());
}

}  // namespace
}  // namespace orvalo::ui
