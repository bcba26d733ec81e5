#include "platform/collation.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <thread>
#include <vector>

namespace orvalo::test {
namespace {

using platform::CompareTexts;
using platform::EqualNoCase;
using platform::SortKey;
using platform::ToLower;
using platform::ToUpper;

// Before any text is compared: the order must be a dictionary's even where the environment asks for
// bytes.
const bool kPlainLocale = setenv("LC_ALL", "C", 1) == 0;

TEST(Collation, MapsCaseOfEveryAlphabet) {
  struct {
    std::string_view text, upper, lower;
  } const kCases[] = {
      {"", "", ""},
      {"Ann-1 i", "ANN-1 I", "ann-1 i"},
      {"Élan ÄÖ", "ÉLAN ÄÖ", "élan äö"},
      {"Straße", "STRASSE", "straße"},
      {"Ŋ Ж Ω", "Ŋ Ж Ω", "ŋ ж ω"},
      {"ΟΔΟΣ", "ΟΔΟΣ", "οδος"},
      {"ŉŉŉŉŉŉŉŉ", "ʼNʼNʼNʼNʼNʼNʼNʼN", "ŉŉŉŉŉŉŉŉ"},  // grows
      {"Abc\xFFÉ", "ABC\xFFÉ", "abc\xFFÉ"},          // not UTF-8: nothing is lost
  };
  for (const auto& [text, upper, lower] : kCases) {
    EXPECT_EQ(ToUpper(text), upper);
    EXPECT_EQ(ToLower(text), lower);
  }
}

TEST(Collation, ComparesWithoutRegardToCase) {
  EXPECT_TRUE(EqualNoCase("", ""));
  EXPECT_TRUE(EqualNoCase("Friends", "fRIENDS"));
  EXPECT_TRUE(EqualNoCase("É", "é"));
  EXPECT_TRUE(EqualNoCase("ß", "ẞ"));
  EXPECT_TRUE(EqualNoCase("οδος", "ΟΔΟΣ"));
  EXPECT_FALSE(EqualNoCase("É", "e"));
  EXPECT_FALSE(EqualNoCase("a", "ab"));
  EXPECT_FALSE(EqualNoCase("[", "{"));        // 32 apart, but no letters
  EXPECT_FALSE(EqualNoCase("\xFE", "\xFF"));  // not UTF-8, and not the same
  EXPECT_TRUE(EqualNoCase("a\xFF", "A\xFF"));
  EXPECT_FALSE(platform::EqualNoCaseAscii("É", "é"));
  EXPECT_TRUE(platform::EqualNoCaseAscii("SetURL", "seturl"));
}

// A whole list in its order; every pair of it must compare so, by text and by key.
TEST(Collation, OrdersAsADictionaryDoes) {
  ASSERT_TRUE(kPlainLocale);
  const std::vector<std::string> sorted = {"",      "1",     "10",    "2",     "ab",    "Ab",
                                           "AB",    "abc",   "café",  "Café",  "cafes", "coop",
                                           "co'op", "co-op", "coop-", "CO-OP", "coops", "éa",
                                           "eb",    "Zebra", "ω",     "ж",     "日本"};
  for (std::size_t i = 0; i < sorted.size(); ++i) {
    for (std::size_t j = 0; j < sorted.size(); ++j) {
      const int expected = i < j ? -1 : i > j ? 1 : 0;
      EXPECT_EQ(CompareTexts(sorted[i], sorted[j]), expected) << sorted[i] << " and " << sorted[j];
      const int keys = SortKey(sorted[i]).compare(SortKey(sorted[j]));
      EXPECT_EQ((keys > 0) - (keys < 0), expected) << sorted[i] << " and " << sorted[j];
    }
  }
}

TEST(Collation, TellsApartWhatTheOrderDoesNot) {
  const std::string composed = "é", decomposed = "e\u0301";
  EXPECT_EQ(SortKey(composed), SortKey(decomposed));
  EXPECT_GT(CompareTexts(composed, decomposed), 0);
  EXPECT_LT(CompareTexts(decomposed, composed), 0);
  EXPECT_EQ(CompareTexts("a\xFF", "a\xFF"), 0);
  EXPECT_LT(CompareTexts("a\xFE", "a\xFF"), 0);
  const std::string long_text(5000, 'k');
  EXPECT_LT(SortKey(long_text), SortKey(long_text + "a"));
}

TEST(Collation, ServesManyThreads) {
  std::vector<int> orders(4);
  std::vector<std::thread> threads(orders.size());
  for (std::size_t i = 0; i < orders.size(); ++i) {
    threads[i] = std::thread([&order = orders[i]] {
      for (int round = 0; round < 500; ++round)
        order +=
            CompareTexts("é" + std::to_string(round), "f") + SortKey("É").compare(SortKey("É"));
    });
  }
  for (auto& thread : threads) thread.join();
  EXPECT_TRUE(std::all_of(orders.begin(), orders.end(), [](int sum) { return sum == -500; }));
}

}  // namespace
}  // namespace orvalo::test
