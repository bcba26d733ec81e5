#include "platform/file_error.h"

#include <cerrno>
#include <system_error>

namespace orvalo::platform {
namespace {

FileError::Kind KindOf(int number) {
  switch (number) {
    case 0:
      return FileError::Kind::kNone;
    case ENOENT:
    case ENOTDIR:
      return FileError::Kind::kMissing;
    case EACCES:
    case EPERM:
    case EROFS:
    case ETXTBSY:
      return FileError::Kind::kNotAllowed;
    case EISDIR:
      return FileError::Kind::kFolder;
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
      return FileError::Kind::kFull;
    case ENXIO:
    case EPIPE:
      return FileError::Kind::kNoReader;
    default:
      return FileError::Kind::kOther;
  }
}

}  // namespace

FileError FileError::Of(int number) {
  return {KindOf(number), std::generic_category().message(number)};
}

FileError FileError::Last() { return Of(errno); }

}  // namespace orvalo::platform
