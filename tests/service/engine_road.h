#pragma once
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "service/running_service.h"
#include "support/gateway_program.h"
#include "support/kannel_engine.h"
#include "support/smpp_stand_in.h"
#include "support/temporary_folder.h"

namespace orvalo::test {

// The whole road to a phone: the gateway program with the account "demo", a real engine behind it,
// and behind that what stands in for a mobile network.
class EngineRoad {
 public:
  explicit EngineRoad(const KannelEngine::Options& engine = {}, std::vector<std::string> more = {});

  void StartService();
  GatewayCaller Caller() { return GatewayCaller(service->port(), "demo"); }
  std::string Operations(const std::string& path);  // the body of the reply

  // Waits, at most 30 s, until the message has the status; the last one it had.
  static int AwaitStatus(GatewayCaller& caller, const std::string& id, int status);
  static bool Await(const std::function<bool()>& ready);  // the same for anything

  ProgramResult Run(std::vector<std::string> command);  // of the gateway program, on its data
  // The outbox as the program lists it, one object a line.
  std::vector<nlohmann::json> Doubts();
  bool AddsUp() { return Run({"check"}).status == 0; }

  TemporaryFolder folder;
  SmppStandIn network;
  KannelEngine engine;
  std::vector<std::string> options;
  std::unique_ptr<GatewayProgram> service;
};

}  // namespace orvalo::test
