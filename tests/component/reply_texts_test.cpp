#include "component/reply_texts.h"

#include <gtest/gtest.h>

namespace orvalo::component {
namespace {

TEST(ReplyTexts, ReadAsTheClientTakesThemApart) {
  EXPECT_EQ(StatusText(4), "status: 004");
  EXPECT_EQ(StatusText(11), "status: 011");
  EXPECT_EQ(ChargeText(4, "0.8"), "status: 004 charge: 0.8");
  EXPECT_EQ(ErrorText(202, "Not enough credit"), "ERR: 202, Not enough credit");
  EXPECT_EQ(ErrorText(202, " \n"), "ERR: 202");
}

TEST(ReplyTexts, MakeForeignWordsHarmless) {
  const std::pair<std::string, std::string> cases[] = {
      {"", ""},
      {"  a\t\r\n b\x7f\x01 c ", "a b c"},
      {"To: ID: ERR: tO:x", "To; ID; ERR; tO;x"},
      {"To:To:", "To;To:"},  // only a word's beginning counts
      {"auto: Valid: To", "auto: Valid: To"},
      {std::string("a\0b", 3), "a b"},
      {std::string(500, 'x'), std::string(200, 'x')},
  };
  for (const auto& [text, expected] : cases) EXPECT_EQ(PlainWords(text), expected);
}

}  // namespace
}  // namespace orvalo::component
