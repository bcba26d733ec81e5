#include "service/engine_road.h"

#include <chrono>
#include <sstream>
#include <thread>

namespace orvalo::test {

EngineRoad::EngineRoad(const KannelEngine::Options& engine_options, std::vector<std::string> more)
    : engine(folder.File("engine"), network.port(), engine_options) {
  Spill(folder.File("password"), "engine\n");
  Spill(folder.File("status"), "watch\n");
  options = {"--demo",
             "--carrier",
             "kannel",
             "--operations-listen",
             "127.0.0.1:" + std::to_string(UnusedPort()),  // the same after a restart
             "--kannel-user",
             "orvalo",
             "--kannel-password-file",
             folder.File("password"),
             "--kannel-status-url",
             engine.status_url(),
             "--kannel-status-password-file",
             folder.File("status"),
             "--kannel-sender",
             "Orvalo"};
  for (int box = 0; box < engine_options.smsboxes; ++box) {
    options.insert(options.end(), {"--kannel-url", engine.sendsms_url(box)});
  }
  options.insert(options.end(), more.begin(), more.end());
}

void EngineRoad::StartService() {
  service.reset();
  service = std::make_unique<GatewayProgram>(folder.path(), options);
}

std::string EngineRoad::Operations(const std::string& path) {
  platform::HttpClient client;
  platform::HttpRequest request;
  request.url = "http://127.0.0.1:" + std::to_string(service->operations_port()) + path;
  return client.Perform(request).body;
}

bool EngineRoad::Await(const std::function<bool()>& ready) {
  const auto give_up = std::chrono::steady_clock::now() + std::chrono::seconds(30);
  while (!ready()) {
    if (std::chrono::steady_clock::now() > give_up) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return true;
}

int EngineRoad::AwaitStatus(GatewayCaller& caller, const std::string& id, int status) {
  int last = 0;
  Await([&] {
    last = caller.Get("/v1/messages/" + id).body.value("status", 0);
    return last == status;
  });
  return last;
}

ProgramResult EngineRoad::Run(std::vector<std::string> command) {
  command.insert(command.end(), {"--data", folder.File("data")});
  return RunGateway(std::move(command));
}

std::vector<nlohmann::json> EngineRoad::Doubts() {
  std::istringstream output(Run({"outbox", "list", "--doubt", "--json"}).out);
  std::vector<nlohmann::json> lines;
  for (std::string line; std::getline(output, line);) lines.push_back(nlohmann::json::parse(line));
  return lines;
}

}  // namespace orvalo::test
