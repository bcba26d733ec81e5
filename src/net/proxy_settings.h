#pragma once
#include <cstdint>
#include <string>

namespace orvalo::platform {
class MessageBoxes;
}

namespace orvalo {

class AppSettings;
class GatewayClient;
class Texts;
struct GatewayFailure;

// Hands the stored proxy settings to the gateway component. Main thread.
class ProxySettings {
 public:
  ProxySettings(const AppSettings& settings, GatewayClient& gateway, const Texts& texts,
                platform::MessageBoxes& boxes)
      : settings_(settings), gateway_(gateway), texts_(texts), boxes_(boxes) {}

  // With `test` the component also tries the connection. Returns its error code, 0 for success; any
  // other has been shown to the operator as a link message.
  std::int32_t ApplyProxySettings(bool test);

 private:
  std::string FailureMessage(const GatewayFailure& failure) const;

  const AppSettings& settings_;
  GatewayClient& gateway_;
  const Texts& texts_;
  platform::MessageBoxes& boxes_;
};

}  // namespace orvalo
