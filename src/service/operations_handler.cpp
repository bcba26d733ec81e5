#include "service/operations_handler.h"

#include <fmt/format.h>

#include <charconv>

#include "service/page_text.h"
#include "service/secrets.h"

namespace orvalo::service {
namespace {

constexpr std::string_view kReports = "/reports/";
constexpr std::size_t kKeyBytes = 16;

ServedReply PlainReply(int status, std::string text) {
  ServedReply reply{status, std::move(text), {}, false};
  reply.content_type = "text/plain; version=0.0.4; charset=utf-8";
  return reply;
}

std::string Gauge(const char* name, std::int64_t value) {
  return fmt::format("# TYPE {0} gauge\n{0} {1}\n", name, value);
}

}  // namespace

ServedReply OperationsHandler::Handle(const ServedRequest& request) {
  try {
    if (request.path.starts_with(kReports)) return TakeReport(request);
    if (request.method != "GET") return PlainReply(405, "");
    if (request.path == "/metrics") return ShowMetrics();
    if (request.path == "/health") return PlainReply(200, "ok\n");
    if (request.path == "/ready") return ShowReadiness();
    return PlainReply(404, "");
  } catch (const std::exception& failure) {
    parts_.log.Error("operations_call_failed", {{"reason", failure.what()}});
    return PlainReply(500, "");  // an engine that is set up to try again does
  }
}

ServedReply OperationsHandler::Malformed(int status) { return PlainReply(status, ""); }

ServedReply OperationsHandler::TakeReport(const ServedRequest& request) {
  const auto key = FromHex(request.path.substr(kReports.size()));
  const auto number = FormField(request.query, "to");
  const auto type = FormField(request.query, "type").value_or("");
  int bits = 0;
  std::from_chars(type.data(), type.data() + type.size(), bits);
  if (parts_.kannel == nullptr || key.size() != kKeyBytes || !number || bits <= 0 ||
      bits > kAllReportBits) {
    return PlainReply(404, "");
  }
  const auto detail = FormField(request.query, "detail").value_or("");
  return PlainReply(parts_.kannel->TakeReport(key, *number, bits, detail) ? 200 : 404, "");
}

ServedReply OperationsHandler::ShowMetrics() {
  auto text = parts_.metrics.Text();
  if (parts_.kannel != nullptr) {
    text += "# TYPE orvalo_outbox_parts gauge\n";
    parts_.database.Read([&](Connection& connection) {
      for (int state = 0; state <= kLastOpenState; ++state) {
        text += fmt::format("orvalo_outbox_parts{{state=\"{}\"}} {}\n",
                            NameOf(static_cast<PartState>(state)),
                            outbox::CountOpen(connection, static_cast<PartState>(state)));
      }
    });
    if (const auto status = parts_.kannel->watch().status()) {
      text += Gauge("orvalo_engine_links", status->links);
      text += Gauge("orvalo_engine_links_usable", status->links_usable);
      text += Gauge("orvalo_engine_queued", status->queued);
    }
  }
  text += Gauge("orvalo_carrier_healthy", parts_.carrier.IsHealthy() ? 1 : 0);
  return PlainReply(200, std::move(text));
}

// Proves the ledger writable, as an acceptance would.
ServedReply OperationsHandler::ShowReadiness() {
  parts_.database.Write([](Connection& connection) {
    Query(connection, "UPDATE setting SET value=value WHERE name='delivery_seconds'").Run();
  });
  if (!parts_.carrier.IsHealthy()) return PlainReply(503, "the network is not available\n");
  return PlainReply(200, "ready\n");
}

}  // namespace orvalo::service
