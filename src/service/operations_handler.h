#pragma once
#include "service/http_message.h"
#include "service/kannel_carrier.h"

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
    Carrier& carrier;
    KannelCarrier* kannel;  // null: another carrier
  };

  explicit OperationsHandler(const Parts& parts) : parts_(parts) {}

  ServedReply Handle(const ServedRequest& request) override;
  ServedReply Malformed(int status) override;

 private:
  ServedReply TakeReport(const ServedRequest& request);
  ServedReply ShowMetrics();
  ServedReply ShowReadiness();

  const Parts parts_;
};

}  // namespace orvalo::service
