#include "net/version_info.h"

#include <gtest/gtest.h>

#include <random>

#include "net/link_message.h"
#include "support/temporary_folder.h"

namespace orvalo::test {
namespace {

TEST(VersionInfoTest, ReadsTheBlockOfAModule) {
  VersionInfo own;
  ASSERT_TRUE(ReadVersionInfo("", &own));
  EXPECT_EQ(own.fixed[0], 0xFEEF04BDu);
  EXPECT_EQ(own.file_version(), ProgramVersion());
  EXPECT_EQ(own.file_version().Parts()[0], 3);
  EXPECT_EQ(own.language, 0x0409);
  EXPECT_EQ(own.code_page, 65001);
  EXPECT_EQ(own.block.size(), 56u);

  const TemporaryFolder folder;
  const std::string program = Slurp("/proc/self/exe");
  const std::string copy = folder.File("copy");
  Spill(copy, program);
  VersionInfo other;
  ASSERT_TRUE(ReadVersionInfo(copy, &other));
  EXPECT_EQ(other.block, own.block);

  // Another version, another signature; only the first has no meaning elsewhere in the file.
  const auto at = program.find(own.block);
  std::string patched = program;
  patched[at + 8] = 7;
  Spill(copy, patched);
  ASSERT_TRUE(ReadVersionInfo(copy, &other));
  EXPECT_EQ(other.file_version().Parts()[1], 7);
  patched[at] = 0;
  Spill(copy, patched);
  EXPECT_FALSE(ReadVersionInfo(copy, &other));
  EXPECT_EQ(other.file_version().Parts()[1], 7);

  // Loaded modules without a block, modules that are none, files that break off.
  for (const char* none : {"libc.so.6", "libnone.so", "/none", "/etc/passwd", "/"})
    EXPECT_FALSE(ReadVersionInfo(none, &other)) << none;
  EXPECT_FALSE(ReadVersionInfo("/" + std::string(300, 'x'), &other));
  std::mt19937 random(1);
  for (int i = 0; i < 50; ++i) {
    std::string damaged = program.substr(0, i == 0 ? 64 : program.size());
    for (int byte = 0; byte < 4 && i != 0; ++byte)
      damaged[32 + random() % 32] = static_cast<char>(random());  // offsets and counts
    Spill(copy, damaged);
    ReadVersionInfo(copy, &other);
  }
}

TEST(VersionInfoTest, ParsesWhatAServerTells) {
  const struct {
    const char* text;
    std::array<std::int32_t, 4> parts;
  } cases[] = {{"3.2.1.17", {3, 2, 1, 17}},
               {"3.2.1.17 beta\n5", {3, 2, 1, 17}},
               {"4", {4, 0, 0, 0}},
               {" 4. 5", {4, 5, 0, 0}},
               {"", {0, 0, 0, 0}},
               {"x.3.2.1", {0, 0, 0, 0}},
               {"3.x.2.1", {3, 0, 0, 0}},
               {"3 .2", {3, 0, 0, 0}},
               {"1.2.3.4.5", {1, 2, 3, 4}},
               {"\xef\xbb\xbf"
                "3",
                {0, 0, 0, 0}}};
  for (const auto& c : cases) EXPECT_EQ(ParseFileVersion(c.text).Parts(), c.parts) << c.text;
}

TEST(LinkMessage, CompletesItsAddress) {
  EXPECT_EQ(LinkAddress("https://help.example", 12), "https://help.example?help=12");
  EXPECT_EQ(LinkAddress("https://help.example", 0), "https://help.example");
  EXPECT_EQ(LinkAddress("", 12), "https://www.orvalo.example");
}

}  // namespace
}  // namespace orvalo::test
