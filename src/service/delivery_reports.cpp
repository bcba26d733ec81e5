#include "service/delivery_reports.h"

#include <charconv>

#include "platform/code_page.h"
#include "service/page_text.h"
#include "service/secrets.h"

namespace orvalo::service {
namespace {

constexpr auto kPath = std::string_view(kReportRoute).substr(0, sizeof kReportRoute - 2);
constexpr std::size_t kKeyBytes = 16;
// A receipt may be long. What decides stands at its beginning, and that is what is kept.
constexpr std::size_t kLongestDetail = 16'384, kKeptDetail = 1'024;
constexpr std::int64_t kLineEveryMs = 60'000;

struct Report {
  std::string key, number, detail;
  int bits = 0;
};

std::optional<Report> Parse(const ServedRequest& request) {
  const auto number = FormField(request.query, "to");
  const auto type = FormField(request.query, "type").value_or("");
  const auto detail = FormField(request.query, "detail", kLongestDetail).value_or("");
  Report report{FromHex(request.path.substr(kPath.size())), number.value_or(""),
                std::string(platform::FirstBytes(detail, kKeptDetail))};
  const auto* const end = type.data() + type.size();
  const auto [stop, error] = std::from_chars(type.data(), end, report.bits);
  if (report.key.size() != kKeyBytes || report.number.empty() || error != std::errc() ||
      stop != end || report.bits <= 0 || report.bits > kAllReportBits) {
    return std::nullopt;
  }
  return report;
}

}  // namespace

int DeliveryReports::Take(const ServedRequest& request) {
  const auto report = Parse(request);
  if (!report) return Counted("malformed", 404);
  if (parts_.kannel == nullptr) return Counted("failed", 503);
  std::optional<outbox::Reported> reported;
  try {
    reported = parts_.kannel->TakeReport(report->key, report->number, report->bits, report->detail);
  } catch (...) {
    Counted("failed", 500);
    throw;
  }
  if (!reported) {
    TellOfUnknown();
    return Counted("unknown", 200);
  }
  if (reported->after == reported->before) {
    return Counted(reported->repeated ? "repeated" : "late", 200);
  }
  parts_.metrics.Count("orvalo_reported_parts_total",
                       std::string("state=\"") + NameOf(reported->after) + "\"");
  return Counted("applied", 200);
}

int DeliveryReports::Counted(const char* outcome, int status) {
  parts_.metrics.Count("orvalo_reports_total", std::string("outcome=\"") + outcome + "\"");
  return status;
}

// One line a minute at most: whoever reaches the port can tell of unknown ones.
void DeliveryReports::TellOfUnknown() {
  std::lock_guard guard(mutex_);
  ++unknown_;
  const auto now = parts_.clock.Tick();
  if (now < next_line_) return;
  parts_.log.Warn("reports_unknown", {{"reports", std::to_string(unknown_)}});
  unknown_ = 0;
  next_line_ = now + kLineEveryMs;
}

}  // namespace orvalo::service
