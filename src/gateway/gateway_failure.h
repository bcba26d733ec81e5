#pragma once
#include <cstdint>
#include <string>
#include <string_view>

#include "platform/http.h"

namespace orvalo {

class Texts;

// Error codes of the component that the program acts on. 0 is success; all others are the
// component's own.
enum GatewayError : std::int32_t {
  kGatewayOk = 0,
  kProxyUnreachable = 95,
  kProxyRefused = 96,
  kNotUnderstood = 98,
  kGatewayUnreachable = 99,
  kWrongPassword = 110,
  kNoSession = 111,  // nobody is logged in: nothing went out
  kTooManyRequests = 113,
  kKeyReused = 206,         // the key of a submission was used with another request
  kNoSuchSubmission = 209,  // the gateway knows nothing of the key
  kServiceFailed = 500,
  kNetworkUnavailable = 503,
  kVoucherUsed = 607,
};

// Why a call of the gateway failed.
struct GatewayFailure {
  std::int32_t code = kGatewayOk;
  platform::HttpObstacle obstacle = platform::HttpObstacle::kNotKnown;
  std::string words =
      {};  // the service's own, or those of whoever could not reach it; may be empty
};

// True for what does not lie in the message or the id that was asked about: the next question meets
// the same. Not reachable, not logged in, too much asked, or out of order.
bool ConcernsEveryCall(std::int32_t code);

// The failure in words for the operator: our own text where there is one, else the words that came
// with it. `address` is the gateway's.
std::string FailureText(const GatewayFailure& failure, const Texts& texts,
                        const std::string& address);

// The same about a server that cannot be reached, and nothing when no more than that is known.
std::string ObstacleText(const GatewayFailure& failure, const Texts& texts,
                         const std::string& address);

// The failure as it is kept with a message: "208: The number is refused by the network".
std::string ReasonText(const GatewayFailure& failure, const Texts& texts,
                       const std::string& address);

// True for the codes of a client that has spoken to no service: 95, 96 and 99.
bool IsUnreachable(std::int32_t code);

// True for what is no answer to a submission: nobody could be reached or understood, nobody is
// logged in, or the service takes nothing for now. The message may have been accepted all the same.
bool IsUnanswered(std::int32_t code);

// The words of a reply that says why a call failed: those behind "ERR: 208, ", or all of them when
// it does not begin like that.
std::string_view RefusalWords(std::string_view reply);

// "208, The number is refused", as a reply has it of one recipient, as a reason.
std::string RefusalReason(std::string_view entry);

}  // namespace orvalo
