#pragma once
#include <string>

namespace orvalo::platform {

// Why a file could not be read or written.
struct FileError {
  enum class Kind {
    kNone,
    kMissing,     // there is no such file, or no such folder
    kNotAllowed,  // not with these permissions, or nobody may write to this disk
    kFolder,      // a folder stands there
    kNotAFile,    // a pipe or a device, where a file is wanted
    kTooLarge,    // above what the reader takes
    kFull,        // the disk, or the user's share of it
    kNoReader,    // a pipe that nobody reads
    kOwn,         // one of the program's own files, or a name in its data folder
    kOther,
  };

  Kind kind = Kind::kNone;
  std::string detail;  // in the system's words

  explicit operator bool() const { return kind != Kind::kNone; }

  // Of one of the system's error numbers, and of the last one that it gave this thread.
  static FileError Of(int number);
  static FileError Last();
};

}  // namespace orvalo::platform
