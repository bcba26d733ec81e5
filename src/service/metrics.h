#pragma once
#include <cstdint>
#include <map>
#include <mutex>
#include <string>

namespace orvalo::service {

// What the service counts about itself since it began. Any thread.
class Metrics {
 public:
  // Adds to the counter `name`, in the line with `label`, such as `answer="taken"` ("": no label).
  void Count(const std::string& name, const std::string& label = "", std::int64_t more = 1);

  // All counters in the Prometheus text format.
  std::string Text() const;

 private:
  mutable std::mutex mutex_;
  std::map<std::string, std::map<std::string, std::int64_t>> counters_;
};

}  // namespace orvalo::service
