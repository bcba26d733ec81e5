#include "platform/open_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <utility>

namespace orvalo::platform {

OpenFile::OpenFile(OpenFile&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}

OpenFile& OpenFile::operator=(OpenFile&& other) noexcept {
  std::swap(descriptor_, other.descriptor_);
  return *this;
}

bool OpenFile::Close() { return descriptor_ < 0 || close(std::exchange(descriptor_, -1)) == 0; }

bool WriteAll(int descriptor, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = write(descriptor, bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written == 0) errno = EIO;
    if (written <= 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

std::string FolderOf(const std::string& path) {
  const auto slash = path.rfind('/');
  if (slash == std::string::npos) return ".";
  return path.substr(0, std::max<std::size_t>(slash, 1));
}

int OpenOrMake(const std::string& path, int flags, unsigned mode) {
  // Made exclusively, so that what is given away is certainly new, and no link's target.
  int descriptor = open(path.c_str(), flags);
  if (descriptor >= 0 || errno != ENOENT) return descriptor;
  descriptor = open(path.c_str(), flags | O_CREAT | O_EXCL, mode);
  if (descriptor >= 0) {
    GiveToOwnerOf(FolderOf(path), descriptor);
    return descriptor;
  }
  if (errno != EEXIST) return -1;
  return open(path.c_str(), flags | O_CREAT, mode);  // somebody was faster, or a link leads nowhere
}

void GiveToOwnerOf(const std::string& folder, int descriptor) {
  struct stat about {};
  if (geteuid() != 0 || stat(folder.c_str(), &about) != 0 || about.st_uid == 0) return;
  // Where this fails, the file stays root's: there is nothing better to be done about it.
  if (fchown(descriptor, about.st_uid, about.st_gid) != 0) return;
}

}  // namespace orvalo::platform
