#include "service/metrics.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <stdexcept>
#include <string_view>

#include "service/money.h"

namespace orvalo::service {
namespace {

enum class Kind { kGauge, kCounter, kCounterAtZero };

// `thousandths`: of the unit that the name tells; kept whole, so that sums are exact.
struct Family {
  const char* name;
  Kind kind;
  const char* help;
  bool thousandths = false;
};

// The table of docs/deployment.md, "Watching it".
constexpr std::array kFamilies{
    Family{"orvalo_messages_accepted_total", Kind::kCounterAtZero,
           "Messages that were accepted, one for each recipient."},
    Family{"orvalo_parts_accepted_total", Kind::kCounterAtZero,
           "Parts of the messages that were accepted."},
    Family{"orvalo_refusals_total", Kind::kCounter,
           "Calls and recipients of batches that were refused."},
    Family{"orvalo_refunded_parts_total", Kind::kCounter,
           "Parts whose price was given back, since the ledger began."},
    Family{"orvalo_refunded_credits_total", Kind::kCounter,
           "Credits that were given back, since the ledger began.", true},
    Family{"orvalo_engine_requests_total", Kind::kCounter, "Requests to the engine."},
    Family{"orvalo_engine_parts_total", Kind::kCounter, "Parts in the requests to the engine."},
    Family{"orvalo_engine_seconds_total", Kind::kCounterAtZero,
           "Time that requests to the engine took.", true},
    Family{"orvalo_reports_total", Kind::kCounter, "Delivery reports that came in."},
    Family{"orvalo_reported_parts_total", Kind::kCounter,
           "Parts that a delivery report brought into a state."},
    Family{"orvalo_reconciled_parts_total", Kind::kCounter,
           "Parts that time brought into a state, for want of a report."},
    Family{"orvalo_outbox_parts", Kind::kGauge, "Parts that are not settled."},
    Family{"orvalo_engine_links", Kind::kGauge, "The engine's links to mobile networks."},
    Family{"orvalo_engine_links_usable", Kind::kGauge, "Those that are online."},
    Family{"orvalo_engine_queued_messages", Kind::kGauge,
           "Messages that the engine has not handed to a network yet."},
    Family{"orvalo_carrier_healthy", Kind::kGauge, "Whether messages can be handed over now."},
};

const Family& FamilyOf(std::string_view name) {
  const auto* const family = std::find_if(kFamilies.begin(), kFamilies.end(),
                                          [&](const Family& one) { return one.name == name; });
  if (family == kFamilies.end()) throw std::out_of_range("no metric " + std::string(name));
  return *family;
}

}  // namespace

Metrics::Metrics() {
  for (const auto& family : kFamilies) {
    if (family.kind == Kind::kCounterAtZero) counters_[family.name][""] = 0;
  }
}

void Metrics::Count(const std::string& name, const std::string& label, std::int64_t more) {
  std::lock_guard guard(mutex_);
  auto counter = counters_.find(name);
  if (counter == counters_.end()) counter = counters_.try_emplace(FamilyOf(name).name).first;
  counter->second[label] += more;
}

std::string Metrics::Text() const {
  std::lock_guard guard(mutex_);
  std::string text;
  for (const auto& [name, lines] : counters_) {
    text += MetricText(name, MetricLines(lines.begin(), lines.end()));
  }
  return text;
}

std::string MetricText(const std::string& name, const MetricLines& lines) {
  const auto& family = FamilyOf(name);
  auto text = fmt::format("# HELP {0} {1}\n# TYPE {0} {2}\n", name, family.help,
                          family.kind == Kind::kGauge ? "gauge" : "counter");
  for (const auto& [label, value] : lines) {
    text += fmt::format("{}{} {}\n", name, label.empty() ? "" : "{" + label + "}",
                        family.thousandths ? MoneyText(value) : std::to_string(value));
  }
  return text;
}

}  // namespace orvalo::service
