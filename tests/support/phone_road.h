#pragma once
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "support/gateway_program.h"
#include "support/kannel_engine.h"
#include "support/smpp_stand_in.h"
#include "support/temporary_folder.h"

namespace orvalo::test {

// The whole road to a phone: the gateway program with the account "demo", a real engine behind it,
// and behind that what stands in for a mobile network. With an engine that speaks TLS, the service
// does so too, and both vouch for each other by the engine's certificate.
class PhoneRoad {
 public:
  explicit PhoneRoad(const KannelEngine::Options& engine = {}, std::vector<std::string> more = {});

  void StartService();
  std::string Operations(const std::string& path);  // the body of the reply

  static bool Await(const std::function<bool()>& ready);  // at most 30 s

  ProgramResult Run(std::vector<std::string> command);  // of the gateway program, on its data
  bool AddsUp() { return Run({"check"}).status == 0; }

  TemporaryFolder folder;
  const std::string certificate;  // a file, for whoever calls; "": nobody speaks TLS
  SmppStandIn network;
  KannelEngine engine;
  std::vector<std::string> options;
  std::unique_ptr<GatewayProgram> service;
};

}  // namespace orvalo::test
