#include "platform/named_mutex.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

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

// Empty for a name that would lead out of the scope.
std::string LockFilePath(const std::string& scope, std::string_view name) {
  if (scope.empty() || name.empty() || name.find('/') != std::string_view::npos) return {};
  return scope + "/." + std::string(name) + ".lock";
}

int OpenLockFile(const std::string& path, int flags) {
  // Never through a link, and without waiting should the name belong to a pipe.
  return open(path.c_str(), flags | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, 0600);
}

}  // namespace

bool NamedMutex::Exists(const std::string& scope, std::string_view name) {
  const int descriptor = OpenLockFile(LockFilePath(scope, name), O_RDONLY);
  if (descriptor < 0) return false;
  auto lock = WholeFileLock(F_WRLCK);
  const bool asked = fcntl(descriptor, F_OFD_GETLK, &lock) == 0;
  close(descriptor);
  return asked && lock.l_type != F_UNLCK;
}

std::unique_ptr<NamedMutex> NamedMutex::Create(const std::string& scope, std::string_view name,
                                               Outcome* outcome) {
  const auto say = [outcome](Outcome value) {
    if (outcome != nullptr) *outcome = value;
  };
  say(Outcome::kFailed);
  const int descriptor = OpenLockFile(LockFilePath(scope, name), O_RDWR | O_CREAT);
  if (descriptor < 0) return nullptr;
  auto lock = WholeFileLock(F_WRLCK);
  if (fcntl(descriptor, F_OFD_SETLK, &lock) != 0) {
    if (errno == EAGAIN || errno == EACCES) say(Outcome::kElsewhere);
    close(descriptor);
    return nullptr;
  }
  say(Outcome::kHeld);
  return std::unique_ptr<NamedMutex>(new NamedMutex(descriptor));
}

NamedMutex::~NamedMutex() {
  // Unlocked by hand, for a forked child may still have the same file open.
  auto lock = WholeFileLock(F_UNLCK);
  fcntl(descriptor_, F_OFD_SETLK, &lock);
  close(descriptor_);
}

}  // namespace orvalo::platform
