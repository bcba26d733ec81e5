#include "messages/outbox_rows.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "messages/outbox_bench.h"
#include "platform/collation.h"

namespace orvalo {
namespace {

std::string Ids(const OutboxRows& rows) {
  std::string ids;
  for (std::size_t i = 0; i < rows.Count(); ++i) ids += std::to_string(rows.IdAt(i)) + " ";
  return ids;
}

TEST(OutboxRowsTest, SortByEveryColumn) {
  test::OutboxBench bench;
  bench.Add(300, ",b", "zebra", SmsStatus::kSent);
  bench.Add(100, ",\u00c4", "", SmsStatus::kMessageExpired);
  bench.Add(-5, ",a", "Apple", SmsStatus::kPending);
  bench.Add(200, ",B", "apple", SmsStatus::kFailed);
  bench.database.SetQueryAnswer(1, SmsStatus::kSent, {std::nullopt, "1.5"});
  bench.database.SetQueryAnswer(4, SmsStatus::kFailed, {std::nullopt, "1.25"});
  OutboxRows rows(bench.database);
  rows.Reload();
  EXPECT_EQ(Ids(rows), "3 2 4 1 ");
  const struct {
    OutboxColumn column;
    const char* ids;
  } cases[] = {
      {OutboxColumn::kRecipient, "3 2 1 4 "},
      {OutboxColumn::kStatus, "3 4 1 2 "},
      {OutboxColumn::kMessage, "2 4 3 1 "},
      {OutboxColumn::kTime, "3 2 4 1 "},
  };
  for (const auto& [column, ids] : cases) {
    rows.SortBy(column);
    EXPECT_EQ(Ids(rows), ids);
    rows.Reverse();
    std::string first = std::to_string(rows.IdAt(3));
    EXPECT_EQ(first, std::string(ids).substr(0, 1));
    rows.Reload();
    EXPECT_EQ(Ids(rows), ids) << "ascending again";
  }
  rows.SortBy(OutboxColumn::kCharge);
  EXPECT_EQ(Ids(rows).substr(4), "4 1 ") << "? before 1.25 before 1.5";
}

TEST(OutboxRowsTest, FollowAStatusOnlyWhenSortedByIt) {
  test::OutboxBench bench;
  for (int i = 0; i < 3; ++i) bench.Add(i + 1, ",1", "x", SmsStatus::kPending);
  OutboxRows rows(bench.database);
  rows.Reload();
  bench.database.SetSmsStatus(1, SmsStatus::kProcessing);
  const std::vector<std::int32_t> ids{1, 77};
  EXPECT_FALSE(rows.RefreshStatus(ids));
  EXPECT_EQ(Ids(rows), "1 2 3 ");
  rows.SortBy(OutboxColumn::kStatus);
  EXPECT_EQ(Ids(rows), "2 3 1 ");
  bench.database.SetSmsStatus(2, SmsStatus::kDelivered);
  EXPECT_TRUE(rows.RefreshStatus(std::vector<std::int32_t>{2}));
  EXPECT_EQ(Ids(rows), "3 2 1 ");
}

// Hundreds of changes between reloads: the order must always be the one of sorting from scratch.
TEST(OutboxRowsTest, KeepTheOrderOfTextsThroughChanges) {
  test::OutboxBench bench;
  std::mt19937 random(7);
  const auto text = [&] {
    const char* const starts[] = {"", "Dear customer, your order number ", "a", "A", "\u00e9", "-"};
    return starts[random() % 6] + std::string(random() % 12, 'x') + std::to_string(random() % 50);
  };
  const auto add = [&](int count) {
    for (int i = 0; i < count; ++i) bench.Add(1, ",1", text());
  };
  OutboxRows rows(bench.database);
  add(400);
  rows.SortBy(OutboxColumn::kMessage);
  for (const int changes : {0, 5, 300, 40}) {
    add(changes);
    for (int i = 0; i < changes; ++i) {
      const auto id = static_cast<std::int32_t>(random() % 700 + 1);
      if (i % 3 == 0) {
        bench.database.DeleteSms(id);
      } else {
        bench.database.BeginEditSms(id);
        bench.database.UpdateEditedSms(id, 0, ",1", text());
      }
    }
    rows.Reload();
    ASSERT_EQ(rows.Count(), static_cast<std::size_t>(bench.database.CountSms()));
    std::vector<std::string> shown;
    for (std::size_t i = 0; i < rows.Count(); ++i)
      shown.push_back(bench.database.GetSms(rows.IdAt(i))->msg);
    EXPECT_TRUE(std::is_sorted(shown.begin(), shown.end(), [](const auto& a, const auto& b) {
      return platform::CompareTexts(a, b) < 0;
    })) << changes;
    rows.SortBy(OutboxColumn::kTime);
    rows.SortBy(OutboxColumn::kMessage);
  }
}

TEST(OutboxRowsTest, OrderNumbersOfTheWholeRange) {
  using Limits = std::numeric_limits<std::int32_t>;
  const std::vector<std::int32_t> numbers{5, Limits::min(), 0,      -1, Limits::max(),
                                          5, 1 << 12,       1 << 23};
  const std::vector<std::uint32_t> order{1, 3, 2, 0, 5, 6, 7, 4};
  EXPECT_EQ(OrderOfNumbers(numbers), order);
  EXPECT_TRUE(OrderOfNumbers({}).empty());
}

}  // namespace
}  // namespace orvalo
