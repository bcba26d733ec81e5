#include "shell/banner.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "platform/resource_container.h"
#include "shell/shell_bench.h"
#include "shell/shell_messages.h"
#include "support/recording_mailbox.h"
#include "support/scoped_variable.h"
#include "support/scripted_http_server.h"

namespace orvalo {
namespace {

using test::Slurp;
using test::Spill;

TEST(BannerTest, ShowsOnlyASoundPictureOfItsSize) {
  const test::TemporaryFolder folder;
  const std::string good = Slurp(ORVALO_BANNER);
  const std::size_t header = good.find("IHDR");
  ASSERT_NE(header, std::string::npos);
  const auto with = [&](std::size_t at, char byte) {
    std::string changed = good;
    changed[at] = byte;
    return changed;
  };
  const struct {
    const char* what;
    std::string bytes;
    bool shown;
  } cases[] = {{"good", good, true},
               {"too wide", with(header + 4, 1), false},
               {"too high", with(header + 11, 82), false},
               {"no PNG", with(header - 8, 'J'), false},
               {"no container", "no container", false},
               {"a cut one", good.substr(0, good.size() / 2), false},
               {"a program", Slurp("/proc/self/exe").substr(0, 100'000), false},
               {"another entry", with(good.find(std::string("1\0000\0001", 5)), '2'), false},
               {"empty", "", false}};
  // The language's container stays where it is.
  const auto language = platform::ResourceContainer::Load(ORVALO_BANNER, nullptr);
  for (const auto& c : cases) {
    Spill(folder.File("XInfo.rcc"), c.bytes);
    const auto picture = ReadBanner(folder.path());
    EXPECT_EQ(picture.has_value(), c.shown) << c.what;
    EXPECT_TRUE(!picture || picture == language->Read("images/101.png")) << c.what;
  }
  EXPECT_FALSE(ReadBanner(folder.File("none")));
}

TEST(BannerTest, FetchesWebAddressesOnlyAndAnewWithEachStart) {
  test::ScriptedHttpServer server([](const test::RecordedRequest& request) {
    EXPECT_EQ(request.path, "/good");
    return test::ScriptedReply{200, Slurp(ORVALO_BANNER)};
  });
  test::ShellBench bench;
  test::RecordingMailbox window;
  const std::string file = bench.folder.File("XInfo.rcc");
  const test::ScopedVariable no_desktop("XDG_CURRENT_DESKTOP", "KDE");
  const test::ScopedVariable no_settings("XDG_CONFIG_HOME", bench.folder.path().c_str());
  const auto fetch = [&](const std::string& path, std::size_t times) {
    bench.settings.SetText(TextSetting::kBackgroundImagePath, path);
    BannerDownload download(
        {bench.settings, bench.texts, bench.boxes, window, bench.folder.path(), {}});
    download.Start();
    for (std::size_t time = 1; time <= times; ++time) {
      EXPECT_TRUE(window.Await([&](const auto& messages) { return messages.size() == time; }));
      if (time < times) download.Start();
    }
  };
  for (const std::string path : {"", "/some/picture.png", "file:///etc/passwd", "htt"})
    fetch(path, 0);
  EXPECT_TRUE(server.requests().empty());
  fetch("HTTP" + server.address().substr(4) + "/good", 2);
  EXPECT_EQ(server.requests().size(), 2u);
  EXPECT_EQ(std::get<0>(window.messages()[0]), kWmBanner);
  EXPECT_TRUE(ReadBanner(bench.folder.path()));
  EXPECT_TRUE(bench.boxes.shown().empty());
}

}  // namespace
}  // namespace orvalo
