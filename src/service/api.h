#pragma once
#include <chrono>
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
//
// Whoever asks again as soon as it is refused would take the place of those who are served: of the
// refusals that guesses and floods get, an address gets ten in a second at once, and the others
// only after `hold`.
class Api : public HttpHandler {
 public:
  // `report` gets a line for the service's own log when a call fails by our fault.
  struct Parts {
    const Router& router;
    Sessions& sessions;
    Attempts& requests;  // of an account
    Metrics& metrics;
    const platform::Clock& clock;
  };
  Api(const Parts& parts, std::chrono::milliseconds hold,
      std::function<void(const std::string&)> report);

  ServedReply Handle(const ServedRequest& request) override;
  ServedReply Malformed(int status) override;
  bool TakesLong(std::string_view method, std::string_view path) const override;

 private:
  ServedReply Counted(ServedReply reply);
  ServedReply Held(ServedReply reply, const std::string& address);
  ServedReply Answer(const ServedRequest& request);
  std::optional<Refusal> Authorise(const Route& route, Call& call);

  const Parts parts_;
  const std::chrono::milliseconds hold_;
  Attempts refusals_;  // of an address
  std::function<void(const std::string&)> report_;
};

}  // namespace orvalo::service
