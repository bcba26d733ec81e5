#include "support/small_disk.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>

namespace orvalo::test {

namespace {

constexpr int kNoDisk = 77;

bool MakeDisk(const std::string& folder, std::size_t bytes) {
  const std::string size = "size=" + std::to_string(bytes);
  return unshare(CLONE_NEWNS) == 0 && mount("", "/", "", MS_REC | MS_PRIVATE, nullptr) == 0 &&
         mount("tmpfs", folder.c_str(), "tmpfs", 0, size.c_str()) == 0;
}

}  // namespace

std::optional<bool> OnSmallDisk(const std::string& folder, std::size_t bytes,
                                const std::function<void()>& work) {
  std::filesystem::create_directories(folder);
  const pid_t child = fork();
  if (child == 0) {
    if (!MakeDisk(folder, bytes)) _exit(kNoDisk);
    work();
    std::fflush(stdout);
    _exit(testing::Test::HasFailure() ? 1 : 0);
  }
  int status = 0;
  if (waitpid(child, &status, 0) != child || !WIFEXITED(status)) return false;
  if (WEXITSTATUS(status) == kNoDisk) return std::nullopt;
  return WEXITSTATUS(status) == 0;
}

void FillDisk(const std::string& path) {
  const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
  const std::string page(4096, 'x');
  while (write(file, page.data(), page.size()) > 0) {
  }
  close(file);
}

}  // namespace orvalo::test
