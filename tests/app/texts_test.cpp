#include "app/texts.h"

#include <gtest/gtest.h>

namespace orvalo::test {
namespace {

class OneEntryContainer : public platform::ResourceContainer {
 public:
  explicit OneEntryContainer(std::optional<std::string> strings) : strings_(std::move(strings)) {}
  std::optional<std::string> Read(std::string_view path) const override {
    return path == "strings.json" ? strings_ : std::nullopt;
  }
  std::string Root() const override { return ":/test"; }
  std::vector<std::string> Paths() const override { return {"strings.json"}; }

 private:
  std::optional<std::string> strings_;
};

TEST(TextsTest, TheOwnContainerHasTheTexts) {
  const Texts texts;
  EXPECT_EQ(texts.Load(1249),
            "Time:     %1!s!\r\nStatus:   %2!s!\r\nCharge:   %3!s!\r\nTo:       ");
  const std::pair<int, int> tables[] = {
      {1024, 1033}, {1216, 1233}, {1312, 1320}, {1456, 1482}, {1520, 1537}};
  for (const auto& [first, last] : tables) {
    for (int id = first; id <= last; ++id) EXPECT_NE(texts.LoadOrEmpty(id), "") << id;
  }
  EXPECT_EQ(texts.Format(1186, {"Sending SMS", 2, 10}), "Sending SMS: 2 of 10");
  EXPECT_EQ(texts.Format(1033, {3, 2, 2003, 9, 5}), "03/02/2003 09:05");
  EXPECT_EQ(texts.Format(1177, {"too few"}), std::nullopt);
  EXPECT_EQ(texts.Format(1177, {3, "swapped"}), std::nullopt);
}

TEST(TextsTest, AnotherContainerReplacesAllTexts) {
  Texts texts;
  const std::string longest(70'000, 'x');
  ASSERT_TRUE(texts.UseContainer(OneEntryContainer(
      R"({"1": 5, "2": ["x"], "3x": "c", "65536": "d", "7": "", "8": "acht", "9": ")" + longest +
      R"("})")));
  EXPECT_EQ(texts.Load(8), "acht");
  EXPECT_EQ(texts.Load(9), longest);
  // What it lacks, holds empty or spells wrong shows its id; nothing of the old language is mixed
  // in.
  for (const int id : {1, 2, 3, 7, 1024, 65536, -1}) {
    EXPECT_EQ(texts.Load(id), "String [" + std::to_string(id) + "]");
    EXPECT_EQ(texts.LoadOrEmpty(id), "");
    EXPECT_EQ(texts.Format(id, {}), std::nullopt);
  }
}

TEST(TextsTest, AnUnsoundContainerChangesNothing) {
  Texts texts;
  const std::optional<std::string> unsound[] = {std::nullopt,
                                                "",
                                                "{",
                                                "[]",
                                                "null",
                                                R"({"1": "x"} trailing)",
                                                "{\"1\": \"\xFF\xFE\"}",
                                                std::string(100'000, '[')};
  for (const auto& strings : unsound) {
    EXPECT_FALSE(texts.UseContainer(OneEntryContainer(strings))) << strings.value_or("missing");
    EXPECT_EQ(texts.Load(1026), "Close");
  }
}

}  // namespace
}  // namespace orvalo::test
