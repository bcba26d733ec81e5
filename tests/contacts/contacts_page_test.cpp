#include "contacts/contacts_page.h"

#include <gmock/gmock.h>

#include "contacts/contacts_bench.h"
#include "gateway/engine_notices.h"

namespace orvalo {
namespace {

using platform::BoxAnswer;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

// Three groups behind "All Contacts" (1): Friends (2), Staff (3) and the empty Zoo (4).
class ContactsPageTest : public testing::Test, protected test::AddressBook {
 protected:
  ContactsPageTest() { page.BroughtToFront(); }

  void Select(std::size_t group) {
    view.groups = {group};
    view.current_group = group;
    page.GroupSelectionChanged();
  }
  // Clicks the members with these names.
  void Click(const std::vector<std::string>& names) {
    view.members.clear();
    for (std::size_t i = 0; i < page.MemberCount(); ++i) {
      if (std::count(names.begin(), names.end(), page.LineAt(i)[0]) > 0) {
        view.members.push_back(i);
        view.current_member = i;
      }
    }
    ASSERT_EQ(view.members.size(), names.size());
  }
  std::vector<std::string> Shown() {
    std::vector<std::string> names;
    for (std::size_t i = 0; i < view.rows; ++i) names.push_back(page.LineAt(i)[0]);
    return names;
  }
  std::vector<std::string> In(std::int32_t gid) {
    std::vector<std::string> names;
    for (const auto& row : database.MembersOf(gid)) names.push_back(row.name);
    return names;
  }
  std::vector<std::string> SelectedNames() {
    std::vector<std::string> names;
    for (const std::size_t i : view.members) names.push_back(page.LineAt(i)[0]);
    return names;
  }

  std::int32_t friends = Group("Friends"), staff = Group("Staff"), zoo = Group("Zoo");
  std::int32_t ann = Contact("Ann", "O'Neil", "+111", {friends}),
               bob = Contact("Bob", "Archer", "222", {friends, staff}),
               eve = Contact("eve", "Ångström", "0333", {staff});
  test::FakeContactsView view;
  test::FakeRecipients recipients;
  test::RecordingMailbox main_window;
  ContactsPage page{{database, texts, boxes, main_window, recipients, places}, view};
};

TEST_F(ContactsPageTest, ShowsTheMembersOfTheSelectedGroupInTheOrderOfAColumn) {
  EXPECT_EQ(view.caption, "All Contacts");
  EXPECT_FALSE(view.search);
  EXPECT_THAT(Shown(), ElementsAre("Ann", "Bob", "eve")) << "not in the order of bytes";
  Click({"Bob"});
  page.HeaderClicked(MemberColumn::kSurname);
  EXPECT_THAT(Shown(), ElementsAre("eve", "Bob", "Ann")) << "Ångström, Archer, O'Neil";
  page.HeaderClicked(MemberColumn::kSurname);
  EXPECT_THAT(Shown(), ElementsAre("Ann", "Bob", "eve"));
  EXPECT_TRUE(view.descending);
  EXPECT_THAT(SelectedNames(), ElementsAre("Bob")) << "the selection follows";
  Select(2);
  EXPECT_EQ(view.caption, "Staff");
  EXPECT_THAT(Shown(), ElementsAre("Bob", "eve")) << "still by surname, descending";
  page.HeaderClicked(MemberColumn::kMobile);
  EXPECT_THAT(page.LineAt(0), ElementsAre("eve", "Ångström", "0333"));
  EXPECT_THAT(page.LineAt(7), ElementsAre("?", "?", "?"));
  view.groups.clear();
  page.GroupSelectionChanged();
  EXPECT_THAT(Shown(), IsEmpty());
}

TEST_F(ContactsPageTest, GreysTheMenus) {
  struct Case {
    std::vector<std::size_t> groups;
    std::vector<bool> enabled;  // by GroupCommand
  };
  for (const Case& test : {Case{{}, {true, false, false, false, false, false}},
                           Case{{0}, {true, false, false, false, true, true}},
                           Case{{1}, {true, true, true, true, true, true}},
                           Case{{1, 2}, {true, false, false, true, true, true}},
                           Case{{0, 1}, {true, false, false, false, true, true}}}) {
    view.groups = test.groups;
    std::vector<bool> enabled;
    for (int i = 0; i < 6; ++i) enabled.push_back(page.IsEnabled(static_cast<GroupCommand>(i)));
    EXPECT_EQ(enabled, test.enabled) << testing::PrintToString(test.groups);
  }
  const auto members_enabled = [this] {
    std::string enabled;
    for (int i = 0; i < 9; ++i)
      enabled += page.IsEnabled(static_cast<MemberCommand>(i)) ? 'x' : '-';
    return enabled;
  };
  EXPECT_EQ(members_enabled(), "x-----x--");
  Click({"Ann"});
  EXPECT_EQ(members_enabled(), "xxxxx-xxx") << "nothing to paste";
  page.Run(MemberCommand::kCopy);
  EXPECT_EQ(members_enabled(), "xxxxxxxxx");
  view.members.clear();
  EXPECT_EQ(members_enabled(), "x-----x--");
}

TEST_F(ContactsPageTest, MakesRenamesAndDeletesGroups) {
  view.group_dialog = [](GroupDialog& dialog) {
    EXPECT_EQ(dialog.Caption(), "ADD NEW GROUP");
    dialog.EditName("   ");
    EXPECT_FALSE(dialog.OkEnabled());
    dialog.EditName("éé23456789012345678901x");
    EXPECT_EQ(dialog.Name(), "éé2345678901234567890") << "21 characters";
    return dialog.OkEnabled();
  };
  page.NewGroup();
  ASSERT_EQ(page.Groups().size(), 5u);
  EXPECT_EQ(page.Groups()[1].label, "Friends (2)");

  Select(4);
  view.group_dialog = [](GroupDialog& dialog) {
    EXPECT_EQ(dialog.Caption(), "EDIT GROUP NAME");
    EXPECT_EQ(dialog.Name(), "éé2345678901234567890");
    dialog.EditName("Club");
    return true;
  };
  page.Run(GroupCommand::kRename);
  EXPECT_EQ(view.caption, "Club") << "the group that was shown still is";

  Select(1);
  boxes.Answer(BoxAnswer::kNo);
  page.Run(GroupCommand::kDelete);
  EXPECT_EQ(LastText(), "Are you sure you want to delete the Friends group and all its 2 members?");
  EXPECT_EQ(page.Groups().size(), 5u);
  boxes.Answer(BoxAnswer::kYes);
  page.Run(GroupCommand::kDelete);
  EXPECT_EQ(page.Groups().size(), 4u);
  EXPECT_EQ(view.caption, "All Contacts");
  EXPECT_THAT(Shown(), ElementsAre("Bob", "eve")) << "Ann was in no other group";
}

TEST_F(ContactsPageTest, AddsAndEditsContacts) {
  Select(2);
  view.contact_dialog = [this](ContactDialog& dialog) {
    EXPECT_EQ(dialog.Caption(), "ADD NEW MEMBER");
    EXPECT_EQ(dialog.Groups().Groups().size(), 3u) << "without All Contacts";
    EXPECT_THAT(dialog.Groups().CheckedGids(), ElementsAre(staff));
    EXPECT_FALSE(dialog.OkEnabled());
    dialog.EditText(ContactField::kName, "Dée");
    dialog.EditText(ContactField::kMobile, " ");
    EXPECT_FALSE(dialog.OkEnabled()) << "no number";
    dialog.EditText(ContactField::kMobile, "+2782111000012345678");
    EXPECT_TRUE(dialog.OkEnabled());
    EXPECT_TRUE(ContactDialog::MobileAccepts(U'7') && !ContactDialog::MobileAccepts(U'+') &&
                !ContactDialog::MobileAccepts(U'x'));
    dialog.CheckGroup(1, false);
    EXPECT_FALSE(dialog.OkEnabled()) << "no group";
    dialog.CheckGroup(2, true);
    dialog.CheckGroup(1, true);
    dialog.EditText(ContactField::kTitle, "Professor");
    return true;
  };
  page.NewContact();
  EXPECT_THAT(Shown(), ElementsAre("Bob", "Dée", "eve"));
  EXPECT_THAT(SelectedNames(), ElementsAre("Dée"));
  EXPECT_THAT(In(zoo), ElementsAre("Dée"));
  EXPECT_EQ(database.MembersOf(zoo)[0].mobile, "+278211100001234");
  EXPECT_EQ(database.MembersOf(zoo)[0].title, "Professo");

  Click({"Bob", "eve"});
  view.current_member = 0;
  view.contact_dialog = [this](ContactDialog& dialog) {
    EXPECT_EQ(dialog.Caption(), "EDIT MEMBER DETAILS");
    EXPECT_EQ(dialog.Text(ContactField::kSurname), "Archer");
    EXPECT_THAT(dialog.Groups().CheckedGids(), ElementsAre(friends, staff));
    dialog.EditText(ContactField::kSurname, "Baker");
    dialog.CheckGroup(1, false);
    return true;
  };
  page.Run(MemberCommand::kEdit);
  EXPECT_THAT(Shown(), ElementsAre("Dée", "eve"));
  EXPECT_THAT(SelectedNames(), ElementsAre("eve"));
  EXPECT_EQ(database.GetContactRecord(bob)->surname, "Baker");
  EXPECT_THAT(database.GroupsOf(bob), ElementsAre(friends));
}

TEST_F(ContactsPageTest, DeletesFromOneGroupOrFromAll) {
  Select(1);
  Click({"Ann", "Bob"});
  boxes.Answer(BoxAnswer::kNo);
  page.Run(MemberCommand::kDelete);
  EXPECT_EQ(LastText(), "Are you sure you want to delete 2 contact(s)?");
  boxes.Answer(BoxAnswer::kYes);
  page.Run(MemberCommand::kDelete);
  EXPECT_EQ(view.scope_questions, 1);
  EXPECT_THAT(Shown(), ElementsAre("Ann", "Bob")) << "the scope was cancelled";
  view.scope = DeleteScope::kThisGroup;
  boxes.Answer(BoxAnswer::kYes);
  page.Run(MemberCommand::kDelete);
  EXPECT_THAT(Shown(), IsEmpty());
  EXPECT_THAT(database.GroupsOf(bob), ElementsAre(staff));
  EXPECT_FALSE(database.GetContactRecord(ann)) << "she was in no other group";

  database.AddMembership(friends, bob);
  Select(2);
  Click({"Bob"});
  view.scope = DeleteScope::kAllGroups;
  boxes.Answer(BoxAnswer::kYes);
  page.Run(MemberCommand::kDelete);
  EXPECT_FALSE(database.GetContactRecord(bob));
  Click({"eve"});
  boxes.Answer(BoxAnswer::kYes);
  page.Run(MemberCommand::kDelete);
  EXPECT_EQ(view.scope_questions, 3) << "none for a contact of one group";
  EXPECT_FALSE(database.GetContactRecord(eve));
}

TEST_F(ContactsPageTest, CopiesCutsAndPastes) {
  Select(1);
  Click({"Ann"});
  page.Paste();
  page.Run(MemberCommand::kCopy);
  Select(2);
  Click({"eve"});
  page.Run(MemberCommand::kPaste);
  page.Run(MemberCommand::kPaste);
  EXPECT_THAT(database.GroupsOf(ann), ElementsAre(friends, staff)) << "once";
  Select(0);
  page.Paste();
  EXPECT_THAT(database.GroupsOf(ann), ElementsAre(friends, staff)) << "there already";

  Select(2);
  Click({"Bob"});
  page.Run(MemberCommand::kCut);
  EXPECT_THAT(database.GroupsOf(bob), ElementsAre(friends, staff)) << "the scope was cancelled";
  view.scope = DeleteScope::kThisGroup;
  page.Run(MemberCommand::kCut);
  EXPECT_THAT(database.GroupsOf(bob), ElementsAre(friends));
  Select(3);
  page.Paste();
  Select(2);
  page.Paste();
  const auto pasted = database.MembersOf(zoo);
  ASSERT_EQ(pasted.size(), 1u);
  EXPECT_NE(pasted[0].cid, bob);
  EXPECT_EQ(pasted[0].surname, "Archer");
  EXPECT_THAT(database.GroupsOf(pasted[0].cid), ElementsAre(zoo, staff)) << "one new contact";

  database.DeleteContact(pasted[0].cid, true, 0);
  Select(3);
  page.Paste();
  EXPECT_THAT(In(zoo), ElementsAre("Bob")) << "what was deleted since comes back";
}

TEST_F(ContactsPageTest, DragsMembersOntoGroups) {
  page.HeaderClicked(MemberColumn::kName);  // descending: eve, Bob, Ann
  const std::string dragged = page.DragText(1);
  EXPECT_EQ(dragged, "CID:1|GID:1") << "the place among those loaded";
  EXPECT_EQ(page.DragText(3), "");
  EXPECT_EQ(page.EffectOver(1, false, false), DropEffect::kMove);
  EXPECT_EQ(page.EffectOver(1, false, true), DropEffect::kMove);
  EXPECT_EQ(page.EffectOver(1, true, false), DropEffect::kCopy);
  EXPECT_EQ(page.EffectOver(1, true, true), DropEffect::kNone);
  for (const std::optional<std::size_t> target : {std::optional<std::size_t>(0), {}, {9}})
    EXPECT_EQ(page.EffectOver(target, false, false), DropEffect::kNone);

  page.Dropped(kWmContactMoveDrop, 0, dragged);
  for (const char* text : {"Bob", "CID:9|GID:2", "CID:-1|GID:2", "CID:|GID:2", "cid:1|GID:2"})
    page.Dropped(kWmContactMoveDrop, 3, text);
  EXPECT_THAT(database.GroupsOf(bob), ElementsAre(friends, staff));
  EXPECT_THAT(In(zoo), IsEmpty());

  page.Dropped(kWmContactCopyDrop, 3, dragged);
  EXPECT_THAT(database.GroupsOf(bob), ElementsAre(friends, staff, zoo));
  Select(1);
  page.Dropped(kWmContactMoveDrop, 2, page.DragText(1));
  EXPECT_THAT(database.GroupsOf(ann), ElementsAre(staff));
  EXPECT_THAT(Shown(), ElementsAre("Bob"));
  page.Dropped(kWmContactMoveDrop, 2, "CID:0");
  EXPECT_THAT(database.GroupsOf(bob), ElementsAre(friends, staff, zoo)) << "in there already";
  Select(0);
  page.Dropped(kWmContactMoveDrop, 1, page.DragText(1));
  EXPECT_THAT(database.GroupsOf(bob), ElementsAre(friends, staff, zoo));
  page.Dropped(kWmContactMoveDrop, 1, "CID:2");
  EXPECT_THAT(database.GroupsOf(eve), ElementsAre(staff, friends)) << "no source, nothing to leave";
  page.Dropped(kWmContactMoveDrop, 3, "CID:2|GID:1");
  EXPECT_THAT(database.GroupsOf(eve), ElementsAre(zoo)) << "from All Contacts: out of all";
}

TEST_F(ContactsPageTest, SearchesRoundAndRound) {
  const std::int32_t lone = Contact("Zed", "", "999", {});
  page.Search();
  EXPECT_FALSE(view.revealed);
  page.SearchTextChanged("AR");
  EXPECT_TRUE(view.search);
  page.Search();
  EXPECT_EQ(view.caption, "Friends") << "the first of Bob's groups";
  EXPECT_THAT(SelectedNames(), ElementsAre("Bob"));
  page.Search();
  EXPECT_THAT(SelectedNames(), ElementsAre("Bob")) << "the only one";
  page.SearchTextChanged("ÅNG");
  page.Search();
  EXPECT_THAT(SelectedNames(), ElementsAre("eve"));
  page.SearchTextChanged("e");
  for (const char* next : {"Ann", "Bob", "eve", "Zed", "Ann"}) {
    page.Search();
    EXPECT_THAT(SelectedNames(), ElementsAre(next)) << "O'Neil, Archer, eve, Zed";
  }
  database.DeleteContact(lone, true, 0);
  page.SearchTextChanged("nobody");
  view.revealed.reset();
  page.Search();
  EXPECT_FALSE(view.revealed);
}

TEST_F(ContactsPageTest, HandsRecipientsToTheComposePage) {
  Select(1);
  view.groups = {1, 2};
  page.Run(GroupCommand::kNewMessage);
  EXPECT_THAT(recipients.gids, ElementsAre(friends, staff));
  EXPECT_THAT(main_window.messages(), ElementsAre(std::tuple(kWmSwitchPage, 0, 1044)));
  view.groups = {0, 1};
  page.Run(GroupCommand::kNewMessage);
  EXPECT_THAT(recipients.cids, ElementsAre(ann, bob, eve)) << "All Contacts are everybody";
  Select(0);
  page.HeaderClicked(MemberColumn::kName);
  Click({"Ann", "eve"});
  page.Run(MemberCommand::kNewMessage);
  EXPECT_THAT(recipients.cids, ElementsAre(eve, ann)) << "in list order";
}

TEST_F(ContactsPageTest, NeedsAGroupForContactsAndOpensTheDialogsWithTheSelection) {
  Select(2);
  Click({"eve"});
  int dialogs = 0;
  view.import_dialog = [&](CsvImportDialog& dialog) {
    EXPECT_THAT(dialog.Groups().CheckedGids(), ElementsAre(staff));
    Contact("New", "", "444", {staff});
    return ++dialogs > 0;
  };
  view.export_dialog = [&](CsvExportDialog& dialog) {
    return dialog.SelectionChosen() && ++dialogs;
  };
  page.Upload();
  EXPECT_THAT(Shown(), ElementsAre("Bob", "eve", "New")) << "loaded anew";
  page.Export();
  EXPECT_EQ(dialogs, 2);
  EXPECT_THAT(boxes.shown(), IsEmpty());

  for (const std::int32_t gid : {friends, staff, zoo}) database.DeleteGroup(gid);
  test::FakeContactsView other;
  ContactsPage bare({database, texts, boxes, main_window, recipients, places}, other);
  bare.BroughtToFront();
  struct Case {
    void (ContactsPage::*press)();
    const char *text, *caption;
  };
  for (const Case& test :
       {Case{&ContactsPage::NewContact, "Create a group before you add contacts into it.",
             "Need a group"},
        Case{&ContactsPage::Upload, "Create a group before you upload contacts into it.",
             "Need a group"},
        Case{&ContactsPage::Export, "There is nothing to export", "Export failed"}}) {
    (bare.*test.press)();
    EXPECT_EQ(LastText(), test.text);
    EXPECT_EQ(LastCaption(), test.caption);
  }
  EXPECT_EQ(dialogs, 2);
}

}  // namespace
}  // namespace orvalo
