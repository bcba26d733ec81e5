#include "service/engine_road.h"

#include <sstream>

namespace orvalo::test {

int EngineRoad::AwaitStatus(GatewayCaller& caller, const std::string& id, int status) {
  int last = 0;
  Await([&] {
    last = caller.Get("/v1/messages/" + id).body.value("status", 0);
    return last == status;
  });
  return last;
}

std::vector<nlohmann::json> EngineRoad::Doubts() {
  std::istringstream output(Run({"outbox", "list", "--doubt", "--json"}).out);
  std::vector<nlohmann::json> lines;
  for (std::string line; std::getline(output, line);) lines.push_back(nlohmann::json::parse(line));
  return lines;
}

}  // namespace orvalo::test
