// The German container reaches what Qt says of its own accord, from the first message on.
#include "ui/qt_texts.h"

#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QScrollBar>
#include <optional>

#include "ui/desktop_run.h"
#include "ui/desktop_stage.h"
#include "ui/message_dialogs.h"
#include "ui/surroundings.h"
#include "ui/window_fixture.h"

namespace orvalo::ui {
namespace {

constexpr int kOnLink = 12;  // pixels from the left and the bottom, where the address stands

// The words of the menu that a right click there on `widget` opens, "|" between them.
std::string MenuOf(QWidget& widget, QPoint place) {
  std::string words;
  QTimer::singleShot(0, qApp, [&words] {
    auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    ASSERT_NE(menu, nullptr);
    for (const QAction* action : menu->actions())
      if (!action->isSeparator()) words += action->text().toStdString() + "|";
    menu->close();
  });
  QContextMenuEvent wanted(QContextMenuEvent::Mouse, place, widget.mapToGlobal(place));
  QApplication::sendEvent(&widget, &wanted);
  QTest::qWait(1);
  return words;
}

std::string ButtonsOf(const QWidget& box) {
  std::string words;
  for (const auto* button : box.findChildren<QAbstractButton*>())
    if (!button->text().isEmpty()) words += button->text().toStdString() + "|";
  return words;
}

class QtTextsTest : public test::WindowTest {
 protected:
  MessageDialogs dialogs_{browser_};
};

TEST_F(QtTextsTest, TheWholeRunSpeaksTheLanguageOfItsContainer) {
  test::Spill(folder_.File("Language.rcc"), test::Slurp(ORVALO_GERMAN));
  fake_.On("ConfigureProxyEx", "", 1);  // so that there is a message before there is a window
  std::string seen;
  InNextDialog([&](QDialog& box) {
    seen = ButtonsOf(box);
    auto& text = *box.findChild<QLabel*>(QStringLiteral("qt_msgbox_informativelabel"));
    EXPECT_EQ(MenuOf(text, {kOnLink, text.height() - kOnLink}),
              "&Kopieren\tStrg+C|&Link-Adresse kopieren|Alles auswählen\tStrg+A|");
  });
  const auto on_window = [&](const std::function<void()>& end) {
    QTimer::singleShot(0, qApp, [this, end] {
      const auto windows = QApplication::topLevelWidgets();
      const auto window = std::find_if(windows.begin(), windows.end(),
                                       [](const QWidget* one) { return one->isVisible(); });
      ASSERT_NE(window, windows.end());
      EXPECT_EQ(MenuOf(Child<QLineEdit>(**window, "loginUser"), {}),
                "&Rückgängig\tStrg+Z|&Wiederherstellen\tStrg+Y|&Ausschneiden\tStrg+X|"
                "&Kopieren\tStrg+C|&Einfügen\tStrg+V|Löschen|Alles auswählen\tStrg+A|");
      InNextDialog([](QDialog& box) { EXPECT_EQ(ButtonsOf(box), "&Ja|&Nein|Abbrechen|"); });
      dialogs_.Show("?", "?", platform::BoxIcon::kQuestion, platform::BoxButtons::kYesNoCancel);
      end();
    });
  };
  test::RecordingClipboard clipboard;
  const Surroundings around{files_,
                            browser_,
                            clipboard,
                            [&](const std::function<void()>& end) {
                              if (end) on_window(end);
                            },
                            {},
                            {},
                            {}};
  Program program(dialogs_, clock_, registry_);
  Program::Options options;
  options.data_folder = folder_.path();
  options.enter_data_folder = false;
  EXPECT_EQ(RunDesktop(program, options, around), 0);
  EXPECT_EQ(seen, "OK|Abbrechen|");
  InNextDialog([](QDialog& box) { EXPECT_EQ(ButtonsOf(box), "OK|Cancel|"); });
  EXPECT_EQ(dialogs_.ShowLink("?", "?", "https://www.orvalo.example"), platform::BoxAnswer::kCancel)
      << "and how it was closed";
}

TEST_F(QtTextsTest, WhatALanguageLacksStaysAsQtHasIt) {
  std::unique_ptr<platform::ResourceContainer> german =
      platform::ResourceContainer::Load(ORVALO_GERMAN, nullptr);
  ASSERT_TRUE(texts_.UseContainer(*german));
  const QtTexts qt_texts(texts_);
  const auto say = [](const char* context, const char* text) {
    return QCoreApplication::translate(context, text).toStdString();
  };
  EXPECT_EQ(say("QGnomeTheme", "&Cancel"), "Abbrechen");
  EXPECT_EQ(say("QFileDialog", "%1 already exists.\nDo you want to replace it?"),
            "Die Datei %1 gibt es schon.\nMöchten Sie sie ersetzen?");
  EXPECT_EQ(say("QFileDialog", "Something new in Qt"), "Something new in Qt");
  EXPECT_EQ(say("composePage", "Close"), "Close") << "our own texts are left alone";
  EXPECT_EQ(say("QPlatformTheme", ""), "");
}

}  // namespace
}  // namespace orvalo::ui
