#include "store/group_list.h"

#include "store_fixture.h"

namespace orvalo::test {
namespace {

using testing::ElementsAre;

class GroupListTest : public StoreTest {
 protected:
  std::vector<std::string> Labels() const {
    std::vector<std::string> labels;
    for (const auto& entry : list_.entries()) {
      labels.push_back(entry.label + (entry.stale ? "!" : ""));
    }
    return labels;
  }
  GroupDisplayList list_{db()};
};

TEST_F(GroupListTest, LabelsCountsAndStaleEntries) {
  const auto friends = db().AddGroup("Friends").gid;
  const auto empty = db().AddGroup("Empty").gid;
  list_.Build();
  EXPECT_THAT(Labels(), ElementsAre("All Contacts", "Friends (0)", "Empty (0)"));

  const auto ann = AddPerson("Ann", {1, friends});
  AddPerson("Ben", {friends});
  list_.RefreshCounts();
  EXPECT_THAT(Labels(), ElementsAre("All Contacts (1)", "Friends (2)", "Empty (0)"));

  db().RemoveFromGroup(ann, 1);
  list_.RefreshCounts();  // a group that has become empty keeps what it shows ...
  EXPECT_EQ(list_.Find(1)->label, "All Contacts (1)");
  list_.Build();  // ... until the list is built again
  EXPECT_EQ(list_.Find(1)->label, "All Contacts");

  db().DeleteGroup(friends);
  db().RenameGroup(empty, "Renamed");
  db().AddGroup("New");
  list_.Build();
  EXPECT_THAT(Labels(), ElementsAre("All Contacts", "Friends (2)!", "Renamed (0)", "New (0)"));
  EXPECT_EQ(list_.Find(empty)->name, "Renamed");
  list_.DropStale();
  EXPECT_THAT(Labels(), ElementsAre("All Contacts", "Renamed (0)", "New (0)"));
  EXPECT_EQ(list_.Find(friends), nullptr);
}

}  // namespace
}  // namespace orvalo::test
