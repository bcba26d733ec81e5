#pragma once
#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace orvalo::service {

// What the service counts about itself since it began. Any thread. The names are those of the
// table in metrics.cpp; anything else throws std::out_of_range.
class Metrics {
 public:
  Metrics();  // counters without labels begin at 0, so that their first increase can be seen

  // Adds to the counter `name`, in the line with `label`, such as `answer="taken"` ("": no label).
  // Counters of seconds are counted in milliseconds. Labels come from small sets that the program
  // knows, never from what somebody sends.
  void Count(const std::string& name, const std::string& label = "", std::int64_t more = 1);

  // All counters in the Prometheus text format.
  std::string Text() const;

 private:
  mutable std::mutex mutex_;
  std::map<std::string, std::map<std::string, std::int64_t>> counters_;
};

// Lines by label, and their values.
using MetricLines = std::vector<std::pair<std::string, std::int64_t>>;

// One metric of the table in the Prometheus text format, with what it means.
std::string MetricText(const std::string& name, const MetricLines& lines);

}  // namespace orvalo::service
