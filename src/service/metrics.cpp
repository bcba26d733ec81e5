#include "service/metrics.h"

#include <fmt/format.h>

namespace orvalo::service {

void Metrics::Count(const std::string& name, const std::string& label, std::int64_t more) {
  std::lock_guard guard(mutex_);
  counters_[name][label] += more;
}

std::string Metrics::Text() const {
  std::lock_guard guard(mutex_);
  std::string text;
  for (const auto& [name, lines] : counters_) {
    text += fmt::format("# TYPE {} counter\n", name);
    for (const auto& [label, value] : lines) {
      text += label.empty() ? fmt::format("{} {}\n", name, value)
                            : fmt::format("{}{{{}}} {}\n", name, label, value);
    }
  }
  return text;
}

}  // namespace orvalo::service
