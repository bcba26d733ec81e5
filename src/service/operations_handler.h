#pragma once
#include "service/delivery_reports.h"
#include "service/http_message.h"
#include "service/kannel_carrier.h"
#include "service/router.h"

namespace orvalo::service {

// What the machines around the service call, on a listener of its own: the engine with delivery
// reports, a monitor with /metrics, /health (the process answers) and /ready (it can accept and
// hand over messages). Any thread.
class OperationsHandler : public HttpHandler {
 public:
  struct Parts {
    Database& database;
    Metrics& metrics;
    const EventLog& log;
    const platform::Clock& clock;
    Carrier& carrier;
    KannelCarrier* kannel;  // null: another carrier
  };

  explicit OperationsHandler(const Parts& parts);

  ServedReply Handle(const ServedRequest& request) override;
  ServedReply Malformed(int status) override;
  const Router& router() const { return router_; }

 private:
  ServedReply ShowMetrics();
  ServedReply ShowReadiness();
  std::string LedgerMetrics(Connection& connection);

  const Parts parts_;
  DeliveryReports reports_;
  Router router_;
};

}  // namespace orvalo::service
