#include "messages/pasted_numbers.h"
#include "messages/recipient_fixture.h"

namespace orvalo::test {
namespace {

TEST(RecipientStringTest, IsWrittenAndRead) {
  RecipientString to;
  to.AddNumber("111");
  to.AddNumber("");
  to.AddContact(12);
  EXPECT_EQ(to.text(), ",111,A12");
  EXPECT_EQ(to.count(), 2u);

  const auto read = [](std::string_view text) {
    std::string items;
    for (const auto& item : SplitRecipients(text)) {
      items += item.cid ? "#" + std::to_string(*item.cid) : std::string(item.text);
      items += ";";
    }
    return items;
  };
  for (const auto& [text, items] : std::vector<std::pair<const char*, const char*>>{
           {"", ""},
           {",", ""},
           {",111,A12", "111;#12;"},
           {"111,,222,", "111;222;"},
           {",A,A-5,A7x,A99999999999", "A;A-5;A7x;#2147483647;"}}) {
    EXPECT_EQ(read(text), items) << text;
  }
}

TEST(PastedNumbersTest, ANumberIsReadInAllTheWaysItIsWritten) {
  for (const auto& [item, number] : std::vector<std::pair<const char*, const char*>>{
           {"(082) 111-0001", "0821110001"},
           {"+27 82.111.0001", "+27821110001"},
           {"[+49] (0) 171\u00A0123\u20114567", "+491711234567"},
           {"\u202A+27821110001\u202C", "+27821110001"},
           {"- 112.", "112"},
           {"1234567890123456", "1234567890123456"},
           {"12345678901234567", ""},
           {"+1234567890123456", ""},
           {"12", ""},
           {"+12", ""},
           {"27+82111", ""},
           {"1. 0821110001", ""},
           {"1) 0821110001", ""},
           {"(082 1110001", ""},
           {"082 111 0001 x", ""},
           {"A12", ""},
           {"0821110001/2", ""},
           {"\xE2\x80", ""},
           {"", ""}}) {
    EXPECT_EQ(NumberOf(item).value_or(""), number) << item;
  }
  const std::vector<std::string> present{"(083) 1"};
  const auto read = ReadPastedNumbers(
      "Mobile\r\n082-1110001; ,\t0831\n+0821110001,call me at home please, and do so at once,\n "
      "999 ",
      present);
  EXPECT_THAT(read.numbers, testing::ElementsAre("0821110001", "999"));
  EXPECT_EQ(std::to_string(read.left_out) + read.first_left_out, "3Mobile");
  EXPECT_EQ(std::to_string(read.doubled) + read.first_doubled, "20831");
  EXPECT_EQ(ReadPastedNumbers(std::string(50, 'x')).first_left_out, std::string(40, 'x') + "...");
}

using NumberListTest = RecipientTest;

TEST_F(NumberListTest, APastedListGivesARowEach) {
  const auto told = [this] { return boxes_.shown().empty() ? "" : boxes_.shown().back().text; };
  Type("111");
  selection_.PasteNumber(0, "27840000000,27840000011\n(111);call me");
  EXPECT_EQ(Numbers(), "111;27840000000;27840000011;;");
  EXPECT_EQ(view_.count, 3u);
  EXPECT_EQ(view_.brought, 3u);
  EXPECT_EQ(boxes_.shown().size(), 1u);
  EXPECT_EQ(told(),
            "Numbers added to the list: 2\n"
            "Left out, as they are no mobile numbers (3 to 16 digits): 1. The first of them: "
            "\"call me\"\n"
            "Doubles, added only once: 1. The first of them: 111");
  selection_.PasteNumber(std::nullopt, "\n222\n333\n");
  EXPECT_EQ(told(), "Numbers added to the list: 2");

  // One item opens the field; without a digit, or too long, it is told and left out.
  view_.edit.clear();
  for (const std::string& item : {std::string("call me at home please"), std::string(33, '5')}) {
    selection_.PasteNumber(std::nullopt, item);
    EXPECT_THAT(told(), testing::StartsWith("\"" + item + "\" is no mobile number"));
  }
  EXPECT_EQ(view_.edit, "");
  selection_.PasteNumber(1, " (082) 111-0001\n");
  EXPECT_EQ(view_.edit, "1:(082) 111-0001");
  EXPECT_TRUE(selection_.EndNumberEdit(1, "(082) 111-0001"));
  const std::string rows = "111;0821110001;27840000011;222;333;";
  EXPECT_EQ(Numbers(), rows + ";");
  EXPECT_FALSE(selection_.EndNumberEdit(1, "home"));
  EXPECT_FALSE(selection_.EndNumberEdit(5, std::string(40, '1')));  // nothing is cut
  EXPECT_EQ(Numbers(), rows + ";");
  EXPECT_FALSE(selection_.EndNumberEdit(5, "444\t555"));
  EXPECT_EQ(selection_.BuildRecipientString().text(),
            ",111,0821110001,27840000011,222,333,444,555");

  std::string many;
  for (int i = 0; i < 10'000; ++i) many += "27 84 " + std::to_string(1'000'000 + i) + "\r\n";
  selection_.PasteNumber(std::nullopt, many);
  EXPECT_EQ(selection_.BuildRecipientString().count(), 10'007u);
}

TEST_F(NumberListTest, AlwaysEndsInOneEmptyRow) {
  Type("083");
  EXPECT_EQ(Numbers(), "083;;");
  EXPECT_EQ(view_.brought, 1u);
  Type("084");
  selection_.EndNumberEdit(0, std::nullopt);
  EXPECT_EQ(Numbers(), "083;084;;");
  EXPECT_EQ(view_.count, 2u);
  selection_.EndNumberEdit(0, "");
  selection_.EndNumberEdit(1, "");
  selection_.EndNumberEdit(7, "9");
  EXPECT_EQ(Numbers(), "084;;");
  selection_.DeleteKey(std::nullopt);
  selection_.DeleteKey(1);
  EXPECT_EQ(Numbers(), "084;;");
  selection_.DeleteKey(0);
  EXPECT_EQ(Numbers(), ";");
  EXPECT_EQ(view_.count, 0u);
  Type(std::string(32, '1'));
  EXPECT_EQ(Numbers(), std::string(32, '1') + ";;");
}

TEST_F(NumberListTest, KeysOpenTheEditingField) {
  Type("083");
  EXPECT_TRUE(selection_.DigitKey(U'7', 0));
  EXPECT_EQ(view_.edit, "0:7");
  EXPECT_TRUE(selection_.DigitKey(U'8', std::nullopt));
  EXPECT_EQ(view_.edit, "1:8");
  EXPECT_FALSE(selection_.DigitKey(U'+', 0));
  selection_.DoubleClick(0);
  EXPECT_EQ(view_.edit, "0:-");
  EXPECT_TRUE(selection_.AcceptTyped(U'0'));
  EXPECT_EQ(view_.beeps, 0);
  for (const char32_t refused : {U'+', U' ', U'a', U'\u0661'}) {
    EXPECT_FALSE(selection_.AcceptTyped(refused));
  }
  EXPECT_EQ(view_.beeps, 4);
}

class SelectionTest : public RecipientTest {
 protected:
  std::int32_t staff_ = db_.AddGroup("Staff").gid, friends_ = db_.AddGroup("Friends").gid;
  std::int32_t ann_ = AddPerson("Ann", "1", {staff_, friends_});
  std::int32_t bob_ = AddPerson("Bob", "2", {staff_});
};

TEST_F(SelectionTest, TicksOfAContactAreSharedByItsGroups) {
  selection_.PageShown();
  EXPECT_EQ(Labels(tree().root()), "ADDRESS BOOK;OUTLOOK;RECENT;");
  EXPECT_EQ(Labels(tree().AddressBook()), "Staff;Friends;");
  const RecipientNode& staff = Child(tree().AddressBook(), 0);
  const RecipientNode& friends = Child(tree().AddressBook(), 1);
  EXPECT_EQ(Labels(staff), "Ann Doe (1);Bob Doe (2);");
  EXPECT_EQ(Labels(friends), "Ann Doe (1);");

  selection_.SetTick(Child(friends, 0), true);
  EXPECT_EQ(Labels(staff), "Ann Doe (1)*;Bob Doe (2);");
  EXPECT_EQ(Labels(tree().AddressBook()), "Staff~;Friends*;");
  EXPECT_EQ(view_.count, 1u);
  selection_.SetTick(staff, true);
  EXPECT_EQ(view_.count, 2u);
  selection_.SetTick(friends, false);
  EXPECT_EQ(view_.count, 1u);
  EXPECT_EQ(Labels(tree().AddressBook()), "Staff~;Friends;");
  const auto to = selection_.BuildRecipientString();
  EXPECT_EQ(to.text(), ",A" + std::to_string(bob_));
  EXPECT_EQ(to.count(), 1u);
}

TEST_F(SelectionTest, StringHoldsEverythingInItsOrder) {
  for (const char* number : {"91", "92", "93"}) recent_.AddRecent("Old", "", number);
  selection_.ClearRecipients();
  selection_.SetTick(tree().ExternalBook(), true);  // has no box
  selection_.SetTick(Child(tree().ExternalBook(), 0), true);
  selection_.SetTick(Child(tree().ExternalBook(), 1), true);
  selection_.SetTick(Child(tree().Recent(), 0), true);
  selection_.SetTick(Child(tree().Recent(), 2), true);
  selection_.SetTick(Child(tree().AddressBook(), 0), true);
  Type("111");
  Type("222");
  EXPECT_EQ(view_.count, 8u);
  const auto to = selection_.BuildRecipientString();
  EXPECT_EQ(to.text(),
            ",111,222,A" + std::to_string(ann_) + ",A" + std::to_string(bob_) + ",93,91,55,35191");
  EXPECT_EQ(to.count(), 8u);
  EXPECT_EQ(RecentNumbers(),
            "Ines (35191);Olga (55);Bob Doe (2);Ann Doe (1);Direct (222);Direct (111);"
            "Old (93);Old (92);Old (91);");
  EXPECT_EQ(Labels(tree().Recent()),
            "Ines (35191);Olga (55);Bob Doe (2);Ann Doe (1);Direct (222);Direct (111);"
            "Old (93)*;Old (92);Old (91)*;");
  selection_.ClearRecipients();
  EXPECT_EQ(view_.count, 0u);
  EXPECT_EQ(Numbers(), ";");
  EXPECT_EQ(selection_.BuildRecipientString().count(), 0u);
}

TEST_F(SelectionTest, ChosenRecentNumbersAreNotPushedOutByOthers) {
  for (int i = 0; i < 10; ++i) recent_.AddRecent("", "", std::to_string(10 + i));
  selection_.ClearRecipients();
  selection_.SetTick(Child(tree().Recent(), 9), true);
  Type("77");
  EXPECT_EQ(selection_.BuildRecipientString().text(), ",77,10");
  // And stay chosen when the message is not sent, though the list has lost them.
  EXPECT_EQ(Numbers() + std::to_string(view_.count), "77;10;;2");
  EXPECT_EQ(selection_.BuildRecipientString().text(), ",77,10");
}

TEST_F(SelectionTest, AContactThatIsGoneIsNoRecipient) {
  selection_.PageShown();
  selection_.LoadRecipients(",111,A" + std::to_string(ann_));
  db_.DeleteContact(ann_, true, 0);
  EXPECT_EQ(selection_.BuildRecipientString().text(), ",111");
  EXPECT_EQ(view_.count, 1u);
}

TEST_F(SelectionTest, StoredRecipientsAreTakenBack) {
  const std::string ann = "A" + std::to_string(ann_);
  selection_.LoadRecipients(",111," + ann + ",A9999,222,A0," + std::string(40, '3') + "," + ann);
  EXPECT_EQ(Numbers(), "111;222;" + std::string(40, '3') + ";;");
  EXPECT_EQ(view_.revealed, "ADDRESS BOOK/Staff/Ann Doe (1)");
  EXPECT_EQ(view_.count, 4u);
}

TEST_F(SelectionTest, ContactsPageHandsOver) {
  Type("111");
  recent_.AddRecent("", "", "5");
  selection_.LoadRecipients(",A" + std::to_string(ann_));
  const std::int32_t cid = AddPerson("Cid", "3", {friends_});  // after the last look
  selection_.SelectContactRecipients(std::vector{cid, 12345, -1});
  EXPECT_EQ(view_.revealed, "ADDRESS BOOK/Friends/Cid Doe (3)");
  EXPECT_EQ(selection_.BuildRecipientString().text(), ",111,A" + std::to_string(cid));
  selection_.SelectGroupRecipients(std::vector{staff_, friends_, 77});
  EXPECT_EQ(view_.count, 4u);
  EXPECT_EQ(Labels(tree().AddressBook()), "Staff*;Friends*;");
  selection_.SelectContactRecipients({});
  EXPECT_EQ(view_.count, 1u);
}

TEST_F(SelectionTest, TreeMenuRebuildsAndClears) {
  const auto menu = [](const RecipientNode& node) {
    const auto offered = RecipientSelection::MenuOf(node);
    return offered ? (offered->rebuild ? "rebuild" : offered->clear ? "clear" : "?") : "none";
  };
  EXPECT_STREQ(menu(tree().AddressBook()), "none");
  EXPECT_STREQ(menu(tree().ExternalBook()), "rebuild");
  EXPECT_STREQ(menu(tree().Recent()), "clear");

  EXPECT_EQ(Labels(tree().ExternalBook()), "Staff;Olga (55);");
  selection_.SetTick(Child(tree().ExternalBook(), 0), true);
  EXPECT_EQ(Labels(Child(tree().ExternalBook(), 0)), "Ines (35191)*;");
  EXPECT_EQ(view_.count, 1u);
  selection_.Rebuild();
  EXPECT_EQ(view_.count, 0u);
  EXPECT_EQ(source_.walks, 2);
  EXPECT_EQ(view_.waits, "()()");
  source_.broken = true;
  selection_.Rebuild();
  ASSERT_EQ(boxes_.shown().size(), 1u);
  EXPECT_EQ(boxes_.shown()[0].text, "MAPI failed to query your Address Book.");
  EXPECT_EQ(boxes_.shown()[0].caption, "Address Book search failed ...");
  EXPECT_EQ(view_.waits, "()()()");

  recent_.AddRecent("", "", "5");
  selection_.ClearRecipients();
  EXPECT_EQ(Labels(tree().Recent()), "(5);");
  selection_.Clear();
  EXPECT_EQ(Labels(tree().Recent()) + RecentNumbers(), "");
}

TEST_F(SelectionTest, TreeFollowsTheAddressBookWhenThePageShows) {
  selection_.PageShown();
  const RecipientNode& staff = Child(tree().AddressBook(), 0);
  selection_.SetTick(staff, true);
  const RecipientNode* first = &Child(staff, 0);
  db_.AddSms({});
  selection_.PageShown();
  EXPECT_EQ(&Child(staff, 0), first);  // nothing has changed: nothing is rebuilt
  const std::int32_t cid = AddPerson("Cid", "3", {staff_});
  db_.DeleteContact(bob_, true, 0);
  auto ann = db_.GetContactRecord(ann_).value();
  ann.name = "Anna";
  ann.group_ids = {staff_, friends_};
  db_.UpdateContact(ann_, ann);
  selection_.PageShown();
  EXPECT_EQ(Labels(staff), "Cid Doe (3);Anna Doe (1)*;");
  EXPECT_EQ(Labels(tree().AddressBook()), "Staff~;Friends;") << "that one was never opened";
  EXPECT_EQ(view_.count, 1u);
  selection_.SetTick(Child(staff, 0), true);
  EXPECT_EQ(selection_.BuildRecipientString().text(),
            ",A" + std::to_string(ann_) + ",A" + std::to_string(cid));
  db_.RenameGroup(staff_, "Crew");
  db_.DeleteGroup(friends_);
  selection_.PageShown();
  EXPECT_EQ(Labels(tree().AddressBook()), "Crew;");
  EXPECT_EQ(view_.count, 2u);
}

class SearchTest : public SelectionTest {
 protected:
  std::string Next() {
    view_.revealed.clear();
    selection_.Search();
    return view_.revealed;
  }
};

TEST_F(SearchTest, GoesRoundBothSources) {
  AddPerson("Zoe", "3", {});  // in no group: the tree has no place for her
  selection_.SearchTextChanged("O");
  EXPECT_TRUE(view_.search_enabled);
  const std::string ann = "ADDRESS BOOK/Staff/Ann Doe (1)", bob = "ADDRESS BOOK/Staff/Bob Doe (2)";
  EXPECT_EQ(Next(), ann);
  EXPECT_EQ(Next(), bob);
  EXPECT_EQ(Next(), ann);  // the external book has not been read, and nothing asks for it
  settings_.SetText(TextSetting::kOutlookName, "profile");
  EXPECT_EQ(Next(), bob);
  EXPECT_EQ(Next(), "OUTLOOK/Olga (55)");
  EXPECT_EQ(Next(), ann);
  selection_.SearchTextChanged("o");  // no change
  EXPECT_EQ(Next(), bob);
  selection_.SearchTextChanged("ines");
  EXPECT_EQ(Next(), "OUTLOOK/Staff/Ines (35191)");
  EXPECT_EQ(Next(), "OUTLOOK/Staff/Ines (35191)");
  EXPECT_EQ(source_.walks, 1);
  for (const char* none : {"zoe", "nobody", ""}) {
    selection_.SearchTextChanged(none);
    EXPECT_EQ(Next(), "") << none;
  }
  EXPECT_FALSE(view_.search_enabled);
  EXPECT_EQ(selection_.Count(), 0u);  // searching ticks nothing
}

TEST_F(SearchTest, LooksAtNameSurnameAndNumberInAnyCase) {
  const std::int32_t cid = AddPerson("\xC3\x89va", "0831", {staff_});
  auto record = db_.GetContactRecord(cid).value();
  record.surname = "Long-Name";
  record.group_ids = {staff_};
  db_.UpdateContact(cid, record);
  for (const char* text : {"\xC3\xA9V", "G-NAM", "831"}) {
    selection_.SearchTextChanged(text);
    EXPECT_EQ(Next(), "ADDRESS BOOK/Staff/\xC3\x89va Long-Name (0831)") << text;
  }
}

// Nothing here may grow with the square of the number: the test would not end in its time.
TEST_F(SelectionTest, CopesWithOneHundredThousandContacts) {
  constexpr std::size_t kMany = 100'000;
  SmsDatabase::Transaction transaction(db_);
  for (std::size_t i = 0; i < kMany; ++i) AddPerson("P" + std::to_string(i), "5", {friends_});
  transaction.Commit();
  selection_.ClearRecipients();
  const RecipientNode& friends = Child(tree().AddressBook(), 1);
  selection_.SetTick(friends, true);
  selection_.Expand(friends);
  EXPECT_EQ(friends.children.size(), kMany + 1);
  for (const auto& member : friends.children) selection_.SetTick(*member, false);
  EXPECT_EQ(view_.count, 0u);
  selection_.SetTick(friends, true);
  const auto to = selection_.BuildRecipientString();
  EXPECT_EQ(to.count(), kMany + 1);
  selection_.ClearRecipients();
  selection_.LoadRecipients(to.text());
  EXPECT_EQ(view_.count, kMany + 1);
  selection_.SearchTextChanged("P99999");
  selection_.Search();
  EXPECT_EQ(view_.revealed, "ADDRESS BOOK/Friends/P99999 Doe (5)");
}

}  // namespace
}  // namespace orvalo::test
