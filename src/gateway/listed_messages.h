#pragma once
#include <cstdint>
#include <functional>
#include <string>

#include "gateway/gateway_failure.h"

namespace orvalo {

namespace platform {
class Clock;
}

class GatewayClient;

// A message as the gateway lists it; see GatewayClient::ListMessages.
struct ListedMessage {
  std::string id, key, number, charge;
  std::int32_t status = 0;  // the gateway's own number
  std::int64_t accepted = 0;
};

// The code of a gateway, or a component, that has no such call.
inline constexpr std::int32_t kGatewayCannot = 102;

// Asks for all messages that the account's gateway has accepted since then (seconds since 1970 UTC;
// 0 or less: for all), oldest first, and calls `visit` with each; `page_done` after each page. A
// page that is not answered is asked for again for some seconds. What has ended it: code 0 at the
// end of the list, kGatewayCannot, or why a page was not told. Blocks; any thread.
GatewayFailure ForEachListed(GatewayClient& gateway, platform::Clock& clock, std::int64_t since,
                             const std::function<void(const ListedMessage&)>& visit,
                             const std::function<void()>& page_done);

// What is left in the account, and all that was ever put in. False when the gateway does not tell.
struct Funds {
  std::string balance, credits;
  bool operator==(const Funds&) const = default;
};
bool AskFunds(GatewayClient& gateway, Funds* funds);

}  // namespace orvalo
