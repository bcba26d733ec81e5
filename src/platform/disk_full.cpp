#include "platform/disk_full.h"

#include <sys/statvfs.h>

#include <cerrno>

namespace orvalo::platform {

bool MeansDiskFull(int system_error) { return system_error == ENOSPC || system_error == EDQUOT; }

bool IsDiskFull(const std::string& path) {
  struct statvfs about {};
  if (statvfs(path.c_str(), &about) != 0) return false;
  return about.f_bavail == 0 || (about.f_files != 0 && about.f_favail == 0);
}

}  // namespace orvalo::platform
