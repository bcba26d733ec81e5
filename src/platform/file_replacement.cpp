#include "platform/file_replacement.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <memory>
#include <utility>

namespace orvalo::platform {
namespace {

// A name of its own, short, so that the length of the file's name does not matter.
constexpr std::string_view kTemporaryName = ".orvalo-";
constexpr std::size_t kRandomLetters = 6;
constexpr std::string_view kLower = "abcdefghijklmnopqrstuvwxyz";
constexpr std::string_view kUpper = "ABCDEFGHIJKLMNOPQRSTUVWXYZ";
constexpr std::string_view kDigits = "0123456789";
constexpr int kAttempts = 100;

// Random letters, mixed: a word or a date that somebody has put behind the same beginning is not.
bool IsTemporaryName(std::string_view name) {
  if (!name.starts_with(kTemporaryName)) return false;
  name.remove_prefix(kTemporaryName.size());
  if (name.size() != kRandomLetters) return false;
  std::size_t known = 0;
  int classes = 0;
  for (const std::string_view letters : {kLower, kUpper, kDigits}) {
    const auto count = static_cast<std::size_t>(std::count_if(
        name.begin(), name.end(), [&](char c) { return letters.find(c) != letters.npos; }));
    known += count;
    classes += count > 0 ? 1 : 0;
  }
  return known == kRandomLetters && classes > 1;
}

std::string RandomName() {
  const std::string letters = std::string(kLower).append(kUpper).append(kDigits);
  std::string name;
  do {
    std::array<std::uint8_t, kRandomLetters> bytes{};
    if (getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) continue;
    name = kTemporaryName;
    for (const std::uint8_t byte : bytes) name += letters[byte % letters.size()];
  } while (!IsTemporaryName(name));
  return name;
}

// Held while the file is written, it tells that its writer lives. False only when another process
// holds it: a file system without such locks has no say.
bool LockAsLiving(int descriptor) {
  return flock(descriptor, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
}

// Between its making and its locking a file may be taken for a dead one: it then has no name left.
bool IsNamed(int descriptor) {
  struct stat about {};
  return fstat(descriptor, &about) == 0 && about.st_nlink > 0;
}

void RemoveIfDead(int folder, const char* name) {
  const OpenFile file(openat(folder, name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  struct stat about {
  }, about_folder{};
  if (!file || fstat(file.get(), &about) != 0 || fstat(folder, &about_folder) != 0) return;
  const uid_t user = geteuid();
  const bool ours = about.st_uid == user || (user == 0 && about.st_uid == about_folder.st_uid);
  if (!S_ISREG(about.st_mode) || about.st_nlink != 1 || !ours) return;
  if (flock(file.get(), LOCK_EX | LOCK_NB) == 0) unlinkat(folder, name, 0);
}

struct CloseFolder {
  void operator()(DIR* folder) const { closedir(folder); }
};

}  // namespace

FileReplacement::FileReplacement(std::string path, Kind kind)
    : path_(std::move(path)), kind_(kind) {
  if (!Open()) Fail();
}

FileReplacement::~FileReplacement() {
  if (!temporary_.empty()) unlink(temporary_.c_str());
}

bool FileReplacement::Open() {
  const std::string folder = FolderOf(path_);
  folder_ = OpenFile(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!folder_) return false;
  const mode_t mode = kind_ == Kind::kPrivate ? 0600 : 0666;
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    const std::string name = folder + "/" + RandomName();
    OpenFile file(open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode));
    if (!file && errno != EEXIST) return false;
    if (!file || !LockAsLiving(file.get()) || !IsNamed(file.get())) continue;
    temporary_ = name;
    file_ = std::move(file);
    return true;
  }
  errno = EEXIST;
  return false;
}

bool FileReplacement::Write(std::string_view bytes) {
  if (error_) return false;
  return WriteAll(file_.get(), bytes) || Fail();
}

// Owner and mode: those of the file that is replaced, else what a new one is to have.
bool FileReplacement::TakeOver() {
  struct stat old {};
  if (lstat(path_.c_str(), &old) != 0 || !S_ISREG(old.st_mode)) {
    if (kind_ == Kind::kUsual) return true;
    GiveToOwnerOf(FolderOf(path_), file_.get());
    return fchmod(file_.get(), 0600) == 0;
  }
  mode_t mode = old.st_mode & 0777;
  if (fchown(file_.get(), old.st_uid, old.st_gid) != 0 &&
      fchown(file_.get(), static_cast<uid_t>(-1), old.st_gid) != 0) {
    mode &= ~static_cast<mode_t>(070);  // what the one group might do is not for another
  }
  return fchmod(file_.get(), mode) == 0;
}

bool FileReplacement::Commit() {
  if (error_) return false;
  if (!TakeOver() || fsync(file_.get()) != 0 || !file_.Close() ||
      rename(temporary_.c_str(), path_.c_str()) != 0) {
    return Fail();
  }
  temporary_.clear();
  // The renaming is on the disk only when the folder is. A file system that cannot flush folders
  // says EINVAL, and then there is nothing more to be had.
  return fsync(folder_.get()) == 0 || errno == EINVAL || Fail();
}

bool FileReplacement::Fail() {
  error_ = FileError::Last();
  if (!temporary_.empty()) unlink(std::exchange(temporary_, std::string()).c_str());
  return false;
}

void RemoveDeadTemporaries(const std::string& folder) {
  const std::unique_ptr<DIR, CloseFolder> entries(opendir(folder.c_str()));
  if (entries == nullptr) return;
  while (const dirent* entry = readdir(entries.get())) {
    if (IsTemporaryName(entry->d_name)) RemoveIfDead(dirfd(entries.get()), entry->d_name);
  }
}

}  // namespace orvalo::platform
