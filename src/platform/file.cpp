#include "platform/file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <utility>

namespace orvalo::platform {
namespace {

// An open descriptor that closes itself.
class OpenFile {
 public:
  explicit OpenFile(int descriptor) : descriptor_(descriptor) {}
  ~OpenFile() { Close(); }
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;

  explicit operator bool() const { return descriptor_ >= 0; }
  int get() const { return descriptor_; }
  // False when the system reports, only now, that bytes were lost.
  bool Close() { return descriptor_ < 0 || close(std::exchange(descriptor_, -1)) == 0; }

 private:
  int descriptor_;
};

std::string FolderOf(const std::string& path) {
  const auto slash = path.rfind('/');
  if (slash == std::string::npos) return ".";
  return path.substr(0, std::max<std::size_t>(slash, 1));
}

bool WriteAll(int descriptor, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = write(descriptor, bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

// The renaming is on the disk only when the folder is. A file system that cannot flush folders
// says EINVAL, and then there is nothing more to be had.
bool FlushFolder(int descriptor) { return fsync(descriptor) == 0 || errno == EINVAL; }

bool MakeOneFolder(const std::string& path) {
  return mkdir(path.c_str(), 0700) == 0 || IsFolder(path);
}

}  // namespace

std::optional<std::string> ReadFile(const std::string& path, std::uint64_t limit) {
  // Not blocking: the opening of a pipe would otherwise wait for its writer.
  OpenFile file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  struct stat about {};
  if (!file || fstat(file.get(), &about) != 0 || !S_ISREG(about.st_mode)) return std::nullopt;
  const auto expected = static_cast<std::uint64_t>(about.st_size);
  if (expected > limit) return std::nullopt;

  // One byte more than expected, to meet the end (or the growth) of the file in the same read.
  std::string bytes(expected + 1, '\0');
  std::size_t length = 0;
  for (;;) {
    const ssize_t count = read(file.get(), bytes.data() + length, bytes.size() - length);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return std::nullopt;
    if (count == 0) break;
    length += static_cast<std::size_t>(count);
    if (length > limit) return std::nullopt;
    if (length == bytes.size()) bytes.resize(length + std::max<std::size_t>(length, 4096));
  }
  if (length < expected) return std::nullopt;
  bytes.resize(length);
  return bytes;
}

bool ReplaceFile(const std::string& path, std::string_view bytes) {
  // Opened first: whatever can be refused is refused before the old file goes.
  const std::string folder_path = FolderOf(path);
  OpenFile folder(open(folder_path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!folder) return false;

  // A name of its own, short, so that the length of the file's name does not matter.
  std::string temporary = folder_path + "/.orvalo-XXXXXX";
  OpenFile file(mkostemp(temporary.data(), O_CLOEXEC));
  if (!file) return false;
  const bool replaced = fchmod(file.get(), 0600) == 0 && WriteAll(file.get(), bytes) &&
                        fsync(file.get()) == 0 && file.Close() &&
                        rename(temporary.c_str(), path.c_str()) == 0;
  if (!replaced) {
    unlink(temporary.c_str());
    return false;
  }
  return FlushFolder(folder.get());
}

bool AppendToFile(const std::string& path, std::string_view bytes) {
  // Not blocking: a pipe of that name is refused instead of waited for.
  constexpr int kFlags = O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NONBLOCK;
  OpenFile file(open(path.c_str(), kFlags, 0600));
  return file && WriteAll(file.get(), bytes) && file.Close();
}

bool RenameToNew(const std::string& from, const std::string& to) {
  if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return true;
  if (errno != EINVAL && errno != ENOSYS) return false;
  // This file system cannot check and rename in one step.
  struct stat about {};
  if (lstat(to.c_str(), &about) == 0) return false;
  return rename(from.c_str(), to.c_str()) == 0;
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
