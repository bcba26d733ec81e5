#include "platform/machine_config.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "support/scoped_variable.h"
#include "support/temporary_folder.h"

namespace orvalo::platform {
namespace {

using test::ScopedVariable;
using test::Spill;
using test::TemporaryFolder;

TEST(MachineConfigTest, ReadsTheValueOfAName) {
  MachineConfig::Unreadable unreadable;
  const std::string longest(259, 'v');
  const struct {
    std::string text, value;
  } cases[] = {
      {"DataPath=/data", "/data"},
      {"Other=1\nDataPath=/data\nDataPath=/later\n", "/data"},
      {"[General]\r\n \tDataPath \t= /my data \r\n", "/my data"},
      {"# DataPath=/no\n;DataPath=/no\n  # DataPath=/no\nDATAPATH=/yes", "/yes"},
      {"[DataPath=/no]\nDataPath\nDataPath=/yes=and more", "/yes=and more"},
      {"\xEF\xBB\xBF"
       "DataPath=/after the mark",
       "/after the mark"},
      {"DataPath=\nDataPath=/never", ""},
      {"MyDataPath=/no\nDataPathToo=/no\n=/no\n\n", ""},
      {"DataPath=" + longest, longest},
      {"DataPath=" + longest + "w", longest + "w"},
      {"", ""},
  };
  for (const auto& [text, value] : cases) {
    TemporaryFolder folder;
    Spill(folder.File("conf"), text);
    EXPECT_EQ(MachineConfig({folder.File("conf")}).Read("DataPath", &unreadable), value) << text;
  }
}

TEST(MachineConfigTest, TheFirstFileWithTheNameWins) {
  MachineConfig::Unreadable unreadable;
  TemporaryFolder folder;
  Spill(folder.File("user"), "A=user\n");
  Spill(folder.File("machine"), "A=machine\nB=machine\n");
  const MachineConfig config({folder.File("missing"), folder.File("user"), folder.File("machine")});
  EXPECT_EQ(config.Read("A", &unreadable), "user");
  EXPECT_EQ(config.Read("B", &unreadable), "machine");
  EXPECT_EQ(config.Read("C", &unreadable), "");
  Spill(folder.File("user"), "A=changed\n");
  EXPECT_EQ(config.Read("A", &unreadable), "changed") << "files are read anew";

  // What cannot be read may say anything: the machine's file must not answer for the user's.
  const std::string large(1'100'000, '#');
  Spill(folder.File("large"), large);
  for (const std::string& path : {folder.path(), folder.File("large")}) {
    const MachineConfig broken({folder.File("missing"), path, folder.File("machine")});
    EXPECT_EQ(broken.Read("B", &unreadable), "");
    EXPECT_EQ(unreadable.path, path);
    EXPECT_NE(unreadable.error.detail, "");
    const ScopedVariable given("ORVALO_DATA_PATH", "/given");
    EXPECT_EQ(ReadDataPath(broken, &unreadable), "/given");
    EXPECT_EQ(unreadable.path, "") << "nobody has asked the file";
  }
}

TEST(MachineConfigTest, FindsTheUsersFile) {
  MachineConfig::Unreadable unreadable;
  TemporaryFolder folder;
  std::filesystem::create_directories(folder.File("xdg/Corvane"));
  std::filesystem::create_directories(folder.File("home/.config/Corvane"));
  Spill(folder.File("xdg/Corvane/Orvalo3.conf"), "Where=xdg");
  Spill(folder.File("home/.config/Corvane/Orvalo3.conf"), "Where=home");
  const ScopedVariable home("HOME", folder.File("home").c_str());
  const std::string xdg = folder.File("xdg");
  const std::pair<const char*, const char*> cases[] = {
      {xdg.c_str(), "xdg"}, {nullptr, "home"}, {"", "home"}, {"relative", "home"}};
  for (const auto& [value, where] : cases) {
    const ScopedVariable config_home("XDG_CONFIG_HOME", value);
    EXPECT_EQ(MachineConfig().Read("Where", &unreadable), where) << (value ? value : "unset");
  }
}

TEST(MachineConfigTest, TheEnvironmentNamesTheDataFolderFirst) {
  MachineConfig::Unreadable unreadable;
  TemporaryFolder folder;
  Spill(folder.File("conf"), "DataPath=/from the file\n");
  const MachineConfig config({folder.File("conf")});
  const std::string too_long(300, 'p');
  const std::pair<const char*, std::string> cases[] = {{nullptr, "/from the file"},
                                                       {"", "/from the file"},
                                                       {"/given", "/given"},
                                                       {too_long.c_str(), too_long}};
  for (const auto& [value, path] : cases) {
    const ScopedVariable given("ORVALO_DATA_PATH", value);
    EXPECT_EQ(ReadDataPath(config, &unreadable), path);
    EXPECT_EQ(ReadDataPath(MachineConfig(std::vector<std::string>{}), &unreadable),
              path.starts_with("/from") ? "" : path);
  }
}

}  // namespace
}  // namespace orvalo::platform
