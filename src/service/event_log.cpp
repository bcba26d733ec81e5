#include "service/event_log.h"

#include <fmt/chrono.h>

#include <ctime>
#include <nlohmann/json.hpp>

#include "platform/terminal.h"

namespace orvalo::service {

void EventLog::Write(const char* level, const char* event, Fields fields) const {
  nlohmann::ordered_json line{
      {"time", fmt::format("{:%Y-%m-%dT%H:%M:%SZ}", fmt::gmtime(std::time_t{clock_.Now()}))},
      {"level", level},
      {"event", event}};
  for (const auto& [name, value] : fields) line[name] = value;
  sink_(
      platform::PrintableJson(line.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace)));
}

}  // namespace orvalo::service
