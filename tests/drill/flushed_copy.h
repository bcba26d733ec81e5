#pragma once
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>

namespace orvalo::test {

// Where a range of a file begins, and its length in bytes.
struct FileRange {
  off_t begin = 0, length = 0;
};

// A file's copy that has only what was flushed, and beside it a list of the ranges in which the
// file differs. Of the preloaded library, which keeps both, and of the drill, which takes the file
// back to its copy: so it needs nothing but the system's calls, and of those that the library
// replaces it is given the real ones.
class FlushedCopy {
 public:
  using Write = ssize_t (*)(int, const void*, std::size_t, off_t);
  using Truncate = int (*)(int, off_t);

  explicit FlushedCopy(const std::string& path, Write write = &pwrite,
                       Truncate truncate = &ftruncate)
      : path_(path), list_path_(path + ".unflushed"), write_(write), truncate_(truncate) {}

  bool Exists() const { return access(path_.c_str(), F_OK) == 0; }
  const std::string& path() const { return path_; }
  const std::string& list_path() const { return list_path_; }

  // To be noted before the file changes there.
  void Note(FileRange range) const {
    const int list = open(list_path_.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    if (::write(list, &range, sizeof(range)) != static_cast<ssize_t>(sizeof(range))) _exit(99);
    close(list);
  }

  // The file has been flushed.
  void Follow(int file) const {
    const int copy = open(path_.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    CopyRanges(file, copy);
    close(copy);
  }

  // The power is cut: the file has what its copy has, or is none.
  void TakeBack(const std::string& file_path) const {
    if (Exists()) {
      const int copy = open(path_.c_str(), O_RDONLY | O_CLOEXEC);
      const int file = open(file_path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
      CopyRanges(copy, file);
      close(file);
      close(copy);
    } else {
      unlink(file_path.c_str());
      unlink(list_path_.c_str());
    }
  }

 private:
  void CopyRanges(int from, int to) const {
    const int list = open(list_path_.c_str(), O_RDWR | O_CLOEXEC);
    struct stat about {};
    fstat(from, &about);
    for (FileRange range; read(list, &range, sizeof(range)) == sizeof(range);)
      CopyRange(from, to, range);
    if (truncate_(to, about.st_size) != 0) _exit(99);
    if (list >= 0 && truncate_(list, 0) != 0) _exit(99);
    close(list);
  }

  void CopyRange(int from, int to, FileRange range) const {
    std::array<char, 65536> bytes;
    while (range.length > 0) {
      const auto wanted = std::min(static_cast<std::size_t>(range.length), bytes.size());
      const ssize_t got = pread(from, bytes.data(), wanted, range.begin);
      if (got <= 0) return;  // beyond its end
      if (write_(to, bytes.data(), static_cast<std::size_t>(got), range.begin) != got) _exit(99);
      range.begin += got;
      range.length -= got;
    }
  }

  std::string path_, list_path_;
  Write write_;
  Truncate truncate_;
};

}  // namespace orvalo::test
