#include "platform/code_page.h"

#include <gtest/gtest.h>

#include "platform/terminal.h"

namespace orvalo::test {
namespace {

using platform::CountCharacters;
using platform::FirstBytes;
using platform::FirstCharacters;
using platform::FromWide;
using platform::IsValidUtf8;
using platform::ToWide;

TEST(CodePage, KeepsCharactersThereAndBack) {
  for (char32_t code = 0; code <= 0x10FFFF; code += code < 0x900 ? 1 : 13) {
    if (code >= 0xD800 && code <= 0xDFFF) continue;
    std::u16string wide;
    if (code >= 0x10000) {
      wide += static_cast<char16_t>(0xD7C0 + (code >> 10));
      wide += static_cast<char16_t>(0xDC00 + (code & 0x3FF));
    } else {
      wide += static_cast<char16_t>(code);
    }
    const std::string text = FromWide(wide);
    const std::size_t length = code < 0x80 ? 1 : code < 0x800 ? 2 : code < 0x10000 ? 3 : 4;
    ASSERT_EQ(text.size(), length) << std::hex << static_cast<unsigned>(code);
    ASSERT_TRUE(IsValidUtf8(text)) << std::hex << static_cast<unsigned>(code);
    ASSERT_EQ(CountCharacters(text), 1u) << std::hex << static_cast<unsigned>(code);
    ASSERT_EQ(ToWide(text), wide) << std::hex << static_cast<unsigned>(code);
  }
}

TEST(CodePage, ConvertsMixedTextsAcrossTheFastPath) {
  for (std::size_t before = 0; before < 20; ++before) {
    const std::string ascii(before, 'x');
    EXPECT_EQ(ToWide(ascii + "é" + ascii + "😀"),
              std::u16string(before, u'x') + u"é" + std::u16string(before, u'x') + u"😀");
  }
  EXPECT_EQ(FromWide(u"a\0b"), "a");  // a literal ends there
  EXPECT_EQ(ToWide(std::string_view("a\0é", 4)), std::u16string_view(u"a\0é", 3));
}

TEST(CodePage, ReplacesEachOffendingSequenceOnce) {
  struct {
    std::string_view bytes;
    std::u16string_view wide;
    std::size_t characters;
  } const kCases[] = {
      {"a\xFFz", u"a\uFFFDz", 3},
      {"\x80\x80", u"\uFFFD\uFFFD", 2},
      {"\xC0\xAF", u"\uFFFD\uFFFD", 2},                      // overlong
      {"\xE0\x80\xAF", u"\uFFFD\uFFFD\uFFFD", 3},            // overlong
      {"\xED\xA0\x80", u"\uFFFD\uFFFD\uFFFD", 3},            // a surrogate
      {"\xF4\x90\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD", 4},  // beyond the last character
      {"\xE2\x82", u"\uFFFD", 2},  // broken off: one sequence, two stray bytes
      {"\xF0\x9F\x98z", u"\uFFFDz", 4},
      {"\xE2\x82\xE2\x82\xAC", u"\uFFFD\u20AC", 3},
  };
  for (const auto& [bytes, wide, characters] : kCases) {
    EXPECT_EQ(ToWide(bytes), wide) << ::testing::PrintToString(bytes);
    EXPECT_FALSE(IsValidUtf8(bytes)) << ::testing::PrintToString(bytes);
    EXPECT_EQ(CountCharacters(bytes), characters) << ::testing::PrintToString(bytes);
  }
  const char16_t kLone[] = {u'a', 0xD83D, u'b', 0xDE00, 0xD83D, 0};
  EXPECT_EQ(FromWide(kLone), "a\uFFFDb\uFFFD\uFFFD");
}

TEST(CodePage, CutsBetweenCharactersOnly) {
  const std::string_view text = "aé€😀z";  // 1, 2, 3, 4 and 1 bytes
  const std::string_view by_characters[] = {"", "a", "aé", "aé€", "aé€😀", "aé€😀z", "aé€😀z"};
  for (std::size_t count = 0; count < std::size(by_characters); ++count)
    EXPECT_EQ(FirstCharacters(text, count), by_characters[count]) << count;
  const std::string_view by_bytes[] = {"",    "a",   "a",   "aé",  "aé",   "aé",
                                       "aé€", "aé€", "aé€", "aé€", "aé€😀", "aé€😀z"};
  for (std::size_t count = 0; count < std::size(by_bytes); ++count)
    EXPECT_EQ(FirstBytes(text, count), by_bytes[count]) << count;
  // Stray bytes are characters of their own and never pull a cut back.
  EXPECT_EQ(FirstBytes("\xFF\xFF\xFF", 2), "\xFF\xFF");
  EXPECT_EQ(FirstBytes("ab\xE2z", 3), "ab\xE2");
  EXPECT_EQ(FirstCharacters("\xE2\x82z", 2), "\xE2\x82");
}

TEST(Terminal, IsNotSteeredByWhatOthersWrote) {
  const struct {
    std::string text, line;
  } cases[] = {{"plain, Gr\xC3\xBC\xC3\x9F e, \xF0\x9F\x98\x80", ""},
               {"\x1B[2Ja\r\n\tb\x7F", "[2Ja b"},
               {"a\xC2\x9B\xC2\x85"
                "2Jb\xC2\x90",
                "a 2Jb"},
               {"a\xE2\x80\xA8"
                "b",
                "a b"},
               {"\x9B"
                "2J\xC2",
                "\xEF\xBF\xBD"
                "2J\xEF\xBF\xBD"},
               {"a\xE2\x80\xAE"
                "b\xE2\x81\xA6",
                "a\xEF\xBF\xBD"
                "b\xEF\xBF\xBD"}};
  for (const auto& c : cases)
    EXPECT_EQ(platform::PrintableLine(c.text), c.line.empty() ? c.text : c.line);
  EXPECT_EQ(platform::PrintableJson("{\"a\":\"\xC2\x9B\x7F\xE2\x80\xAE\xC3\xBC\"}\n"),
            "{\"a\":\"\\u009b\\u007f\\u202e\xC3\xBC\"}\n");
}

}  // namespace
}  // namespace orvalo::test
