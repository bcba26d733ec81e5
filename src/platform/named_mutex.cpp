#include "platform/named_mutex.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "platform/file.h"

namespace orvalo::platform {
namespace {

// Locks of the open file, not of the process: a second holder in this process is refused like one
// elsewhere, and the lock can be asked about without being taken.
struct flock WholeFileLock(short type) {
  struct flock lock {};
  lock.l_type = type;
  lock.l_whence = SEEK_SET;
  return lock;
}

// Never through a link, and without waiting should the name belong to a pipe.
constexpr int kOpenFlags = O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK;

// Whether programs could work on the scope, or do already, although its lock file is of no use.
bool CouldBeWorkedOn(const std::string& scope, const std::string& lock_file) {
  return IsNameTaken(lock_file) ||
         (IsFolder(scope) && faccessat(AT_FDCWD, scope.c_str(), W_OK | X_OK, AT_EACCESS) == 0);
}

}  // namespace

std::string NamedMutex::PathOf(const std::string& scope, std::string_view name) {
  if (scope.empty() || name.empty() || name.find('/') != std::string_view::npos) return {};
  return scope + "/." + std::string(name) + ".lock";
}

bool NamedMutex::Exists(const std::string& scope, std::string_view name) {
  const OpenFile file(open(PathOf(scope, name).c_str(), O_RDONLY | kOpenFlags));
  if (!file) return false;
  auto lock = WholeFileLock(F_WRLCK);
  return fcntl(file.get(), F_OFD_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
}

std::unique_ptr<NamedMutex> NamedMutex::Create(const std::string& scope, std::string_view name,
                                               Outcome* outcome, FileError* error) {
  const auto say = [outcome](Outcome value) {
    if (outcome != nullptr) *outcome = value;
  };
  const std::string path = PathOf(scope, name);
  OpenFile file(OpenOrMake(path, O_RDWR | kOpenFlags, 0600));
  auto lock = WholeFileLock(F_WRLCK);
  if (file && fcntl(file.get(), F_OFD_SETLK, &lock) == 0) {
    say(Outcome::kHeld);
    return std::unique_ptr<NamedMutex>(new NamedMutex(std::move(file)));
  }
  if (file && (errno == EAGAIN || errno == EACCES)) {
    say(Outcome::kElsewhere);
    return nullptr;
  }
  if (error != nullptr) *error = FileError::Last();
  say(!path.empty() && CouldBeWorkedOn(scope, path) ? Outcome::kUnusable : Outcome::kFailed);
  return nullptr;
}

NamedMutex::~NamedMutex() {
  // Unlocked by hand, for a forked child may still have the same file open.
  auto lock = WholeFileLock(F_UNLCK);
  fcntl(file_.get(), F_OFD_SETLK, &lock);
}

}  // namespace orvalo::platform
