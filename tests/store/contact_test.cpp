#include "store_fixture.h"

namespace orvalo::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class ContactTest : public StoreTest {
 protected:
  std::string NamesIn(std::int32_t gid) {
    std::string names;
    for (const ContactRow& row : db().MembersOf(gid)) names += row.name + " ";
    return names;
  }
};

TEST_F(ContactTest, TextsAreCutToTheirWidthsInCharacters) {
  std::string text;
  for (int i = 0; i < 40; ++i) text += "é";
  const auto cid = db().AddContact({text, text, text, text, text, {1, 1}});
  const auto contact = db().GetContactRecord(cid).value();
  EXPECT_EQ(contact.name, text.substr(0, 64));
  EXPECT_EQ(contact.surname, text.substr(0, 64));
  EXPECT_EQ(contact.title, text.substr(0, 16));
  EXPECT_EQ(contact.custom, text.substr(0, 64));
  EXPECT_EQ(contact.mobile, text.substr(0, 32));
  EXPECT_THAT(contact.group_ids, IsEmpty());
  EXPECT_THAT(db().GroupsOf(cid), ElementsAre(1, 1));  // as given, twice

  db().UpdateContact(cid, {"A", "B", "C", "D", "+1", {}});
  EXPECT_EQ(db().ContactDisplayName(cid), "A B");
  EXPECT_EQ(db().GetContactMobile(cid), "+1");
  EXPECT_TRUE(db().ContactExistsWithMobile("+1"));
  EXPECT_FALSE(db().ContactExistsWithMobile("+"));
  EXPECT_THAT(db().GroupsOf(cid), IsEmpty());
  EXPECT_EQ(db().AllContacts().size(), 1U);
}

TEST_F(ContactTest, WhatIsMissingIsTold) {
  db().UpdateContact(5, {"A", "", "", "", "", {1}});
  db().DeleteContact(5, true, 1);
  db().RenameGroup(5, "x");
  db().DeleteGroup(5);
  EXPECT_EQ(db().GetContactRecord(5), std::nullopt);
  EXPECT_EQ(db().GetContactMobile(5), std::nullopt);
  EXPECT_EQ(db().ContactDisplayName(5), std::nullopt);
  EXPECT_EQ(db().GetGroupName(5), std::nullopt);
  EXPECT_EQ(db().FindGroupRow(5), -1);
  EXPECT_EQ(db().FirstGroupOf(5), 0);
  EXPECT_EQ(db().GroupCountOfContact(5), 0);
  EXPECT_EQ(db().MemberCount(1), 0);  // the update of nobody linked nobody
  EXPECT_EQ(db().AllGroups().size(), 1U);
}

TEST_F(ContactTest, IdsAreCountedOnAndNeverReused) {
  EXPECT_EQ(db().PeekNextContactId(), 1);
  EXPECT_EQ(db().NextContactId(), 1);
  const auto cid = AddPerson("Ann");
  EXPECT_EQ(cid, 2);
  db().DeleteContact(cid, true, 0);
  const auto gid = db().AddGroup("G").gid;
  db().DeleteGroup(gid);
  const auto id = Add("+1");
  db().DeleteSms(id);
  Reopen();
  EXPECT_EQ(db().PeekNextContactId(), cid + 1);
  EXPECT_EQ(db().NextGroupId(), gid + 1);
  EXPECT_EQ(db().NextMessageId(), id + 1);
}

TEST_F(ContactTest, GroupsAreFoundByNameWhateverItsCase) {
  const auto first = db().AddGroup("Größe").gid;
  db().AddGroup("GRÖSSE x");
  db().AddGroup("größe");
  EXPECT_EQ(db().FindOrAddGroup("GRÖßE"), first);
  EXPECT_EQ(db().FindOrAddGroup("ALL contacts"), 1);
  const auto added = db().FindOrAddGroup("Grö");
  EXPECT_EQ(db().GetGroupName(added), "Grö");
  db().RenameGroup(first, "");
  EXPECT_EQ(db().GetGroupName(first), "");
  db().DeleteGroup(first);
  EXPECT_EQ(db().FindGroupRow(1), 0);
  EXPECT_EQ(db().FindGroupRow(added), 3);
  EXPECT_EQ(db().FindOrAddGroup("GRÖßE"), first + 2);
}

TEST_F(ContactTest, DeletingAGroupTakesThoseWhoAreInNoOther) {
  const auto first = db().AddGroup("first").gid;
  const auto second = db().AddGroup("second").gid;
  const auto alone = AddPerson("Alone", {first});
  const auto twice = AddPerson("Twice", {first, first});
  const auto both = AddPerson("Both", {first, second, first});
  const auto other = AddPerson("Other", {second});
  const auto nowhere = AddPerson("Nowhere");
  db().AddMembership(first, 4711);  // a member that does not exist
  db().DeleteGroup(first);
  EXPECT_EQ(db().GetGroupName(first), std::nullopt);
  EXPECT_EQ(db().MemberCount(first), 0);
  EXPECT_EQ(db().GetContactRecord(alone), std::nullopt);
  EXPECT_EQ(db().GetContactRecord(twice), std::nullopt);
  EXPECT_THAT(db().GroupsOf(both), ElementsAre(second));
  EXPECT_EQ(NamesIn(second), "Both Other ");
  EXPECT_NE(db().GetContactRecord(nowhere), std::nullopt);
  EXPECT_NE(db().GetContactRecord(other), std::nullopt);
}

TEST_F(ContactTest, DeletingAContact) {
  const auto group = db().AddGroup("g").gid;
  const auto ann = AddPerson("Ann", {1, group});
  const auto ben = AddPerson("Ben", {1, group});
  const auto cid = AddPerson("Cid", {group, group});
  db().DeleteContact(ann, false, group);
  EXPECT_THAT(db().GroupsOf(ann), ElementsAre(1));
  db().DeleteContact(ann, false, 1);
  EXPECT_EQ(db().GetContactRecord(ann), std::nullopt);
  db().DeleteContact(ben, true, 99);
  EXPECT_EQ(db().GetContactRecord(ben), std::nullopt);
  EXPECT_THAT(db().GroupsOf(ben), IsEmpty());
  db().DeleteContact(cid, false, group);
  EXPECT_THAT(db().GroupsOf(cid), ElementsAre(group));  // one of the two at a time
  EXPECT_EQ(NamesIn(group), "Cid ");
}

TEST_F(ContactTest, MovingAContact) {
  struct Case {
    std::vector<std::int32_t> groups;
    std::int32_t to, from;
    std::vector<std::int32_t> expected;
  };
  const std::vector<Case> cases = {
      {{1, 3, 4}, 5, 1, {5}},        // out of the first group: out of all
      {{1, 3, 4}, 5, 3, {1, 4, 5}},  // elsewhere only that one is left
      {{1, 3, 3}, 5, 3, {1, 3, 5}},  // the first of a pair that is stored twice
      {{1, 3}, 3, 1, {1, 3}},        // already there
      {{1, 3}, 5, 4, {1, 3, 5}},     // was not in the group it is to leave
  };
  for (const Case& move : cases) {
    const auto cid = AddPerson("X", move.groups);
    db().MoveContact(cid, move.to, move.from);
    EXPECT_EQ(db().GroupsOf(cid), move.expected);
    EXPECT_EQ(db().FirstGroupOf(cid), move.expected.front());
    EXPECT_EQ(db().GroupCountOfContact(cid), static_cast<int>(move.expected.size()));
  }
}

TEST_F(ContactTest, MembershipsKeepTheOrderOfJoining) {
  const auto ann = AddPerson("Ann");
  const auto ben = AddPerson("Ben");
  db().AddMembership(1, ben);
  db().AddToGroupIfAbsent(ann, 1);
  db().AddToGroupIfAbsent(ann, 1);
  db().AddMembership(1, ben);
  EXPECT_EQ(NamesIn(1), "Ben Ann Ben ");
  db().RemoveFromGroup(ben, 1);
  EXPECT_EQ(NamesIn(1), "Ann Ben ");
  db().RemoveFromGroup(ben, 1);
  db().RemoveFromGroup(ben, 1);
  EXPECT_FALSE(db().IsMember(ben, 1));
  EXPECT_TRUE(db().IsMember(ann, 1));
  EXPECT_FALSE(db().IsMember(1, ann + 1));
}

}  // namespace
}  // namespace orvalo::test
