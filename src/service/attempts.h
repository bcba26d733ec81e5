#pragma once
#include <cstdint>
#include <mutex>
#include <string>
#include <unordered_map>

#include "platform/clock.h"

namespace orvalo::service {

// Counts what someone does within a window of time, by name: wrong passwords of a user, requests of
// an account. A window begins with the first count and ends by itself. Any thread.
class Attempts {
 public:
  Attempts(const platform::Clock& clock, int limit, std::int64_t window_ms);

  bool Exhausted(const std::string& name) const;  // the limit is reached in the present window
  // Counts one more; false when it is beyond the limit (and then not counted).
  bool Take(const std::string& name);
  void GiveBack(const std::string& name);  // one of those

 private:
  struct Window {
    std::int64_t ends = 0;
    int count = 0;
  };
  void DropEnded();  // with the lock held

  const platform::Clock& clock_;
  const int limit_;
  const std::int64_t window_ms_;
  mutable std::mutex mutex_;
  std::unordered_map<std::string, Window> windows_;
};

}  // namespace orvalo::service
