#include "platform/file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <system_error>
#include <utility>

#include "platform/file_replacement.h"
#include "platform/open_file.h"

namespace orvalo::platform {
namespace {

bool MakeOneFolder(const std::string& path) {
  if (mkdir(path.c_str(), 0700) != 0) return IsFolder(path);
  const OpenFile made(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  if (made) GiveToOwnerOf(path + "/..", made.get());
  return true;
}

bool AreSameFile(const std::string& a, const std::string& b) {
  struct stat about_a {
  }, about_b{};
  return lstat(a.c_str(), &about_a) == 0 && lstat(b.c_str(), &about_b) == 0 &&
         about_a.st_dev == about_b.st_dev && about_a.st_ino == about_b.st_ino;
}

// errno, and nothing read.
std::nullopt_t Unread(FileError* error, FileError reason = FileError::Last()) {
  if (error != nullptr) *error = std::move(reason);
  return std::nullopt;
}

std::nullopt_t Unread(FileError* error, FileError::Kind kind, const char* detail) {
  return Unread(error, {kind, detail});
}

}  // namespace

std::optional<std::string> ReadFile(const std::string& path, std::uint64_t limit,
                                    FileError* error) {
  // Not blocking: the opening of a pipe would otherwise wait for its writer.
  OpenFile file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  struct stat about {};
  if (!file || fstat(file.get(), &about) != 0) return Unread(error);
  if (S_ISDIR(about.st_mode)) return Unread(error, FileError::Of(EISDIR));
  if (!S_ISREG(about.st_mode)) return Unread(error, FileError::Kind::kNotAFile, "It is no file");
  const auto expected = static_cast<std::uint64_t>(about.st_size);
  if (expected > limit) return Unread(error, FileError::Kind::kTooLarge, "It is too large");

  // One byte more than expected, to meet the end (or the growth) of the file in the same read.
  std::string bytes(expected + 1, '\0');
  std::size_t length = 0;
  for (;;) {
    const ssize_t count = read(file.get(), bytes.data() + length, bytes.size() - length);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return Unread(error);
    if (count == 0) break;
    length += static_cast<std::size_t>(count);
    if (length > limit) return Unread(error, FileError::Kind::kTooLarge, "It is too large");
    if (length == bytes.size()) bytes.resize(length + std::max<std::size_t>(length, 4096));
  }
  if (length < expected) return Unread(error, FileError::Of(EIO));
  bytes.resize(length);
  return bytes;
}

bool ReplaceFile(const std::string& path, std::string_view bytes, FileError* error) {
  FileReplacement file(path, FileReplacement::Kind::kPrivate);
  const bool replaced = file.Write(bytes) && file.Commit();
  if (error != nullptr) *error = file.Error();
  return replaced;
}

bool AppendToFile(const std::string& path, std::string_view bytes) {
  // Not blocking: a pipe of that name is refused instead of waited for.
  constexpr int kFlags = O_WRONLY | O_APPEND | O_CLOEXEC | O_NONBLOCK;
  OpenFile file(OpenOrMake(path, kFlags, 0600));
  return file && WriteAll(file.get(), bytes) && file.Close();
}

bool RenameToNew(const std::string& from, const std::string& to) {
  if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return true;
  if (errno != EINVAL && errno != ENOSYS) return false;
  // This file system cannot check and rename in one step.
  if (IsNameTaken(to)) return false;
  return rename(from.c_str(), to.c_str()) == 0;
}

std::optional<std::string> KeepAside(const std::string& path, const std::string& suffix) {
  constexpr int kMostNames = 10'000;
  for (int i = 1; i <= kMostNames; ++i) {
    const std::string name = path + suffix + (i == 1 ? "" : "." + std::to_string(i));
    if (link(path.c_str(), name.c_str()) == 0 || AreSameFile(path, name)) return name;
    if (errno == EEXIST || IsNameTaken(name)) continue;
    if (RenameToNew(path, name)) return name;
    return std::nullopt;
  }
  return std::nullopt;
}

bool IsNameTaken(const std::string& path) {
  struct stat about {};
  return lstat(path.c_str(), &about) == 0;
}

std::string FollowLinks(std::string path) {
  constexpr int kMostLinks = 40;
  std::error_code error;
  for (int i = 0; i < kMostLinks; ++i) {
    const std::filesystem::path target = std::filesystem::read_symlink(path, error);
    if (error) break;
    path = (std::filesystem::path(FolderOf(path)) / target).string();
  }
  return path;
}

std::optional<std::uint64_t> FileSize(const std::string& path) {
  struct stat about {};
  if (stat(path.c_str(), &about) != 0 || !S_ISREG(about.st_mode)) return std::nullopt;
  return static_cast<std::uint64_t>(about.st_size);
}

bool IsFolder(const std::string& path) {
  struct stat about {};
  return stat(path.c_str(), &about) == 0 && S_ISDIR(about.st_mode);
}

bool MakeFolder(const std::string& path) {
  if (path.empty()) return false;
  for (auto slash = path.find('/', 1); slash != std::string::npos;
       slash = path.find('/', slash + 1)) {
    if (!MakeOneFolder(path.substr(0, slash))) return false;
  }
  return MakeOneFolder(path);
}

}  // namespace orvalo::platform
