#include "platform/named_mutex.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <thread>

#include "support/temporary_folder.h"

namespace orvalo::platform {
namespace {

using Outcome = NamedMutex::Outcome;
using test::Spill;
using test::TemporaryFolder;

constexpr std::string_view kName = "Orvalo3Mutex";

TEST(NamedMutexTest, HasOneHolderForEachScopeAndName) {
  TemporaryFolder folder, other;
  EXPECT_FALSE(NamedMutex::Exists(folder.path(), kName));
  EXPECT_TRUE(std::filesystem::is_empty(folder.path())) << "asking makes no file";

  Outcome outcome = Outcome::kFailed;
  auto held = NamedMutex::Create(folder.path(), kName, &outcome);
  ASSERT_NE(held, nullptr);
  EXPECT_EQ(outcome, Outcome::kHeld);
  for (int i = 0; i < 2; ++i) {
    EXPECT_TRUE(NamedMutex::Exists(folder.path(), kName)) << "asking releases nothing";
    EXPECT_EQ(NamedMutex::Create(folder.path(), kName, &outcome), nullptr);
    EXPECT_EQ(outcome, Outcome::kElsewhere);
  }
  EXPECT_FALSE(NamedMutex::Exists(folder.path(), "Another"));
  EXPECT_FALSE(NamedMutex::Exists(other.path(), kName));
  EXPECT_NE(NamedMutex::Create(other.path(), kName), nullptr);

  struct stat about {};
  ASSERT_EQ(stat(folder.File(".Orvalo3Mutex.lock").c_str(), &about), 0);
  EXPECT_EQ(about.st_mode & 07777, 0600u);

  held.reset();
  EXPECT_FALSE(NamedMutex::Exists(folder.path(), kName));
  EXPECT_NE(NamedMutex::Create(folder.path(), kName), nullptr)
      << "the file left behind is harmless";
}

// Forks a child that tries to take the mutex, says whether it holds it, and stays until killed.
pid_t ForkHolder(const std::string& scope, bool* holds) {
  int ends[2];
  if (pipe(ends) != 0) return -1;
  const pid_t pid = fork();
  if (pid == 0) {
    const auto held = NamedMutex::Create(scope, kName);
    const char answer = held ? 'y' : 'n';
    while (write(ends[1], &answer, 1) == 1) pause();
    _exit(1);
  }
  close(ends[1]);
  char answer = 'n';
  *holds = read(ends[0], &answer, 1) == 1 && answer == 'y';
  close(ends[0]);
  return pid;
}

void Kill(pid_t pid) {
  ASSERT_GT(pid, 0);
  kill(pid, SIGKILL);
  waitpid(pid, nullptr, 0);
}

TEST(NamedMutexTest, AKilledHolderLocksNobodyOut) {
  TemporaryFolder folder;
  bool child_holds = false;
  const pid_t child = ForkHolder(folder.path(), &child_holds);
  EXPECT_TRUE(child_holds);
  EXPECT_TRUE(NamedMutex::Exists(folder.path(), kName));
  Outcome outcome = Outcome::kHeld;
  EXPECT_EQ(NamedMutex::Create(folder.path(), kName, &outcome), nullptr);
  EXPECT_EQ(outcome, Outcome::kElsewhere);
  Kill(child);
  EXPECT_FALSE(NamedMutex::Exists(folder.path(), kName));
  auto held = NamedMutex::Create(folder.path(), kName);
  EXPECT_NE(held, nullptr);

  // A child that inherits the open file does not keep what its parent releases.
  const pid_t heir = ForkHolder(folder.path(), &child_holds);
  EXPECT_FALSE(child_holds);
  held.reset();
  EXPECT_NE(NamedMutex::Create(folder.path(), kName), nullptr);
  Kill(heir);
}

TEST(NamedMutexTest, AskingNeverMakesACreateFail) {
  TemporaryFolder folder;
  std::atomic<bool> done = false;
  std::thread asker([&] {
    while (!done) NamedMutex::Exists(folder.path(), kName);
  });
  int refused = 0;
  for (int i = 0; i < 2000; ++i) refused += NamedMutex::Create(folder.path(), kName) == nullptr;
  done = true;
  asker.join();
  EXPECT_EQ(refused, 0);
}

TEST(NamedMutexTest, AScopeThatCannotHoldItFails) {
  TemporaryFolder folder;
  Spill(folder.File("file"), "x");
  Spill(folder.File("target"), "x");
  std::filesystem::create_symlink(folder.File("target"), folder.File(".linked.lock"));
  std::filesystem::create_directory(folder.File(".folder.lock"));
  const struct {
    std::string scope, name;
    Outcome expected;
  } cases[] = {
      {folder.File("missing"), "m", Outcome::kFailed},
      {folder.File("file"), "m", Outcome::kFailed},
      {"", "m", Outcome::kFailed},
      {folder.path(), "", Outcome::kFailed},
      {folder.path(), "../up", Outcome::kFailed},
      {folder.path(), "linked", Outcome::kUnusable},
      {folder.path(), "folder", Outcome::kUnusable},
  };
  for (const auto& [scope, name, expected] : cases) {
    Outcome outcome = Outcome::kHeld;
    FileError error;
    EXPECT_EQ(NamedMutex::Create(scope, name, &outcome, &error), nullptr) << scope << " " << name;
    EXPECT_EQ(outcome, expected) << scope << " " << name;
    EXPECT_FALSE(error.detail.empty()) << scope << " " << name;
    EXPECT_FALSE(NamedMutex::Exists(scope, name)) << scope << " " << name;
  }
}

}  // namespace
}  // namespace orvalo::platform
