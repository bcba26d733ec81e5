#include "platform/output_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <filesystem>
#include <optional>
#include <system_error>
#include <utility>

#include "platform/broken_pipe.h"
#include "platform/file.h"

namespace orvalo::platform {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kBufferSize = std::size_t{64} << 10;

std::optional<struct stat> About(const std::string& path) {
  struct stat about {};
  if (stat(path.c_str(), &about) != 0) return std::nullopt;
  return about;
}

bool AreSame(const std::optional<struct stat>& a, const std::optional<struct stat>& b) {
  return a && b && a->st_dev == b->st_dev && a->st_ino == b->st_ino;
}

// The descriptor that a path is the name of: opened by its path, it would be another one, which
// begins at the start of the file.
std::optional<int> DescriptorOf(const std::string& path) {
  if (path == "/dev/stdout") return STDOUT_FILENO;
  if (path == "/dev/stderr") return STDERR_FILENO;
  for (const std::string_view folder : {"/dev/fd/", "/proc/self/fd/"}) {
    if (!path.starts_with(folder)) continue;
    int number = -1;
    const char* const end = path.data() + path.size();
    const auto [rest, error] = std::from_chars(path.data() + folder.size(), end, number);
    if (error == std::errc() && rest == end) return number;
  }
  return std::nullopt;
}

bool IsOneOf(const std::optional<struct stat>& file, const OwnPlaces& own) {
  for (const std::string& folder : own.folders) {
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
      if (AreSame(file, About(entry->path().string()))) return true;
    }
  }
  return std::any_of(own.files.begin(), own.files.end(),
                     [&](const std::string& path) { return AreSame(file, About(path)); });
}

bool IsOwn(const std::string& path, const OwnPlaces& own) {
  const auto folder = About(FolderOf(path));
  if (std::any_of(own.folders.begin(), own.folders.end(), [&](const std::string& own_folder) {
        return AreSame(folder, About(own_folder));
      }))
    return true;
  const auto file = About(path);
  return file && IsOneOf(file, own);
}

FileError Own() { return {FileError::Kind::kOwn, "It is one of the program's own files"}; }

}  // namespace

OutputFile::OutputFile(const std::string& path, const OwnPlaces& own) {
  if (!Open(path, own) && !error_) error_ = FileError::Last();
}

OutputFile::~OutputFile() = default;

bool OutputFile::Open(const std::string& path, const OwnPlaces& own) {
  const auto about = About(path);
  if (DescriptorOf(path) || (about && (S_ISCHR(about->st_mode) || S_ISFIFO(about->st_mode)))) {
    return OpenDirectly(path, own);
  }
  const std::string target = FollowLinks(path);
  if (IsOwn(target, own)) return Fail(Own());
  if (about && S_ISDIR(about->st_mode)) return Fail(FileError::Of(EISDIR));
  if (about && !S_ISREG(about->st_mode)) return Fail({FileError::Kind::kNotAFile, "It is no file"});
  if (about && faccessat(AT_FDCWD, target.c_str(), W_OK, AT_EACCESS) != 0) return false;
  RemoveDeadTemporaries(FolderOf(target));
  replacement_ = std::make_unique<FileReplacement>(target, FileReplacement::Kind::kUsual);
  return !replacement_->Error() || Fail(replacement_->Error());
}

bool OutputFile::OpenDirectly(const std::string& path, const OwnPlaces& own) {
  SurviveBrokenPipes();
  const auto number = DescriptorOf(path);
  // Opened without waiting for a pipe's reader, who might never come; written to with patience.
  direct_ = OpenFile(number ? fcntl(*number, F_DUPFD_CLOEXEC, 0)
                            : open(path.c_str(), O_WRONLY | O_NOCTTY | O_NONBLOCK | O_CLOEXEC));
  if (!direct_) return false;
  struct stat about {};
  if (fstat(direct_.get(), &about) != 0) return false;
  if (IsOneOf(about, own)) return Fail(Own());
  if (number) return true;
  const int flags = fcntl(direct_.get(), F_GETFL);
  return flags >= 0 && fcntl(direct_.get(), F_SETFL, flags & ~O_NONBLOCK) == 0;
}

bool OutputFile::Write(std::string_view bytes) {
  if (error_) return false;
  waiting_.append(bytes);
  return waiting_.size() < kBufferSize || Flush();
}

bool OutputFile::Flush() {
  if (replacement_ != nullptr) {
    if (!replacement_->Write(waiting_)) return Fail(replacement_->Error());
  } else if (!WriteAll(direct_.get(), waiting_)) {
    return Fail(FileError::Last());
  }
  waiting_.clear();
  return true;
}

bool OutputFile::Commit() {
  if (error_ || !Flush()) return false;
  if (replacement_ != nullptr) return replacement_->Commit() || Fail(replacement_->Error());
  return direct_.Close() || Fail(FileError::Last());
}

bool OutputFile::Fail(FileError error) {
  error_ = std::move(error);
  return false;
}

}  // namespace orvalo::platform
