#include "platform/text_format.h"

#include <gtest/gtest.h>

#include <limits>
#include <random>
#include <vector>

namespace orvalo::test {
namespace {

using platform::FormatInsert;
using platform::FormatText;

struct FormatCase {
  std::string_view format;
  std::vector<FormatInsert> inserts;
  std::optional<std::string_view> result;
};

void CheckAll(const std::vector<FormatCase>& cases) {
  for (const auto& [format, inserts, result] : cases)
    EXPECT_EQ(FormatText(format, inserts), result) << format;
}

TEST(TextFormat, InsertsTextsAndNumbers) {
  const std::string name = "Ann";
  CheckAll({
      {"Are you sure you want to delete the %1!s! group and all its %2!d! members?",
       {"friends", 12},
       "Are you sure you want to delete the friends group and all its 12 members?"},
      {"%1!02d!/%2!02d!/%3!d! %4!02d!:%5!02d!", {7, 11, 2026, 9, 5}, "07/11/2026 09:05"},
      {"%2!s! %1!s! %2!s!", {"a", "b"}, "b a b"},
      {"%1 and %2", {name, std::string_view("Ben")}, "Ann and Ben"},
      {"%1!s!%2!s!", {"%2!s!", "%"}, "%2!s!%"},  // an insert is not a format
      {"%10%1", {"a", "", "", "", "", "", "", "", "", "j"}, "ja"},
      {"", {}, ""},
      {"no inserts", {"spare"}, "no inserts"},
  });
}

TEST(TextFormat, KnowsTheEscapes) {
  CheckAll({
      {"100%% sure%n%.%!% x", {}, "100% sure\n.! x"},
      {"line\r\nline\n", {}, "line\r\nline\n"},
      {"shown%0not shown %9!s!", {}, "shown"},
      {"%1%!", {"a"}, "a!"},
      {"50%x %t%r%\xC3\xA4", {}, "50x \t\r\xC3\xA4"},
  });
}

TEST(TextFormat, FollowsPrintfsFlagsWidthsAndConversions) {
  CheckAll({
      {"[%1!5d!][%1!-5d!][%1!05d!][%1!+d!][%1!.4d!]", {42}, "[   42][42   ][00042][+42][0042]"},
      {"[%1!5d!][%1!-5d!][%1!05d!][%1! d!]", {-42}, "[  -42][-42  ][-0042][-42]"},
      {"[%1!6.3i!][%1!06.3i!]", {7}, "[   007][   007]"},
      {"%1!x! %1!X! %1!#x! %1!08x! %1!u!", {48879}, "beef BEEF 0xbeef 0000beef 48879"},
      {"%1!x! %1!u!", {-1}, "ffffffff 4294967295"},
      {"%1!d!", {std::numeric_limits<std::int64_t>::min()}, "-9223372036854775808"},
      {"%1!x!", {std::numeric_limits<std::int64_t>::min()}, "8000000000000000"},
      {"%1!ld! %1!I64d! %1!llu! %1!hd!", {5}, "5 5 5 5"},
      {"[%1!6s!][%1!-6s!][%1!.2s!][%1!4.1s!]", {"é€a"}, "[   é€a][é€a   ][é€][   é]"},
      {"[%1!c!][%2!3c!]", {'A', 0x20AC}, "[A][  €]"},
  });
}

TEST(TextFormat, RefusesWhatDoesNotFit) {
  CheckAll({
      {"%2!s!", {"a"}, std::nullopt},  // not given
      {"%1!d!", {"a"}, std::nullopt},  // another kind
      {"%1!s!", {1}, std::nullopt},
      {"%1", {1}, std::nullopt},
      {"%1!c!", {0x110000}, std::nullopt},
      {"%1!c!", {0xD800}, std::nullopt},
      {"%1!s", {"a"}, std::nullopt},  // malformed
      {"%1!", {"a"}, std::nullopt},
      {"%1!!", {"a"}, std::nullopt},
      {"%1!*d!", {5, 5}, std::nullopt},
      {"%1!n!", {5}, std::nullopt},
      {"%1!f!", {5}, std::nullopt},
      {"50%", {}, std::nullopt},
      {"%99999999999999999999!s!", {"a"}, std::nullopt},
  });
}

TEST(TextFormat, StaysSmallAndSoundWhateverTheTextSays) {
  const std::vector<FormatInsert> inserts = {"text", 42, -1, "é"};
  EXPECT_EQ(FormatText("%2!99999999999d!", inserts)->size(), 255u);
  EXPECT_EQ(FormatText("%2!.99999999999d!", inserts)->size(), 255u);
  EXPECT_EQ(FormatText("%1!.99999999999s!", inserts), "text");
  constexpr std::string_view kAlphabet = "%%%%!!!12340.-+ #sdxXcluI64n\xE2";
  std::mt19937 random(7);
  int formatted = 0;
  for (int round = 0; round < 20'000; ++round) {
    std::string format;
    for (std::size_t i = random() % 16; i > 0; --i)
      format += kAlphabet[random() % kAlphabet.size()];
    const auto text = FormatText(format, inserts);
    if (!text) continue;
    ++formatted;
    EXPECT_LE(text->size(), format.size() * 256) << format;
  }
  EXPECT_GT(formatted, 1000);
}

}  // namespace
}  // namespace orvalo::test
