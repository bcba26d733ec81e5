#include "ui/form_loader.h"

#include <gtest/gtest.h>

#include <QCheckBox>
#include <QLineEdit>
#include <QMenu>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace orvalo::ui {
namespace {

class Entries : public platform::ResourceContainer {
 public:
  std::optional<std::string> Read(std::string_view path) const override {
    const auto entry = entries.find(std::string(path));
    return entry == entries.end() ? std::nullopt : std::optional(entry->second);
  }
  std::vector<std::string> Paths() const override { return {}; }
  std::string Root() const override { return ":/test"; }

  std::map<std::string, std::string> entries;
};

TEST(FormLoaderTest, AFormFillsItsWindowAndEveryFaultSaysWhatIsWrong) {
  Entries entries;
  entries.entries["dialogs/1.ui"] =
      "<ui version='4.0'><widget class='QWidget' name='page'>"
      "<widget class='QLineEdit' name='field'/><widget class='Own' name='own'/></widget></ui>";
  entries.entries["dialogs/2.ui"] = "<ui version='4.0'><widget class='QWidget' name='page'>";
  FormLoader forms(entries);
  forms.Register("Own", [](QWidget* parent) { return new QCheckBox(parent); });

  QWidget page;
  forms.LoadInto(page, 1);
  EXPECT_EQ(page.objectName(), QStringLiteral("page"));
  Child<QLineEdit>(page, "field");
  Child<QCheckBox>(page, "own");
  EXPECT_THROW(Child<QLineEdit>(page, "own"), FormError);
  EXPECT_THROW(Child<QLineEdit>(page, "missing"), FormError);
  QWidget other;
  EXPECT_THROW(forms.LoadInto(other, 2), FormError);
  EXPECT_THROW(forms.LoadInto(other, 3), FormError);
}

TEST(FormLoaderTest, MenusAndAcceleratorsCarryTheirCommands) {
  Entries entries;
  entries.entries["menus/1.json"] =
      R"([{"command": 32809, "text": "&Version"}, {"separator": true}, {"command": 32801, "text": "E&xit"}])";
  entries.entries["menus/2.json"] = "{}";
  entries.entries["accelerators/1.json"] = R"([{"command": 32804, "key": "Ctrl+S"}])";
  const FormLoader forms(entries);
  QWidget window;
  const auto menu = forms.LoadMenu(1, &window);
  ASSERT_EQ(menu->actions().size(), 3);
  EXPECT_TRUE(menu->actions()[1]->isSeparator());
  EXPECT_EQ(menu->actions()[2]->data().toInt(), 32801);
  EXPECT_THROW(forms.LoadMenu(2, &window), FormError);
  const auto keys = forms.LoadAccelerators(1, window);
  ASSERT_EQ(keys.size(), 1);
  EXPECT_EQ(keys[0]->shortcut(), QKeySequence(Qt::CTRL | Qt::Key_S));
  EXPECT_THROW(forms.LoadAccelerators(2, window), FormError);
}

}  // namespace
}  // namespace orvalo::ui
