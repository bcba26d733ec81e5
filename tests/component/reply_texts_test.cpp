#include "component/reply_texts.h"

#include <gtest/gtest.h>

namespace orvalo::component {
namespace {

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
