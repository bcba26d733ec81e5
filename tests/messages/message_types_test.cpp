#include "messages/message_types.h"

#include <gtest/gtest.h>

#include <string>

namespace orvalo {
namespace {

TEST(MessageTypesTest, SayWhichInputsATypeHas) {
  constexpr std::uint32_t kTyped = 63;
  constexpr std::uint32_t kFile = kBrowseButton | kPathField;
  const struct {
    std::int32_t type;
    std::uint32_t inputs;
    int filter_id;
    bool file;
  } cases[] = {
      {0, kTyped, 1326, false},
      {1, kTyped, 1326, false},
      {2, kTyped, 1326, false},
      {3, kFile, 1328, true},
      {4, kFile | kPicturePreview, 1330, true},
      {5, kFile | kPicturePreview, 1330, true},
      {6, kFile, 1326, true},
      {7, kFile, 1326, true},
      {8, 0, 1326, false},
      {9, 0, 1326, false},
      {-1, 0, 1326, false},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(ComposeInputsOf(c.type), c.inputs) << c.type;
    EXPECT_EQ(ImportFilterOf(c.type).filter_id, c.filter_id) << c.type;
    EXPECT_EQ(ImportFilterOf(c.type).default_id, c.filter_id - 1) << c.type;
    EXPECT_EQ(IsFileType(c.type), c.file) << c.type;
  }
}

TEST(MessageTypesTest, CountAndLimitCharacters) {
  const std::string euro = "\u20ac";
  std::string euros;
  for (int i = 0; i < 161; ++i) euros += euro;
  const struct {
    std::string text;
    const char* counter;
    std::size_t kept;  // bytes
  } cases[] = {
      {"", "0 (1)", 0},
      {"Hello", "5 (1)", 5},
      {std::string(160, 'x'), "160 (1)", 160},
      {std::string(161, 'x'), "161 (2)", 160},
      {std::string(321, 'x'), "321 (3)", 160},
      {euros, "161 (2)", 160 * euro.size()},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(LengthCounter(c.text), c.counter);
    EXPECT_EQ(LimitText(c.text, false).size(), c.kept);
    EXPECT_EQ(LimitText(c.text, true), c.text);
  }
}

}  // namespace
}  // namespace orvalo
