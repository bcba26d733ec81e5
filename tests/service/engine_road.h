#pragma once
#include <string>
#include <vector>

#include "service/running_service.h"
#include "support/phone_road.h"

namespace orvalo::test {

// The road to a phone for those who speak the protocol to the service.
class EngineRoad : public PhoneRoad {
 public:
  using PhoneRoad::PhoneRoad;

  GatewayCaller Caller() { return GatewayCaller(service->port(), "demo", certificate); }

  // Waits, at most 30 s, until the message has the status; the last one it had.
  static int AwaitStatus(GatewayCaller& caller, const std::string& id, int status);

  // The outbox as the program lists it, one object a line.
  std::vector<nlohmann::json> Doubts();
};

}  // namespace orvalo::test
