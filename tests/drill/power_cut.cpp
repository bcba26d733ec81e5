// Preloaded into a program of ours: makes it possible to cut its power. The files "SMS.db" and
// "SMS.db-wal" get a copy in the folder POWER_CUT_COPIES that follows only when they are flushed;
// to cut the power is to kill the program and to take the files back to their copies
// (FlushedCopy). Whatever else flushes nothing loses what it wrote since; the file "SMS.db-shm"
// needs no copy, as it is only memory.
//
// POWER_CUT_CLOCK: so many seconds the program's wall clock is ahead; may be negative.

#include <dlfcn.h>
#include <limits.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

#include "drill/flushed_copy.h"

namespace orvalo::test {
namespace {

template <typename Function>
Function Real(const char* name) {
  return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

using Synchronise = int (*)(int);

const auto real_write = Real<FlushedCopy::Write>("pwrite64");
const auto real_truncate = Real<FlushedCopy::Truncate>("ftruncate64");

// One change or flush at a time: a copy is never half of a change.
std::mutex& Guard() {
  static std::mutex guard;
  return guard;
}

std::optional<FlushedCopy> CopyOf(std::string_view path) {
  static const char* const folder = std::getenv("POWER_CUT_COPIES");
  const std::string_view name = path.substr(path.rfind('/') + 1);
  if (folder == nullptr || (name != "SMS.db" && name != "SMS.db-wal")) return std::nullopt;
  return FlushedCopy(std::string(folder) + "/" + std::string(name), real_write, real_truncate);
}

std::optional<FlushedCopy> CopyOf(int file) {
  std::array<char, PATH_MAX> path;
  const std::string link = "/proc/self/fd/" + std::to_string(file);
  const ssize_t length = readlink(link.c_str(), path.data(), path.size());
  if (length <= 0) return std::nullopt;
  return CopyOf(std::string_view(path.data(), static_cast<std::size_t>(length)));
}

ssize_t Write(int file, const void* bytes, std::size_t count, off_t begin) {
  const auto copy = CopyOf(file);
  if (!copy) return real_write(file, bytes, count, begin);
  const std::lock_guard lock(Guard());
  copy->Note({begin, static_cast<off_t>(count)});
  return real_write(file, bytes, count, begin);
}

int Truncate(int file, off_t size) {
  const auto copy = CopyOf(file);
  if (!copy) return real_truncate(file, size);
  const std::lock_guard lock(Guard());
  struct stat about {};
  fstat(file, &about);
  if (about.st_size > size) copy->Note({size, about.st_size - size});
  return real_truncate(file, size);
}

int Flush(int file, Synchronise synchronise) {
  const auto copy = CopyOf(file);
  if (!copy) return synchronise(file);
  const std::lock_guard lock(Guard());
  copy->Follow(file);
  return 0;  // the disk of this machine need not wait for it
}

}  // namespace
}  // namespace orvalo::test

extern "C" {

ssize_t pwrite(int file, const void* bytes, size_t count, off_t begin) {
  return orvalo::test::Write(file, bytes, count, begin);
}
ssize_t pwrite64(int file, const void* bytes, size_t count, off64_t begin) {
  return orvalo::test::Write(file, bytes, count, begin);
}
int ftruncate(int file, off_t size) noexcept { return orvalo::test::Truncate(file, size); }
int ftruncate64(int file, off64_t size) noexcept { return orvalo::test::Truncate(file, size); }

int fsync(int file) {
  static const auto real = orvalo::test::Real<orvalo::test::Synchronise>("fsync");
  return orvalo::test::Flush(file, real);
}
int fdatasync(int file) {
  static const auto real = orvalo::test::Real<orvalo::test::Synchronise>("fdatasync");
  return orvalo::test::Flush(file, real);
}

int unlink(const char* path) noexcept {
  static const auto real = orvalo::test::Real<int (*)(const char*)>("unlink");
  if (const auto copy = orvalo::test::CopyOf(path)) {
    const std::lock_guard lock(orvalo::test::Guard());
    real(copy->path().c_str());
    real(copy->list_path().c_str());
    return real(path);
  }
  return real(path);
}

int clock_gettime(clockid_t clock, struct timespec* time) noexcept {
  static const auto real =
      orvalo::test::Real<int (*)(clockid_t, struct timespec*)>("clock_gettime");
  static const char* const ahead = std::getenv("POWER_CUT_CLOCK");
  const int result = real(clock, time);
  if (clock == CLOCK_REALTIME && ahead != nullptr) time->tv_sec += std::atol(ahead);
  return result;
}

}  // extern "C"
