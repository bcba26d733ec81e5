#include "service/operations_handler.h"

#include "service/settings.h"

namespace orvalo::service {
namespace {

ServedReply PlainReply(int status, std::string text) {
  ServedReply reply{status, std::move(text), {}, false};
  reply.content_type = "text/plain; version=0.0.4; charset=utf-8";
  return reply;
}

std::string StateLabel(const char* state) { return std::string("state=\"") + state + "\""; }

}  // namespace

OperationsHandler::OperationsHandler(const Parts& parts)
    : parts_(parts), reports_({parts.kannel, parts.metrics, parts.log, parts.clock}) {
  router_.Add({"GET", "/metrics", Access::kOpen, [this](const Call&) { return ShowMetrics(); }});
  router_.Add(
      {"GET", "/health", Access::kOpen, [](const Call&) { return PlainReply(200, "ok\n"); }});
  router_.Add({"GET", "/ready", Access::kOpen, [this](const Call&) { return ShowReadiness(); }});
  router_.Add({"GET", kReportRoute, Access::kOpen,
               [this](const Call& call) { return PlainReply(reports_.Take(call.request), ""); }});
}

ServedReply OperationsHandler::Handle(const ServedRequest& request) {
  try {
    const auto match = router_.Find(request.method, request.path);
    if (match.route != nullptr) return match.route->handler({request, {}, 0, match.id, {}});
    if (match.other_methods.empty()) return PlainReply(404, "");
    auto reply = PlainReply(405, "");
    reply.headers.emplace_back("Allow", match.other_methods);
    return reply;
  } catch (const std::exception& failure) {
    parts_.log.Error("operations_call_failed", {{"reason", failure.what()}});
    return PlainReply(500, "");  // an engine that is set up to try again does
  }
}

ServedReply OperationsHandler::Malformed(int status) { return PlainReply(status, ""); }

ServedReply OperationsHandler::ShowMetrics() {
  auto text = parts_.metrics.Text();
  if (parts_.kannel != nullptr) {
    text += parts_.database.Read([&](Connection& connection) { return LedgerMetrics(connection); });
    if (const auto status = parts_.kannel->watch().status()) {
      text += MetricText("orvalo_engine_links", {{"", status->links}});
      text += MetricText("orvalo_engine_links_usable", {{"", status->links_usable}});
      text += MetricText("orvalo_engine_queued_messages", {{"", status->queued}});
    }
  }
  text += MetricText("orvalo_carrier_healthy", {{"", parts_.carrier.IsHealthy() ? 1 : 0}});
  return PlainReply(200, std::move(text));
}

std::string OperationsHandler::LedgerMetrics(Connection& connection) {
  const auto waiting = outbox::CountWaiting(connection, parts_.clock.Now());
  MetricLines lines{{StateLabel("held"), waiting.held},
                    {StateLabel(NameOf(PartState::kWaiting)), waiting.due}};
  for (int state = static_cast<int>(PartState::kAsked); state <= kLastOpenState; ++state) {
    const auto open = static_cast<PartState>(state);
    lines.emplace_back(StateLabel(NameOf(open)), outbox::CountOpen(connection, open));
  }
  const auto refunds = LoadRefunds(connection);
  return MetricText("orvalo_outbox_parts", lines) +
         MetricText("orvalo_refunded_parts_total", {{"", refunds.parts}}) +
         MetricText("orvalo_refunded_credits_total", {{"", refunds.amount}});
}

// Proves the ledger writable, as an acceptance would.
ServedReply OperationsHandler::ShowReadiness() {
  try {
    parts_.database.Write([](Connection& connection) {
      Query(connection, "UPDATE setting SET value=value WHERE name='delivery_seconds'").Run();
    });
  } catch (const std::exception& failure) {
    return PlainReply(503, std::string("the ledger cannot be written: ") + failure.what() + "\n");
  }
  if (!parts_.carrier.IsHealthy()) return PlainReply(503, "the network is not available\n");
  return PlainReply(200, "ready\n");
}

}  // namespace orvalo::service
