#pragma once
#include <memory>
#include <string>
#include <string_view>

namespace orvalo::platform {

// A mutex known by name to every process that works on the same folder. The kernel releases it when
// its holder ends, however it ends, so a killed program never locks its successor out.
//
// The scope is a folder because two programs must not share a data folder, whatever their users,
// sessions or environments are; programs on different folders do not meet. The lock file stays
// behind, empty and harmless.
class NamedMutex {
 public:
  enum class Outcome {
    kHeld,       // created, and this process holds it
    kElsewhere,  // another holder exists
    kFailed,     // the scope is missing, not a folder, or not writable
  };

  // True when some process (this one included) holds the mutex now. Never disturbs the holder.
  static bool Exists(const std::string& scope, std::string_view name);

  // Takes the mutex without waiting. `outcome` (may be null) says why the result is null.
  static std::unique_ptr<NamedMutex> Create(const std::string& scope, std::string_view name,
                                            Outcome* outcome = nullptr);

  ~NamedMutex();
  NamedMutex(const NamedMutex&) = delete;
  NamedMutex& operator=(const NamedMutex&) = delete;

 private:
  explicit NamedMutex(int descriptor) : descriptor_(descriptor) {}
  int descriptor_;
};

}  // namespace orvalo::platform
