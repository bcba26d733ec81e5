// Every window in every language and direction: nothing is cut off.
#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QKeySequence>
#include <QLabel>
#include <QLayout>
#include <map>
#include <memory>

#include "platform/resource_container.h"
#include "ui/desktop_stage.h"
#include "ui/theme.h"
#include "ui/window_fixture.h"

namespace orvalo::ui {
namespace {

using test::DesktopStage;

// The room that a control's text takes, in its own font.
QSize TextSize(const QWidget& control, const QString& text) {
  return control.fontMetrics().size(Qt::TextShowMnemonic, text);
}

// The texts below `window` that do not fit their controls or the window.
std::string CutOff(const QWidget& window) {
  std::string found;
  const auto check = [&](const QWidget& control, const QString& text, QSize wanted) {
    if (text.isEmpty() || !control.isVisibleTo(&window)) return;
    const QRect place(control.mapTo(&window, QPoint()), control.size());
    if (window.rect().contains(place) && control.width() >= wanted.width() &&
        control.height() >= wanted.height())
      return;
    found += control.objectName().toStdString() + " '" + text.toStdString() + "'\n";
  };
  for (const QLabel* label : window.findChildren<QLabel*>()) {
    const QSize wanted = label->wordWrap() ? QSize(0, label->heightForWidth(label->width()))
                                           : TextSize(*label, label->text());
    check(*label, label->text(), wanted);
  }
  for (const QAbstractButton* button : window.findChildren<QAbstractButton*>()) {
    const int icon = button->icon().isNull() ? 0 : button->iconSize().width();
    check(*button, button->text(), TextSize(*button, button->text()) + QSize(icon, 0));
  }
  return found;
}

// The controls of `window` that answer to the same key.
std::string SharedKeys(const QWidget& window) {
  std::map<QKeySequence, std::string> taken;
  std::string found;
  const auto check = [&](const QWidget& control, const QString& text) {
    const QKeySequence key = QKeySequence::mnemonic(text);
    if (key.isEmpty() || !control.isVisibleTo(&window)) return;
    const auto [place, is_new] = taken.emplace(key, control.objectName().toStdString());
    if (!is_new) found += place->second + " and " + control.objectName().toStdString() + "\n";
  };
  for (const QLabel* label : window.findChildren<QLabel*>()) {
    if (label->buddy() != nullptr) check(*label, label->text());
  }
  for (const auto* button : window.findChildren<QAbstractButton*>()) check(*button, button->text());
  return found;
}

struct Setting {
  const char* language;  // a container, or none for the program's own
  Qt::LayoutDirection direction;
};
class LayoutTest : public ::testing::TestWithParam<Setting> {
 protected:
  LayoutTest() {
    ApplyTheme(Theme(QApplication::palette()));
    QApplication::setLayoutDirection(GetParam().direction);
  }
  ~LayoutTest() override { QApplication::setLayoutDirection(Qt::LeftToRight); }
};

TEST_P(LayoutTest, EveryDialogHoldsItsTexts) {
  std::unique_ptr<platform::ResourceContainer> loaded;
  if (GetParam().language != nullptr)
    loaded = platform::ResourceContainer::Load(GetParam().language, nullptr);
  const auto& container = loaded != nullptr ? *loaded : platform::ResourceContainer::BuiltIn();
  const FormLoader forms(container);
  int count = 0;
  for (const std::string& path : container.Paths()) {
    // Pages have their size from the main window.
    if (!path.starts_with("dialogs/") || path < "dialogs/135") continue;
    QWidget window;
    forms.LoadInto(window, std::stoi(path.substr(8)));
    window.show();
    EXPECT_EQ(CutOff(window), "") << path;
    EXPECT_EQ(SharedKeys(window), "") << path;
    EXPECT_LE(window.width(), 1000) << path;
    ++count;
  }
  EXPECT_GE(count, 10);
}

TEST_P(LayoutTest, EveryPageOfTheWindowHoldsItsTexts) {
  DesktopStage stage;
  if (GetParam().language != nullptr) stage.Speak(GetParam().language);
  stage.Run([&](Desktop& desktop, Program& program) {
    EXPECT_EQ(program.GetTexts().Load(1026),
              GetParam().language != nullptr ? "Schließen" : "Close");
    const MainWindow& window = desktop.Window();
    EXPECT_EQ(CutOff(window), "") << "login";
    DesktopStage::LogIn(desktop, true);
    for (const char* tab : {"tabAddresses", "tabOutbox", "tabOptions", "tabSms"}) {
      DesktopStage::Click(desktop, tab);
      QTest::qWait(1);
      EXPECT_EQ(CutOff(window), "") << tab;
      EXPECT_EQ(SharedKeys(window), "") << tab;
    }
    // The tabs follow the direction of the language.
    const auto left_of = [&](const char* a, const char* b) {
      return DesktopStage::Find<QAbstractButton>(desktop, a).x() <
             DesktopStage::Find<QAbstractButton>(desktop, b).x();
    };
    EXPECT_EQ(left_of("tabSms", "tabOptions"), GetParam().direction == Qt::LeftToRight);
  });
}

INSTANTIATE_TEST_SUITE_P(AllWays, LayoutTest,
                         ::testing::Values(Setting{nullptr, Qt::LeftToRight},
                                           Setting{ORVALO_GERMAN, Qt::LeftToRight},
                                           Setting{ORVALO_GERMAN, Qt::RightToLeft}));

}  // namespace
}  // namespace orvalo::ui
