#pragma once
#include <functional>
#include <optional>
#include <string>

#include "service/attempts.h"
#include "service/http_message.h"
#include "service/metrics.h"
#include "service/refusal.h"
#include "service/router.h"
#include "service/sessions.h"

namespace orvalo::service {

// The protocol's common part: finds the route, checks session, rate, content type, JSON and key,
// calls the handler, and turns whatever goes wrong into the protocol's errors. Any thread.
class Api : public HttpHandler {
 public:
  // `report` gets a line for the service's own log when a call fails by our fault.
  Api(const Router& router, Sessions& sessions, Attempts& requests, Metrics& metrics,
      std::function<void(const std::string&)> report);

  ServedReply Handle(const ServedRequest& request) override;
  ServedReply Malformed(int status) override;
  bool TakesLong(std::string_view method, std::string_view path) const override;

 private:
  ServedReply Counted(ServedReply reply);
  ServedReply Answer(const ServedRequest& request);
  std::optional<Refusal> Authorise(const Route& route, Call& call);

  const Router& router_;
  Sessions& sessions_;
  Attempts& requests_;
  Metrics& metrics_;
  std::function<void(const std::string&)> report_;
};

}  // namespace orvalo::service
