#include "ui/contacts_window.h"

#include <gmock/gmock.h>

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QDropEvent>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QListWidget>
#include <QMimeData>
#include <QProgressDialog>
#include <QPushButton>
#include <QRadioButton>
#include <QTableView>
#include <QTest>
#include <QTimer>

#include "contacts/contacts_bench.h"
#include "platform/resource_container.h"
#include "ui/form_loader.h"
#include "ui/images.h"
#include "ui/scripted_file_dialogs.h"
#include "ui/window_mailbox.h"

namespace orvalo {
namespace {

using testing::ElementsAre;

// The real page over a real store: "All Contacts", Friends (Ann, Bob), Staff (Bob).
class ContactsWindowTest : public testing::Test, protected test::AddressBook {
 protected:
  ContactsWindowTest() {
    window.SetPage(&page);
    window.resize(904, 510);
    page.BroughtToFront();
    window.show();
    EXPECT_TRUE(QTest::qWaitForWindowExposed(&window));
  }
  template <typename Control>
  Control& Get(const char* name, const QWidget* form = nullptr) {
    return ui::Child<Control>(form == nullptr ? window : *form, name);
  }
  // Meets the dialog that the next command opens.
  void Meet(const char* name, std::function<void(QDialog&)> act) {
    QTimer::singleShot(0, &window, [name, act] {
      auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
      ASSERT_NE(dialog, nullptr);
      EXPECT_EQ(dialog->objectName(), QString::fromLatin1(name));
      act(*dialog);
    });
  }
  void Press(const char* name, const QWidget* form = nullptr) {
    QTest::mouseClick(&Get<QPushButton>(name, form), Qt::LeftButton);
  }
  void ShowGroup(int row) { groups.setCurrentIndex(groups.model()->index(row, 0)); }
  std::vector<std::string> Names() {
    std::vector<std::string> names;
    for (int row = 0; row < members.model()->rowCount(); ++row)
      names.push_back(members.model()->index(row, 0).data().toString().toStdString());
    return names;
  }
  // Drags the current member onto a group, or a text that is not ours; whether it was taken.
  bool Drop(int group, Qt::KeyboardModifiers keys, const QString& foreign = {}) {
    const std::unique_ptr<QMimeData> data(
        members.model()->mimeData({members.selectionModel()->currentIndex()}));
    if (!foreign.isEmpty()) data->setText(foreign);
    const QPoint place = groups.visualRect(groups.model()->index(group, 0)).center();
    const Qt::DropActions actions = Qt::CopyAction | Qt::MoveAction;
    QDragEnterEvent enter(place, actions, data.get(), Qt::LeftButton, keys);
    QApplication::sendEvent(groups.viewport(), &enter);
    EXPECT_EQ(enter.isAccepted(), foreign.isEmpty());
    QDropEvent drop(place, actions, data.get(), Qt::LeftButton, keys);
    drop.ignore();
    QApplication::sendEvent(groups.viewport(), &drop);
    return drop.isAccepted();
  }

  std::int32_t friends = Group("Friends"), staff = Group("Staff");
  std::int32_t ann = Contact("Ann", "Archer", "+111", {friends}),
               bob = Contact("Bob", "Baker", "222", {friends, staff});
  test::ScriptedFileDialogs files;
  ui::FormLoader forms{platform::ResourceContainer::BuiltIn()};
  ui::Images images{platform::ResourceContainer::BuiltIn()};
  ui::Kit kit{forms, images, texts, files};
  test::FakeRecipients recipients;
  test::RecordingMailbox main_window;
  ui::ContactsWindow window{kit};
  ContactsPage page{{database, texts, boxes, main_window, recipients, places}, window};
  QListView& groups = Get<QListView>("groupList");
  QTableView& members = Get<QTableView>("memberList");
};

TEST_F(ContactsWindowTest, ShowsSearchesAndSorts) {
  EXPECT_EQ(groups.model()->index(1, 0).data().toString().toStdString(), "Friends (2)");
  EXPECT_THAT(Names(), ElementsAre("Ann", "Bob"));
  EXPECT_FALSE(Get<QPushButton>("contactSearchButton").isEnabled());
  QTest::keyClicks(&Get<QLineEdit>("contactSearch"), QStringLiteral("BAK"));
  Press("contactSearchButton");
  EXPECT_EQ(Get<QLabel>("membersCaption").text().toStdString(), "Friends");
  EXPECT_THAT(window.SelectedMembers(), ElementsAre(1));
  QTest::mouseClick(members.horizontalHeader()->viewport(), Qt::LeftButton, {}, QPoint(20, 10));
  EXPECT_THAT(Names(), ElementsAre("Bob", "Ann"));
  EXPECT_THAT(window.SelectedMembers(), ElementsAre(0)) << "the selection follows";
  ShowGroup(2);
  EXPECT_THAT(Names(), ElementsAre("Bob"));
  window.activateWindow();
  EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
  groups.setFocus();
  QTest::keyClick(&groups, Qt::Key_A, Qt::ControlModifier);
  EXPECT_EQ(window.SelectedGroups().size(), 3u);
}

TEST_F(ContactsWindowTest, WritesContactsAndGroups) {
  Meet("groupDialog", [this](QDialog& dialog) {
    EXPECT_FALSE(Get<QPushButton>("groupDialogOk", &dialog).isEnabled());
    QTest::keyClicks(&Get<QLineEdit>("groupName", &dialog),
                     QStringLiteral("123456789012345678901x"));
    Press("groupDialogOk", &dialog);
  });
  Press("newGroup");
  EXPECT_EQ(page.Groups().back().name, "123456789012345678901");

  ShowGroup(2);
  Meet("contactDialog", [this](QDialog& dialog) {
    EXPECT_EQ(dialog.windowTitle().toStdString(), "ADD NEW MEMBER");
    QTest::keyClicks(&Get<QLineEdit>("contactName", &dialog), QStringLiteral("Cyril"));
    auto& mobile = Get<QLineEdit>("contactMobile", &dialog);
    QTest::keyClicks(&mobile, QStringLiteral("+27a8 2"));
    EXPECT_EQ(mobile.text().toStdString(), "2782") << "typed: digits only";
    auto& ok = Get<QPushButton>("contactDialogOk", &dialog);
    auto& list = Get<QListWidget>("contactGroups", &dialog);
    EXPECT_TRUE(ok.isEnabled());
    list.item(2)->setCheckState(Qt::Unchecked);
    EXPECT_FALSE(ok.isEnabled());
    list.item(1)->setCheckState(Qt::Checked);
    Press("contactDialogOk", &dialog);
  });
  Press("newContact");
  EXPECT_THAT(database.GroupsOf(3), ElementsAre(friends));

  ShowGroup(1);
  members.selectRow(1);
  Meet("deleteScopeDialog", [this](QDialog& dialog) {
    EXPECT_TRUE(Get<QRadioButton>("deleteFromAll", &dialog).isChecked());
    Get<QRadioButton>("deleteFromThis", &dialog).click();
    Press("deleteScopeOk", &dialog);
  });
  boxes.Answer(platform::BoxAnswer::kYes);
  members.setFocus();
  page.Run(MemberCommand::kDelete);
  EXPECT_THAT(database.GroupsOf(bob), ElementsAre(staff));
  EXPECT_THAT(Names(), ElementsAre("Ann", "Cyril"));
}

TEST_F(ContactsWindowTest, TakesDropsOnGroups) {
  ShowGroup(1);
  members.selectRow(0);
  EXPECT_FALSE(Drop(0, {})) << "All Contacts";
  EXPECT_FALSE(Drop(2, Qt::ControlModifier | Qt::ShiftModifier)) << "no links";
  EXPECT_FALSE(Drop(2, {}, QStringLiteral("a word out of an editor")));
  EXPECT_TRUE(Drop(2, Qt::ControlModifier));
  EXPECT_THAT(database.GroupsOf(ann), ElementsAre(friends, staff));
  members.selectRow(1);
  EXPECT_TRUE(Drop(2, {}));
  EXPECT_THAT(database.GroupsOf(bob), ElementsAre(friends, staff)) << "in there already";
}

TEST_F(ContactsWindowTest, ImportsAndExports) {
  const std::string in = folder.File("in.csv"), out = folder.File("out.csv");
  test::Spill(in, "fname;mobile\nZoe;1\nZed;222\nYan\n");
  ShowGroup(2);
  files.answers = {in};
  Meet("csvImportDialog", [this](QDialog& dialog) {
    EXPECT_FALSE(Get<QPushButton>("csvImportOk", &dialog).isEnabled());
    Press("csvImportBrowse", &dialog);
    Get<QComboBox>("csvImportSeparator", &dialog).setCurrentIndex(1);
    Get<QCheckBox>("csvImportNoDuplicates", &dialog).click();
    Press("csvImportOk", &dialog);
  });
  boxes.Answer(platform::BoxAnswer::kAccepted);
  Press("uploadContacts");
  EXPECT_THAT(LastText(), testing::HasSubstr("2 lines")) << "a duplicate, and the end";
  EXPECT_THAT(Names(), ElementsAre("Bob", "Zoe"));

  members.clearSelection();
  Meet("csvExportDialog", [this, &out](QDialog& dialog) {
    EXPECT_FALSE(Get<QRadioButton>("csvExportSelection", &dialog).isEnabled());
    Get<QLineEdit>("csvExportFile", &dialog).setText(QString::fromStdString(out));
    Get<QListWidget>("csvExportGroups", &dialog).item(1)->setCheckState(Qt::Checked);
    Get<QCheckBox>("csvExportAssociate", &dialog).click();
    Press("csvExportOk", &dialog);
  });
  Press("exportContacts");
  EXPECT_THAT(test::Slurp(out), testing::HasSubstr("Zoe,,,,1,Staff\r\n"));
}

TEST_F(ContactsWindowTest, CancelsALongImport) {
  std::string text = "mobile,fname\n";
  for (int i = 0; i < 60'000; ++i) text += std::to_string(i) + ",somebody\n";
  test::Spill(folder.File("in.csv"), text);
  ShowGroup(2);
  int heard = 0;
  ui::WindowMailbox mailbox([&heard](auto...) { ++heard; });
  QTimer often;
  Meet("csvImportDialog", [&](QDialog& dialog) {
    QObject::connect(&often, &QTimer::timeout, &dialog, [&dialog] {
      auto* progress = dialog.findChild<QProgressDialog*>(QStringLiteral("csvImportProgress"));
      if (progress == nullptr || !progress->isVisible()) return;
      ui::Child<QPushButton>(dialog, "csvImportOk").click();  // as assistive tools do
      QTest::mouseClick(progress->findChild<QPushButton*>(), Qt::LeftButton);
    });
    often.start(1);
    mailbox.Post(1, 0, 0);
    Get<QLineEdit>("csvImportFile", &dialog).setText(QString::fromStdString(folder.File("in.csv")));
    Press("csvImportOk", &dialog);
    often.stop();
    EXPECT_EQ(heard, 0) << "messages wait for the end of the import";
    EXPECT_TRUE(dialog.isVisible()) << "for another try";
    Press("csvImportCancel", &dialog);
  });
  Press("uploadContacts");
  EXPECT_TRUE(QTest::qWaitFor([&heard] { return heard == 1; }));
  EXPECT_EQ(database.AllContacts().size(), 2u);
  EXPECT_TRUE(boxes.shown().empty());
}

}  // namespace
}  // namespace orvalo
