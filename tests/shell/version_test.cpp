#include <gtest/gtest.h>

#include "net/version_info.h"
#include "shell/shell_bench.h"

namespace orvalo {
namespace {

TEST(VersionTest, ComparesByItsParts) {
  const FileVersion own = FileVersion::FromParts({3, 2, 1, 16});
  EXPECT_EQ(own.high, 0x00030002u);
  EXPECT_EQ(own.low, 0x00010010u);
  EXPECT_EQ(FileVersion::FromParts(ProgramVersion().Parts()), ProgramVersion());
  EXPECT_GT(ProgramVersion(), FileVersion());
  const struct {
    std::array<std::int32_t, 4> other;
    bool newer;
  } cases[] = {{{3, 2, 1, 17}, true},  {{3, 2, 1, 16}, false}, {{3, 2, 0, 99}, false},
               {{3, 3, 0, 0}, true},   {{4, 0, 0, 0}, true},   {{0, 0, 0, 0}, false},
               {{3, 1, 99, 99}, false}};
  for (const auto& c : cases) {
    EXPECT_EQ(FileVersion::FromParts(c.other) > own, c.newer);
    EXPECT_EQ(FileVersion::FromParts(c.other).Parts(), c.other);
  }
}

TEST(VersionTest, TellsTheNamesAndVersions) {
  const struct {
    const char* client;
    const char* component;
    const char* name;
    const char* comms;
  } cases[] = {{"Orvalo", "COM 3.2", "Orvalo", "Comms: 3.2"},
               {"Other", "COM", "SMS", "Comms: "},
               {"", "", "SMS", "Comms: "}};
  test::ShellBench bench;
  for (const auto& c : cases) {
    bench.settings.SetText(TextSetting::kClientId, c.client);
    bench.fake.On("Version", c.component);
    const auto lines = VersionLines(bench.settings, bench.texts, bench.gateway.get());
    EXPECT_EQ(lines[0], c.name);
    EXPECT_EQ(lines[1].rfind("Version: 3.", 0), 0u) << lines[1];
    EXPECT_EQ(lines[2], c.comms);
  }
  EXPECT_EQ(VersionLines(bench.settings, bench.texts, nullptr)[2], "Comms: ");
}

}  // namespace
}  // namespace orvalo
