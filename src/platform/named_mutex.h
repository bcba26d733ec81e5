#pragma once
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "platform/file_error.h"
#include "platform/open_file.h"

namespace orvalo::platform {

// A mutex known by name to every process that works on the same folder. The kernel releases it when
// its holder ends, however it ends, so a killed program never locks its successor out.
//
// The scope is a folder because two programs must not share a data folder, whatever their users,
// sessions or environments are; programs on different folders do not meet. The lock file
// (".<name>.lock", mode 0600; made by root, the folder's owner's) stays behind, empty and harmless.
// Any thread; a second Create in the holder's own process is refused as one elsewhere is.
class NamedMutex {
 public:
  enum class Outcome {
    kHeld,       // created, and this process holds it
    kElsewhere,  // another holder exists
    kFailed,     // the scope is missing, not a folder, or not writable, or the name has a slash
    kUnusable,   // the lock file cannot be opened or locked, though the scope could be worked on
  };

  // Where the lock file stands; empty for a name with a slash.
  static std::string PathOf(const std::string& scope, std::string_view name);

  // True when some process (this one included) holds the mutex now; false also where that cannot be
  // found out, as in another user's folder (Create then says kFailed). Only asks: neither the
  // holder nor a Create at the same moment notices.
  static bool Exists(const std::string& scope, std::string_view name);

  // Takes the mutex without waiting. `outcome` and, where that is not kElsewhere, `error` (both may
  // be null) say why the result is null.
  static std::unique_ptr<NamedMutex> Create(const std::string& scope, std::string_view name,
                                            Outcome* outcome = nullptr, FileError* error = nullptr);

  ~NamedMutex();
  NamedMutex(const NamedMutex&) = delete;
  NamedMutex& operator=(const NamedMutex&) = delete;

 private:
  explicit NamedMutex(OpenFile file) : file_(std::move(file)) {}
  OpenFile file_;
};

}  // namespace orvalo::platform
