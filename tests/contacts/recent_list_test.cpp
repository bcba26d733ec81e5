#include "contacts/recent_list.h"

#include <gtest/gtest.h>

#include <string>

#include "app/settings.h"

namespace orvalo::test {
namespace {

class RecentListTest : public testing::Test {
 protected:
  std::string Numbers() const {
    std::string numbers;
    for (std::size_t slot = 0; slot < list_.size(); ++slot) {
      numbers += list_.Number(slot) + (list_.IsSelected(slot) ? "*;" : ";");
    }
    return numbers;
  }

  AppSettings settings_;
  RecentList list_{settings_};
};

TEST_F(RecentListTest, KeepsTheNewestTenDistinctNumbers) {
  for (int i = 0; i < 11; ++i) list_.AddRecent("Direct", "", std::to_string(100 + i));
  EXPECT_EQ(Numbers(), "110;109;108;107;106;105;104;103;102;101;");
  list_.AddRecent("Other", "", "110");
  list_.AddRecent("Other", "", "104");
  list_.AddRecent("Nobody", "", "");
  EXPECT_EQ(Numbers(), "110;109;108;107;106;105;104;103;102;101;");
  EXPECT_EQ(list_.Label(0), "Direct (110)");
  list_.ClearRecent();
  EXPECT_EQ(list_.size(), 0u);
}

TEST_F(RecentListTest, MarksMoveWithTheirEntries) {
  list_.AddRecent("", "", "1");
  list_.AddRecent("", "", "2");
  list_.Select(1, true);
  list_.Select(7, true);
  list_.AddRecent("", "", "3");
  EXPECT_EQ(Numbers(), "3;2;1*;");
  EXPECT_EQ(list_.SelectedCount(), 1u);
  list_.ClearSelections();
  EXPECT_EQ(Numbers(), "3;2;1;");
}

TEST_F(RecentListTest, RecordHasTheStoredLayout) {
  list_.AddRecent("J\xC3\xA9", "Doe", "0831234567");
  list_.Select(0, true);
  RecentRecord expected{};
  expected[0] = 3;
  expected[1] = 2;
  const std::string label = "J\xC3\xA9 Doe (0831234567)", number = "0831234567";
  std::copy(label.begin(), label.end(), expected.begin() + 4);
  std::copy(number.begin(), number.end(), expected.begin() + 90);
  EXPECT_EQ(settings_.Recent().at(0), expected);
}

TEST_F(RecentListTest, LongTextsAreCutToTheirFieldsAtACharacter) {
  std::string name;
  for (int i = 0; i < 50; ++i) name += "\xC3\xA9";
  list_.AddRecent(name, "", "12345678901234567890");
  EXPECT_EQ(list_.Label(0), name.substr(0, 84));
  EXPECT_EQ(list_.Number(0), "1234567890123456");
  list_.AddRecent(name, "", "12345678901234567890");
  EXPECT_EQ(list_.size(), 1u);
}

TEST_F(RecentListTest, DamagedRecordsAreNoEntries) {
  RecentRecord full{}, no_number{}, empty_flag{}, other_kind{};
  full.fill('7');  // no zero byte anywhere
  full[0] = 3;
  full[1] = 0;
  no_number[0] = 3;
  empty_flag = full;
  empty_flag[1] = 3;
  other_kind = full;
  other_kind[0] = 1;
  settings_.SetRecent({full, no_number, empty_flag, other_kind});
  EXPECT_EQ(list_.Label(0), std::string(86, '7'));
  EXPECT_EQ(list_.Number(0), std::string(17, '7'));
  for (const std::size_t slot : {1, 2, 3, 4}) {
    list_.Select(slot, true);
    EXPECT_FALSE(list_.IsFilled(slot) || list_.IsSelected(slot)) << slot;
    EXPECT_EQ(list_.Label(slot) + list_.Number(slot), "") << slot;
  }
  EXPECT_EQ(list_.SelectedCount(), 0u);
}

}  // namespace
}  // namespace orvalo::test
