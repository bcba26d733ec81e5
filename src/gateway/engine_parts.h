#pragma once
#include <exception>

namespace orvalo::platform {
class Clock;
class MessageBoxes;
}  // namespace orvalo::platform

namespace orvalo {

class AppSettings;
class EngineNotices;
class GatewayClient;
struct GatewayFailure;
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

// The message shown whenever the gateway's server cannot be reached (error code 99), with the cause
// as far as it is known. Returns when it has been closed.
void ShowNoConnection(platform::MessageBoxes& boxes, const Texts& texts,
                      const AppSettings& settings, const GatewayFailure& failure);

// To be called with what has ended a pass: lets the operator know when it was the store. Any
// thread.
void TellStoreRefusal(const EngineParts& parts, const std::exception& problem);

}  // namespace orvalo
