#pragma once

namespace orvalo::platform {
class Clock;
class MessageBoxes;
}  // namespace orvalo::platform

namespace orvalo {

class AppSettings;
class EngineNotices;
class GatewayClient;
class Log;
class SmsDatabase;
class Texts;

// What the passes of the engine work with. All of it outlives them; references only.
struct EngineParts {
  const AppSettings& settings;
  SmsDatabase& database;
  Log& log;
  const Texts& texts;
  GatewayClient& gateway;
  platform::MessageBoxes& boxes;
  platform::Clock& clock;
  EngineNotices& notices;
};

// The message shown whenever the gateway's server cannot be reached (error code 99). Returns when
// it has been closed.
void ShowNoConnection(platform::MessageBoxes& boxes, const Texts& texts);

}  // namespace orvalo
