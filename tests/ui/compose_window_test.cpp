#include <QAbstractButton>
#include <QAbstractItemModelTester>
#include <QClipboard>
#include <QComboBox>
#include <QContextMenuEvent>
#include <QDropEvent>
#include <QInputMethodEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QMenu>
#include <QMessageBox>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QStackedWidget>
#include <QTimer>
#include <QToolButton>
#include <QTreeView>

#include "messages/message_types.h"
#include "ui/compose_fixture.h"

namespace orvalo::test {
namespace {

constexpr int kButtonPadding = 14;  // pixels, as the style has it

using testing::HasSubstr;

class ComposeWindowPageTest : public ComposeWindowTest {
 protected:
  QPlainTextEdit& Text() { return Get<QPlainTextEdit>("messageText"); }
  QListView& Numbers() { return Get<QListView>("numberList"); }
  QTreeView& Tree() { return Get<QTreeView>("recipientTree"); }
  QLineEdit* Editor() {
    auto* editor = qobject_cast<QLineEdit*>(QApplication::focusWidget());
    return editor != nullptr && editor->objectName() == u"numberEditor" ? editor : nullptr;
  }
  std::string Count() { return Get<QLabel>("recipientCount").text().toStdString(); }
  std::string Counter() { return Get<QLabel>("characterCount").text().toStdString(); }
  void Write(const char* text) {
    Text().setFocus();
    QTest::keyClicks(&Text(), QString::fromLatin1(text));
  }
  // As an operator does: into the list, digits, Enter.
  void TypeNumber(const char* digits) {
    Numbers().setFocus();
    QTest::keyClick(&Numbers(), digits[0]);
    ASSERT_NE(Editor(), nullptr);
    QTest::keyClicks(Editor(), QString::fromLatin1(digits + 1));
    QTest::keyClick(Editor(), Qt::Key_Return);
  }
  std::string Rows(const QAbstractItemModel& model, const QModelIndex& parent = {}) {
    std::string rows;
    for (int row = 0; row < model.rowCount(parent); ++row) {
      const QModelIndex index = model.index(row, 0, parent);
      const QVariant box = index.data(Qt::CheckStateRole);
      rows += index.data().toString().toStdString();
      rows += box.toInt() == Qt::Checked ? "*" : box.toInt() == Qt::PartiallyChecked ? "~" : "";
      rows += ";";
    }
    return rows;
  }
  QModelIndex Node(std::initializer_list<int> path) {
    QModelIndex index;
    for (const int row : path) index = Tree().model()->index(row, 0, index);
    return index;
  }
  void Expand(const QModelIndex& index) {
    Tree().setFocus();
    Tree().setCurrentIndex(index);
    QTest::keyClick(&Tree(), Qt::Key_Right);
  }
  void ClickBox(const QModelIndex& index) {
    QStyleOptionViewItem option;
    option.initFrom(&Tree());
    option.rect = Tree().visualRect(index);
    option.features = QStyleOptionViewItem::HasCheckIndicator | QStyleOptionViewItem::HasDisplay;
    const QRect box =
        Tree().style()->subElementRect(QStyle::SE_ItemViewItemCheckIndicator, &option, &Tree());
    QTest::mouseClick(Tree().viewport(), Qt::LeftButton, {}, box.center());
  }
  QAction* TreeCommand(const QModelIndex& index, const char* name) {
    const QPoint place = Tree().visualRect(index).center();
    QContextMenuEvent event(QContextMenuEvent::Mouse, place, Tree().viewport()->mapToGlobal(place));
    QApplication::sendEvent(Tree().viewport(), &event);
    auto& menu = ui::Child<QMenu>(Tree(), "menu227");
    if (!menu.isVisible()) return nullptr;
    menu.hide();
    for (QAction* action : menu.actions()) {
      if (action->text().remove(u'&') == QLatin1String(name)) return action;
    }
    return nullptr;
  }
};

TEST_F(ComposeWindowPageTest, AMessageIsWrittenAddressedAndSentFromTheKeyboard) {
  std::int32_t cid = 0;
  prepare_ = [&] { cid = AddPerson("Ana", "351", {Store().AddGroup("Friends").gid}); };
  OnPage([&] {
    auto& send = Get<QPushButton>("sendButton");
    EXPECT_FALSE(send.isEnabled() || Get<QPushButton>("scheduleButton").isEnabled());
    Write("Dear ");
    QTest::mouseClick(&Get<QPushButton>("insertName"), Qt::LeftButton);
    EXPECT_TRUE(Text().hasFocus());
    QTest::keyClicks(&Text(), QStringLiteral("!"));
    EXPECT_EQ(Counter(), "19 (1)");
    QTest::keyClick(&Text(), Qt::Key_S, Qt::ControlModifier);
    ASSERT_EQ(boxes_.shown().size(), 1u);  // nobody to send it to
    EXPECT_EQ(boxes_.shown()[0].caption, "Not enough info to send SMS");

    TypeNumber("111");
    QTest::keyClick(&Numbers(), '2');  // the field is still open when the message is sent
    Expand(Node({0}));
    Tree().setCurrentIndex(Node({0, 0}));
    QTest::keyClick(&Tree(), Qt::Key_Space);
    EXPECT_EQ(Rows(*Tree().model(), Node({0})), "Friends*;");
    Numbers().setFocus();
    QTest::keyClick(&Numbers(), Qt::Key_F2);
    QTest::keyClick(&Numbers(), '3');
    QTest::keyClick(Editor(), Qt::Key_S, Qt::ControlModifier);
    EXPECT_EQ(ComposeWindowTest::Rows(),
              "0 0 ,111,2,3,A" + std::to_string(cid) + " Dear <<FIRSTNAME>>!\n");
    EXPECT_EQ(caption_.updates, 1);
    EXPECT_EQ(Counter() + " " + Count() + Text().toPlainText().toStdString(), "0 (1) 0");
    EXPECT_FALSE(send.isEnabled());
    EXPECT_EQ(Rows(*Tree().model(), Node({0})), "Friends;");
  });
}

TEST_F(ComposeWindowPageTest, TheTextFieldCountsCharactersAndKeepsItsCaret) {
  OnPage([&] {
    const QString smile = QString::fromUtf8("😀");
    Text().setFocus();  // one message only, as the settings stand: 160 characters
    QApplication::clipboard()->setText(smile.repeated(158) + QStringLiteral("ab"));
    Text().paste();
    EXPECT_EQ(Counter(), "160 (1)");
    Text().moveCursor(QTextCursor::Start);
    QApplication::clipboard()->setText(QStringLiteral("xyz"));
    Text().paste();  // no room: what stands there stays
    QTest::keyClick(&Text(), 'x');
    EXPECT_EQ(Text().toPlainText(), smile.repeated(158) + QStringLiteral("ab"));
    Text().moveCursor(QTextCursor::NextCharacter);
    Text().moveCursor(QTextCursor::NextCharacter, QTextCursor::KeepAnchor);
    QTest::keyClick(&Text(), 'x');  // in place of one
    EXPECT_EQ(Counter(), "160 (1)");

    // The program's own texts are not cut; the buttons insert where the caret was.
    Text().moveCursor(QTextCursor::Start);
    Text().moveCursor(QTextCursor::NextCharacter);
    program_->GetSettings().SetText(TextSetting::kSignature, "é\u00a0!");
    program_->GetSettings().SetFlag(FlagSetting::kSpanSms, true);
    QTest::mouseClick(&Get<QPushButton>("insertSignature"), Qt::LeftButton);
    QTest::keyClick(&Text(), '.');
    EXPECT_TRUE(Text().document()->toRawText().startsWith(smile + QString::fromUtf8("é\u00a0!.")));
    EXPECT_EQ(Counter(), "164 (2)");

    // The cut comes with the focus, and the caret goes back to where it stood.
    program_->GetSettings().SetFlag(FlagSetting::kSpanSms, false);
    Numbers().setFocus();
    EXPECT_EQ(Counter(), "164 (2)");
    Text().setFocus();
    EXPECT_EQ(Counter(), "160 (1)");
    QTest::keyClick(&Text(), Qt::Key_Backspace);
    EXPECT_TRUE(Text().document()->toRawText().startsWith(smile + QString::fromUtf8("é\u00a0!x")));

    // Cut, copy and paste act on the field that has the focus.
    Text().setPlainText(QStringLiteral("abc"));
    for (const auto command : {ShellCommand::kSelectAll, ShellCommand::kCut, ShellCommand::kPaste,
                               ShellCommand::kPaste}) {
      area_->Window().Run(command);
    }
    EXPECT_EQ(Text().toPlainText(), QStringLiteral("abcabc"));
  });
}

TEST_F(ComposeWindowPageTest, TheNumberListFollowsItsEditingRules) {
  OnPage([&] {
    QAbstractItemModelTester tester(Numbers().model(),
                                    QAbstractItemModelTester::FailureReportingMode::Fatal);
    const auto rows = [&] { return Rows(*Numbers().model()); };
    TypeNumber("08a3");
    TypeNumber("44");
    EXPECT_EQ(rows() + Count(), "083;44;;2");

    QTest::keyClick(&Numbers(), '5');  // given up
    QTest::keyClick(Editor(), Qt::Key_Escape);
    EXPECT_EQ(rows(), "083;44;;");

    const auto place = [&](int row) {
      return Numbers().visualRect(Numbers().model()->index(row, 0)).center();
    };
    QTest::mouseClick(Numbers().viewport(), Qt::LeftButton, {}, place(0));
    QTest::mouseDClick(Numbers().viewport(), Qt::LeftButton, {}, place(0));
    ASSERT_NE(Editor(), nullptr);
    EXPECT_EQ(Editor()->text(), QStringLiteral("083"));
    QApplication::clipboard()->setText(QStringLiteral("+351 (9)-1234\n"));
    QTest::keyClick(Editor(), Qt::Key_V, Qt::ControlModifier);  // as it is
    EXPECT_EQ(Editor()->text(), QStringLiteral("+351 (9)-1234"));
    QTest::keyClick(Editor(), Qt::Key_Tab);  // ends the edit, not more
    EXPECT_EQ(rows(), "+35191234;44;;");
    EXPECT_TRUE(Numbers().hasFocus());

    QTest::keyClick(&Numbers(), Qt::Key_X, Qt::ControlModifier);
    EXPECT_EQ(rows() + Count(), "44;;1");
    Numbers().setCurrentIndex(Numbers().model()->index(1, 0));
    QTest::keyClick(&Numbers(), Qt::Key_V, Qt::ControlModifier);
    ASSERT_NE(Editor(), nullptr);
    QTest::keyClick(Editor(), Qt::Key_Return);
    EXPECT_EQ(rows() + Count(), "44;+35191234;;2");
    for (const int key : {Qt::Key_Space, Qt::Key_Backspace}) {
      Numbers().setCurrentIndex(Numbers().model()->index(0, 0));
      QTest::keyClick(&Numbers(), static_cast<Qt::Key>(key));
    }
    EXPECT_EQ(rows() + Count(), ";0");
  });
}

// What the list has no use for reaches it from the editing field, and does not end the edit.
TEST_F(ComposeWindowPageTest, OnlyKeysThatTheListActsOnEndAnEdit) {
  OnPage([&] {
    const auto rows = [&] { return Rows(*Numbers().model()); };
    const auto compose = [](QWidget* to, const char* text) {
      QInputMethodEvent event;
      event.setCommitString(QString::fromUtf8(text));
      QApplication::sendEvent(to, &event);
    };
    Numbers().setFocus();
    for (const char* key = "(082) 111-0001"; *key != 0; ++key) {
      QWidget* focused = QApplication::focusWidget();
      const bool shift = *key == '(' || *key == ')' || *key == '1';  // as on a French keyboard
      if (shift) QTest::keyPress(focused, Qt::Key_Shift, Qt::ShiftModifier);
      QTest::keyClick(focused, *key, shift ? Qt::ShiftModifier : Qt::NoModifier);
      if (shift) QTest::keyRelease(QApplication::focusWidget(), Qt::Key_Shift);
      if (*key == '-') {
        for (const auto other : {Qt::Key_CapsLock, Qt::Key_NumLock, Qt::Key_F5, Qt::Key_F1,
                                 Qt::Key_VolumeMute, Qt::Key_Insert}) {
          QTest::keyClick(QApplication::focusWidget(), other);
        }
      }
    }
    ASSERT_NE(Editor(), nullptr);
    compose(Editor(), "x4é5");
    EXPECT_EQ(Editor()->text(), QStringLiteral("082111000145"));
    QTest::keyClick(Editor(), Qt::Key_Up);  // the list moves on
    EXPECT_EQ(rows() + Count(), "082111000145;;1");

    Numbers().setCurrentIndex(Numbers().model()->index(1, 0));
    compose(&Numbers(), "a46");
    ASSERT_NE(Editor(), nullptr);
    QTest::keyClick(Editor(), Qt::Key_Return);
    EXPECT_EQ(rows() + Count(), "082111000145;46;;2");
  });
}

TEST_F(ComposeWindowPageTest, AListIsPastedFromWhereverThePasteComes) {
  OnPage([&] {
    const auto rows = [&] { return Rows(*Numbers().model()); };
    const auto open = [&] {
      Numbers().setFocus();
      Numbers().setCurrentIndex(Numbers().model()->index(Numbers().model()->rowCount() - 1, 0));
      QTest::keyClick(&Numbers(), '9');
      ASSERT_NE(Editor(), nullptr);
    };
    const auto paste = [&](const char* text) {
      QApplication::clipboard()->setText(QString::fromUtf8(text));
    };
    open();
    paste("111\n222");
    QTest::keyClick(Editor(), Qt::Key_V, Qt::ControlModifier);  // as its shortcut brings it
    EXPECT_EQ(rows() + Count(), "9;111;222;;3");
    open();
    paste("333,444");
    area_->Window().Run(ShellCommand::kPaste);  // from a menu of the program
    EXPECT_EQ(rows() + Count(), "9;111;222;9;333;444;;6");
    open();
    paste("555\t666");
    QContextMenuEvent menu(QContextMenuEvent::Mouse, {}, Editor()->mapToGlobal(QPoint(1, 1)));
    QApplication::sendEvent(Editor(), &menu);
    auto* shown = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    ASSERT_NE(shown, nullptr);
    for (QAction* action : shown->actions()) {
      if (action->text().startsWith(u"&Paste")) action->trigger();
    }
    shown->close();
    EXPECT_THAT(rows(), testing::EndsWith(";9;555;666;;"));
    open();
    QMimeData dropped;
    dropped.setText(QStringLiteral("777;888"));
    QDragEnterEvent enter({1, 1}, Qt::CopyAction, &dropped, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(Editor(), &enter);
    QDropEvent drop({1, 1}, Qt::CopyAction, &dropped, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(Editor(), &drop);
    EXPECT_THAT(rows(), testing::EndsWith(";9;777;888;;"));
    EXPECT_EQ(boxes_.shown().size(), 4u);

    // What is no number stops the message that would have gone out without it.
    Write("Hi");
    open();
    paste("1 home");
    QTest::keyClick(Editor(), Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(Editor()->text(), QStringLiteral("91 home"));
    QTest::keyClick(Editor(), Qt::Key_S, Qt::ControlModifier);
    EXPECT_EQ(ComposeWindowTest::Rows() + Count(), "12");
    EXPECT_THAT(boxes_.shown().back().text, HasSubstr("91 home"));
    QTest::mouseClick(&Get<QPushButton>("sendButton"), Qt::LeftButton);
    EXPECT_THAT(ComposeWindowTest::Rows(), HasSubstr(",9,777,888 Hi"));
  });
}

TEST_F(ComposeWindowPageTest, TheTreeFillsAsItIsOpenedAndTicksContactsWhereverTheyShow) {
  prepare_ = [&] {
    const auto one = Store().AddGroup("A").gid;
    const auto two = Store().AddGroup("B").gid;
    AddPerson("Ana", "1", {one, two});
    AddPerson("Rui", "2", {two});
    RecentList(program_->GetSettings()).AddRecent("", "", "77");
  };
  OnPage([&] {
    QAbstractItemModelTester tester(Tree().model(),
                                    QAbstractItemModelTester::FailureReportingMode::Fatal);
    for (const auto& path : {Node({0}), Node({0, 0}), Node({0, 1}), Node({2})}) Expand(path);
    ClickBox(Node({0, 0, 0}));
    EXPECT_EQ(Rows(*Tree().model(), Node({0})) + Count(), "A*;B~;1");
    ClickBox(Node({0, 1}));
    EXPECT_EQ(Rows(*Tree().model(), Node({0, 1})) + Count(), "Ana Doe (1)*;Rui Doe (2)*;2");
    ClickBox(Node({2, 0}));
    EXPECT_EQ(Count(), "3");

    EXPECT_EQ(TreeCommand(Node({0}), "Rebuild"), nullptr);
    EXPECT_FALSE(TreeCommand(Node({2}), "Rebuild")->isEnabled());
    TreeCommand(Node({2}), "Clear")->trigger();
    EXPECT_EQ(Rows(*Tree().model(), Node({2})) + Count(), "2");

    book_.empty = true;  // a node that turns out to be empty cannot stay open
    Expand(Node({1}));
    EXPECT_FALSE(Tree().isExpanded(Node({1})) || Tree().model()->hasChildren(Node({1})));
    book_.empty = false;
    EXPECT_FALSE(TreeCommand(Node({1}), "Clear")->isEnabled());
    TreeCommand(Node({1}), "Rebuild")->trigger();
    EXPECT_EQ(Rows(*Tree().model(), Node({1})), "Staff;");

    auto& search = Get<QLineEdit>("quickSearch");
    EXPECT_FALSE(Get<QPushButton>("quickSearchButton").isEnabled());
    search.setFocus();
    QTest::keyClicks(&search, QStringLiteral("iNES"));
    QTest::keyClick(&search, Qt::Key_Return);
    EXPECT_EQ(Tree().currentIndex().data().toString(), QStringLiteral("Ines (35191)"));
    EXPECT_TRUE(Tree().isExpanded(Node({1, 0})));
    EXPECT_EQ(area_->Window().focusWidget(), &search);
    QTest::mouseClick(&Get<QPushButton>("clearButton"), Qt::LeftButton);
    EXPECT_FALSE(Tree().isExpanded(Node({1})) || Tree().isExpanded(Node({0})));
    EXPECT_EQ(Count(), "0");
  });
}

TEST_F(ComposeWindowPageTest, AFileTypeTakesItsTextFromAFile) {
  OnPage([&] {
    auto& type = Get<QComboBox>("messageType");
    auto& path = Get<QLineEdit>("filePath");
    Write("kept");
    EXPECT_FALSE(path.isVisible());
    type.setFocus();
    QTest::keyClick(&type, Qt::Key_End);
    QTest::keyClick(&type, Qt::Key_Up);
    EXPECT_EQ(type.currentText(), QStringLiteral("Nokia vCard"));
    EXPECT_TRUE(path.isVisible() && Get<QPushButton>("browseFile").isVisible());
    EXPECT_FALSE(Text().isVisible() || Get<QLabel>("picturePreview").isVisible() ||
                 Get<QPushButton>("insertName").isEnabled());
    EXPECT_EQ(Counter(), "4 (1)");

    Spill(folder_.File("card"), std::string("\0\xab\x7f", 3));
    path.setFocus();
    QTest::keyClicks(&path, QString::fromStdString(folder_.File("card")));
    QTest::keyClick(&path, Qt::Key_Return);
    EXPECT_EQ(Counter(), "6 (1)");
    files_.answers = {folder_.File("missing")};
    QTest::mouseClick(&Get<QPushButton>("browseFile"), Qt::LeftButton);
    ASSERT_EQ(boxes_.shown().size(), 1u);
    EXPECT_THAT(boxes_.shown()[0].text, HasSubstr("missing"));
    EXPECT_EQ(path.text().toStdString() + Counter(), "6 (1)");

    // A large file is not laid out before its digits are looked at.
    Spill(folder_.File("card"), std::string(100'000, 'J'));
    path.setText(QString::fromStdString(folder_.File("card")));
    QTest::keyClick(&path, Qt::Key_Return);
    EXPECT_EQ(Counter(), "200000 (1250)");
    EXPECT_EQ(Text().toPlainText(), QStringLiteral("kept"));
    type.setFocus();
    QTest::keyClick(&type, Qt::Key_Home);
    EXPECT_EQ(Text().toPlainText().size(), 200'000);
    EXPECT_TRUE(Text().isVisible());

    // A stored picture message is edited with its file and its preview.
    const auto id = Store().AddSms({SmsStatus::kFailed, 1, 4, 0, ",5", "00", "", 0, "?"});
    area_->Page().LoadMessage(id, true);
    EXPECT_EQ(type.currentIndex(), -1);
    const std::string gif("GIF87a\1\0\1\0\x80\0\0\xff\0\0\0\0\xff,\0\0\0\0\1\0\1\0\0\2\2D\1\0;",
                          35);
    Spill(folder_.File("a.gif"), gif);
    files_.answers = {folder_.File("a.gif")};
    QTest::mouseClick(&Get<QPushButton>("browseFile"), Qt::LeftButton);
    const QImage preview = Get<QLabel>("picturePreview").pixmap().toImage();
    EXPECT_EQ(preview.size(), QSize(48, 48));
    EXPECT_EQ(preview.pixelColor(47, 47), QColor(255, 0, 0));
    EXPECT_EQ(Get<QPushButton>("sendButton").text(), QStringLiteral("Update >>"));
    EXPECT_FALSE(Get<QPushButton>("scheduleButton").isEnabled());
    QTest::mouseClick(&Get<QPushButton>("sendButton"), Qt::LeftButton);
    EXPECT_THAT(ComposeWindowTest::Rows(), testing::StartsWith("0 4 ,5 474946383761"));
  });
}

// The operator chooses "Edit message" in the outbox, and the page comes to the front with the focus
// where it was: in a field that is now hidden.
TEST_F(ComposeWindowPageTest, WhatAHiddenFieldHoldsIsOutOfReach) {
  OnPage([&] {
    QStackedWidget pages;
    QLineEdit outbox;
    pages.addWidget(&area_->Window());
    pages.addWidget(&outbox);
    ShowActive(pages);
    const auto load = [&](std::int32_t type, const std::string& text) {
      const auto id = Store().AddSms({SmsStatus::kFailed, 1, type, 0, ",5", text, "", 0, "?"});
      pages.setCurrentIndex(1);
      outbox.setFocus();
      area_->Page().LoadMessage(id, true);
      pages.setCurrentIndex(0);
    };
    for (const auto& [type, text] : {std::pair(6, std::string(400, 'A')), {8, "a\r\nb\rc"}}) {
      Write("x");
      load(type, text);
      QWidget* focused = QApplication::focusWidget();
      ASSERT_NE(focused, nullptr);
      EXPECT_TRUE(focused->isVisible()) << focused->objectName().toStdString();
      for (QWidget* field : {static_cast<QWidget*>(&Text()), focused}) {
        field->setFocus();
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_X);
      }
      QTest::mouseClick(&Get<QPushButton>("sendButton"), Qt::LeftButton);
      EXPECT_EQ(Store().AllSms().back().msg, text);
      area_->Page().TypeChosen(0);
    }
    // The path field neither, while a text is written.
    area_->Page().TypeChosen(3);
    Get<QLineEdit>("filePath").setFocus();
    load(0, "short");
    EXPECT_TRUE(QApplication::focusWidget()->isVisible());
    pages.removeWidget(&area_->Window());
    area_->Window().setParent(nullptr);
  });
}

TEST_F(ComposeWindowPageTest, AnUpdateOfAScheduledMessageAsksForItsTime) {
  OnPage([&] {
    const auto later = static_cast<std::int32_t>(program_->GetClock().Now() + 86'400);
    const auto id = Store().AddSms({SmsStatus::kScheduled, later, 0, 0, ",5", "old", "", 0, "?"});
    area_->Page().LoadMessage(id, true);
    Write("new");
    const auto update = [&](Qt::Key key) {
      QString names;
      QTimer::singleShot(0, &area_->Window(), [&names, key] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        ASSERT_NE(box, nullptr);
        for (const QAbstractButton* button : box->buttons()) names += button->text() + u'/';
        const QPushButton& enter = ui::Child<QPushButton>(*box, "updateAtItsTime");
        QFont bold = enter.font();
        bold.setBold(true);
        const int text = QFontMetrics(bold).horizontalAdvance(QString(enter.text()).remove(u'&'));
        EXPECT_GE(enter.width(), text + 2 * kButtonPadding) << "its text is not cut off";
        QTest::keyClick(box, key);
      });
      QTest::mouseClick(&Get<QPushButton>("sendButton"), Qt::LeftButton);
      return names;
    };
    EXPECT_EQ(update(Qt::Key_Escape).count(u'/'), 3);
    EXPECT_EQ(ComposeWindowTest::Rows(), "5 0 ,5 old\n") << "the edit goes on";
    update(Qt::Key_Return);
    EXPECT_EQ(ComposeWindowTest::Rows(), "4 0 ,5 newold\n") << "its time is what Enter means";
  });
}

TEST_F(ComposeWindowPageTest, TheBalanceIsAskedForAndShown) {
  OnPage([&] {
    auto& line = Get<QToolButton>("balanceLine");
    EXPECT_EQ(line.text().toStdString(), "Balance: 0.0?");
    line.menu()->actions().front()->trigger();
    EXPECT_EQ(main_window_.messages(), (std::vector{RecordingMailbox::Message{kWmBalance, 0, 0}}));
    program_->GetSettings().SetNumber(NumberSetting::kLastBalance, 872);
    area_->Page().RefreshBalance();
    EXPECT_EQ(line.text().toStdString(), "Balance: 87.2?");
    EXPECT_EQ(caption_.updates, 1);
  });
}

}  // namespace
}  // namespace orvalo::test
