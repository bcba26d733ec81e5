#include "service/message_parts.h"

#include <gtest/gtest.h>

#include "service/gsm_alphabet.h"
#include "service/secrets.h"

namespace orvalo::test {
namespace {

using service::Alphabet;

std::string Times(int count, const std::string& text) {
  std::string all;
  for (int i = 0; i < count; ++i) all += text;
  return all;
}

TEST(MessageParts, KeepEveryCharacterWithinItsRoom) {
  const struct {
    std::string text;
    service::PartingRules rules;
    Alphabet alphabet;
    std::vector<std::size_t> bodies;  // in octets; UTF-8 for the GSM alphabet
    const char* last_header;          // hexadecimal
  } cases[] = {
      {"", {}, Alphabet::kGsm, {0}, ""},
      {Times(160, "x"), {}, Alphabet::kGsm, {160}, ""},
      {Times(161, "x"), {.reference = 0xA7}, Alphabet::kGsm, {153, 8}, "050003a70202"},
      {Times(80, "€"), {}, Alphabet::kGsm, {240}, ""},                  // two septets each
      {Times(81, "€"), {}, Alphabet::kGsm, {228, 15}, "050003000202"},  // no escape cut: 152 + 10
      {Times(160, "x") + "ж", {}, Alphabet::kUcs2, {134, 134, 54}, "050003000303"},
      {Times(69, "x") + "ж", {.type = 1}, Alphabet::kUcs2, {140}, ""},
      {"plain", {.unicode = true}, Alphabet::kUcs2, {10}, ""},
      {Times(35, "😀"), {.unicode = true}, Alphabet::kUcs2, {140}, ""},
      {Times(36, "😀"), {.unicode = true}, Alphabet::kUcs2, {132, 12}, "050003000202"},
      {Times(133, "0a"), {.type = 8}, Alphabet::kBinary, {133}, "06050423f40000"},
      {Times(134, "1b"),
       {.type = 9, .reference = 1},
       Alphabet::kBinary,
       {128, 6},
       "0b050423f500000003010202"},
      {"ff", {.type = 3}, Alphabet::kBinary, {1}, "06050415820000"},
      {"ff", {.type = 5}, Alphabet::kBinary, {1}, "060504158a0000"},
      {"ff", {.type = 6}, Alphabet::kBinary, {1}, "06050415810000"},
  };
  for (const auto& one : cases) {
    const auto message = service::SplitMessage(one.text, one.rules);
    ASSERT_TRUE(message) << one.text;
    EXPECT_EQ(message->alphabet, one.alphabet) << one.text;
    EXPECT_EQ(message->message_class, one.rules.type > 1 ? 1 : one.rules.type - 1) << one.text;
    std::vector<std::size_t> bodies;
    for (const auto& part : message->parts) bodies.push_back(part.body.size());
    EXPECT_EQ(bodies, one.bodies) << one.text;
    EXPECT_EQ(service::ToHex(message->parts.back().header), one.last_header) << one.text;
  }
  EXPECT_EQ(service::SplitMessage(Times(255 * 153, "x"), {})->parts.size(), 255u);
  EXPECT_FALSE(service::SplitMessage(Times(255 * 153 + 1, "x"), {}));
}

TEST(MessageParts, HoldTheWholeTextInItsOrder) {
  std::string text, together;
  for (int i = 0; i < 400; ++i) text += i % 3 == 0 ? "[ä" : std::to_string(i);
  const auto message = service::SplitMessage(text, {.reference = 9});
  ASSERT_TRUE(message);
  for (std::size_t i = 0; i < message->parts.size(); ++i) {
    const auto& [header, body] = message->parts[i];
    together += body;
    EXPECT_LE(service::ToGsm(body)->size(), 153u);
    const std::string expected{
        5, 0, 3, 9, static_cast<char>(message->parts.size()), static_cast<char>(i + 1)};
    EXPECT_EQ(header, expected);
  }
  EXPECT_EQ(together, text);
}

TEST(GsmAlphabet, TakesNothingThatItCannotCarry) {
  EXPECT_EQ(service::ToGsm("@Ç_à"), (std::string{0, 9, 0x11, 0x7F}));
  EXPECT_EQ(service::ToGsm("€^"), (std::string{0x1B, 0x65, 0x1B, 0x14}));
  for (const char* other : {"ç", "`", "ê", "\t", "\x1b", "\u00a0", "“", "ж", "😀", "\xff"})
    EXPECT_FALSE(service::ToGsm(std::string("a") + other)) << other;
}

}  // namespace
}  // namespace orvalo::test
