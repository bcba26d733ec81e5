#include "platform/file.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <functional>
#include <thread>
#include <vector>

#include "platform/file_replacement.h"
#include "platform/named_mutex.h"
#include "platform/output_file.h"
#include "support/temporary_folder.h"

namespace orvalo::platform {
namespace {

using test::Slurp;
using test::Spill;
using test::TemporaryFolder;

std::vector<std::string> NamesIn(const std::string& folder) {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    names.push_back(entry.path().filename());
  }
  std::sort(names.begin(), names.end());
  return names;
}

unsigned ModeOf(const std::string& path) {
  struct stat about {};
  return stat(path.c_str(), &about) == 0 ? about.st_mode & 07777 : 0;
}

// Runs `work` in a child process, which it may cripple; its result.
bool InChild(const std::function<bool()>& work) {
  const pid_t pid = fork();
  if (pid == 0) _exit(work() ? 0 : 1);
  int status = 0;
  EXPECT_EQ(waitpid(pid, &status, 0), pid);
  EXPECT_TRUE(WIFEXITED(status));
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

TEST(FileTest, ReadsWholeRegularFilesWithinTheLimit) {
  TemporaryFolder folder;
  const std::string path = folder.File("file");
  for (const std::string& bytes :
       {std::string(), std::string("a\0b\r\n", 5), std::string(100'000, 'x')}) {
    Spill(path, bytes);
    EXPECT_EQ(ReadFile(path), bytes);
    EXPECT_EQ(ReadFile(path, bytes.size()), bytes);
    EXPECT_EQ(FileSize(path), bytes.size());
    if (!bytes.empty()) {
      EXPECT_EQ(ReadFile(path, bytes.size() - 1), std::nullopt);
    }
  }
  // A file that hides its size is read to its end, and still measured.
  const auto status = ReadFile("/proc/self/status");
  ASSERT_TRUE(status);
  EXPECT_TRUE(status->ends_with('\n'));
  EXPECT_EQ(ReadFile("/proc/self/status", 10), std::nullopt);

  ASSERT_EQ(mkfifo(folder.File("pipe").c_str(), 0600), 0);
  std::filesystem::create_symlink(folder.File("nowhere"), folder.File("dangling"));
  for (const std::string& other :
       {folder.path(), folder.File("missing"), folder.File("pipe"), folder.File("dangling"),
        folder.File("file/below"), std::string("/dev/null"), std::string()}) {
    EXPECT_EQ(ReadFile(other), std::nullopt) << other;
    EXPECT_EQ(FileSize(other), std::nullopt) << other;
  }
}

TEST(FileTest, ReplacesAFileAsAWhole) {
  TemporaryFolder folder;
  const std::string path = folder.File(std::string(255, 'n'));  // as long as names may be
  const mode_t old_mask = umask(0);
  for (const std::string& bytes : {std::string("first, the longer one"), std::string("a\0b", 3),
                                   std::string(), std::string(3'000'000, 'x')}) {
    EXPECT_TRUE(ReplaceFile(path, bytes));
    EXPECT_EQ(Slurp(path), bytes);
    EXPECT_EQ(ModeOf(path), 0600u);
  }
  umask(old_mask);
  EXPECT_EQ(NamesIn(folder.path()).size(), 1u);

  const auto before = std::filesystem::current_path();
  std::filesystem::current_path(folder.path());
  EXPECT_TRUE(ReplaceFile("bare name", "here"));
  std::filesystem::current_path(before);
  EXPECT_EQ(Slurp(folder.File("bare name")), "here");
}

TEST(FileTest, AReaderMeetsTheOldFileOrTheNew) {
  TemporaryFolder folder;
  const std::string path = folder.File("SMS.dat"), old_bytes(9000, 'o'), new_bytes(20'000, 'n');
  Spill(path, old_bytes);
  std::atomic<bool> done = false;
  std::thread writer([&] {
    for (int i = 0; i < 100; ++i) EXPECT_TRUE(ReplaceFile(path, i % 2 ? old_bytes : new_bytes));
    done = true;
  });
  int broken = 0;
  while (!done) {
    const auto bytes = ReadFile(path);
    broken += bytes != old_bytes && bytes != new_bytes;
  }
  writer.join();
  EXPECT_EQ(broken, 0);
}

TEST(FileTest, AFailedReplacementLeavesTheOldFileAlone) {
  TemporaryFolder folder;
  const std::string path = folder.File("SMS.dat");
  Spill(path, "old");
  std::filesystem::create_directories(folder.File("taken/by a folder"));
  const auto names = NamesIn(folder.path());

  EXPECT_FALSE(InChild([&] {  // the disk takes some of the bytes only
    signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{5000, 5000};
    return setrlimit(RLIMIT_FSIZE, &limit) != 0 || ReplaceFile(path, std::string(9000, 'x'));
  }));
  EXPECT_FALSE(InChild([&] {  // a folder that may not be written
    chmod(folder.path().c_str(), 0555);
    return (geteuid() == 0 && setuid(65534) != 0) || ReplaceFile(path, "new");
  }));
  chmod(folder.path().c_str(), 0700);
  EXPECT_FALSE(ReplaceFile(folder.File("taken"), "new"));
  EXPECT_FALSE(ReplaceFile(folder.File("missing/file"), "new"));
  EXPECT_FALSE(ReplaceFile(folder.File("SMS.dat/file"), "new"));
  EXPECT_FALSE(ReplaceFile(folder.path() + "/", "new"));
  EXPECT_FALSE(ReplaceFile("", "new"));

  EXPECT_EQ(Slurp(path), "old");
  EXPECT_EQ(NamesIn(folder.path()), names);
}

// Whatever root makes in somebody's folder; for other users both are the same anyway.
TEST(FileTest, WhatRootMakesIsTheFoldersOwners) {
  constexpr uid_t kNobody = 65534;
  TemporaryFolder folder;
  if (geteuid() == 0) {
    ASSERT_EQ(chown(folder.path().c_str(), kNobody, kNobody), 0);
  }
  const std::string path = folder.File("SMS.dat");
  EXPECT_TRUE(ReplaceFile(path, "new"));
  EXPECT_TRUE(AppendToFile(folder.File("SMS.log"), "line"));
  EXPECT_TRUE(MakeFolder(folder.File("temp/deeper")));
  EXPECT_NE(NamedMutex::Create(folder.path(), "m"), nullptr);
  struct stat about {
  }, about_folder{};
  ASSERT_EQ(stat(folder.path().c_str(), &about_folder), 0);
  for (const char* name : {"SMS.dat", "SMS.log", "temp", "temp/deeper", ".m.lock"}) {
    ASSERT_EQ(stat(folder.File(name).c_str(), &about), 0) << name;
    EXPECT_EQ(about.st_uid, about_folder.st_uid) << name;
  }
  chmod(path.c_str(), 0640);
  if (geteuid() == 0) {
    ASSERT_EQ(chown(path.c_str(), 4711, 4712), 0);
  }
  ASSERT_EQ(stat(path.c_str(), &about_folder), 0);
  EXPECT_TRUE(ReplaceFile(path, "newer"));
  ASSERT_EQ(stat(path.c_str(), &about), 0);
  EXPECT_EQ(about.st_uid, about_folder.st_uid) << "a replaced file keeps its owner";
  EXPECT_EQ(about.st_gid, about_folder.st_gid);
  EXPECT_EQ(ModeOf(path), 0640u);
}

TEST(FileTest, RemovesOnlyTheTemporariesOfTheDead) {
  TemporaryFolder folder;
  for (const char* name : {".orvalo-aB3xyz", ".orvalo-backup", ".orvalo-202611", ".orvalo-aB3xyz4",
                           ".orvalo-gateway.lock", "orvalo-aB3xyz"}) {
    Spill(folder.File(name), "x");
  }
  std::filesystem::create_directory(folder.File(".orvalo-fOlDeR"));
  FileReplacement living(folder.File("file"), FileReplacement::Kind::kPrivate);
  EXPECT_EQ(NamesIn(folder.path()).size(), 8u);
  RemoveDeadTemporaries(folder.path());
  EXPECT_EQ(NamesIn(folder.path()).size(), 7u);
  EXPECT_FALSE(IsNameTaken(folder.File(".orvalo-aB3xyz")));
  EXPECT_TRUE(living.Write("whole") && living.Commit());
  EXPECT_EQ(Slurp(folder.File("file")), "whole");
}

TEST(FileTest, WritesWhatTheOperatorHasNamedButNothingOfItsOwn) {
  TemporaryFolder folder, own, elsewhere;
  std::filesystem::create_directory(own.File("temp"));
  Spill(elsewhere.File("SMS.db"), "linked");
  Spill(elsewhere.File("SMS.db-wal"), "journal");
  std::filesystem::create_symlink(elsewhere.File("SMS.db"), own.File("SMS.db"));
  Spill(own.File("SMS.dat"), "settings");
  std::filesystem::create_hard_link(own.File("SMS.dat"), folder.File("second name"));
  std::filesystem::create_symlink(own.File("SMS.log"), folder.File("link to nothing yet"));
  std::filesystem::create_directory_symlink(own.path(), folder.File("folder"));
  std::filesystem::create_symlink(folder.File("target"), folder.File("link"));
  Spill(folder.File("kept"), "old");
  ASSERT_EQ(mkfifo(folder.File("pipe").c_str(), 0600), 0);
  const OwnPlaces places{{own.path(), own.File("temp")}, {elsewhere.File("SMS.db-wal")}};
  using Kind = FileError::Kind;
  const std::pair<std::string, Kind> cases[] = {
      {own.File("SMS.db"), Kind::kOwn},
      {own.File("any new name"), Kind::kOwn},
      {own.File("temp/x"), Kind::kOwn},
      {own.path() + "/../" + own.path().substr(own.path().rfind('/') + 1) + "/x", Kind::kOwn},
      {folder.File("second name"), Kind::kOwn},
      {folder.File("link to nothing yet"), Kind::kOwn},
      {folder.File("folder/x"), Kind::kOwn},
      {elsewhere.File("SMS.db"), Kind::kOwn},
      {elsewhere.File("SMS.db-wal"), Kind::kOwn},
      {folder.path(), Kind::kFolder},
      {folder.File("none/x"), Kind::kMissing},
      {"", Kind::kMissing},
      {folder.File("pipe"), Kind::kNoReader},
      {"/dev/full", Kind::kFull},
      {"/dev/null", Kind::kNone},
      {folder.File("link"), Kind::kNone},
      {folder.File("new"), Kind::kNone},
  };
  for (const auto& [path, expected] : cases) {
    OutputFile file(path, places);
    const bool written = file.Write("bytes") && file.Commit();
    EXPECT_EQ(file.Error().kind, expected) << path << ": " << file.Error().detail;
    EXPECT_EQ(written, expected == Kind::kNone) << path;
  }
  EXPECT_EQ(Slurp(own.File("SMS.dat")), "settings");
  EXPECT_EQ(Slurp(elsewhere.File("SMS.db")) + Slurp(elsewhere.File("SMS.db-wal")), "linkedjournal");
  EXPECT_EQ(Slurp(folder.File("target")), "bytes") << "what a link leads to is written";
  EXPECT_TRUE(std::filesystem::is_symlink(folder.File("link")));
  {
    OutputFile cancelled(folder.File("kept"), places);
    EXPECT_TRUE(cancelled.Write(std::string(200'000, 'x')));
  }
  EXPECT_EQ(Slurp(folder.File("kept")), "old");
  for (const std::string& name : NamesIn(folder.path())) EXPECT_FALSE(name.starts_with(".orvalo"));
}

TEST(FileTest, MakesFoldersForTheirOwnerOnly) {
  TemporaryFolder folder;
  Spill(folder.File("file"), "x");
  const std::string deep = folder.File("a/b//c/");
  EXPECT_FALSE(IsFolder(deep));
  EXPECT_TRUE(MakeFolder(deep));
  EXPECT_TRUE(MakeFolder(deep)) << "it exists already";
  EXPECT_TRUE(IsFolder(deep));
  EXPECT_EQ(ModeOf(folder.File("a")), 0700u);
  EXPECT_EQ(ModeOf(deep), 0700u);
  EXPECT_TRUE(MakeFolder("/"));
  for (const std::string& path : {std::string(), folder.File("file"), folder.File("file/below"),
                                  std::string("/proc/self/new")}) {
    EXPECT_FALSE(MakeFolder(path)) << path;
    EXPECT_FALSE(IsFolder(path)) << path;
  }
}

}  // namespace
}  // namespace orvalo::platform
