#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "store/sms_status.h"

namespace orvalo {

// What the gateway's answer to a status query says: "status: 004 charge: 0.8", in any case,
// anywhere in the reply.
struct StatusReply {
  std::optional<std::int32_t> status;  // the gateway's status number
  std::optional<std::string> charge;
};

// The number is read from one character after the colon (that one is skipped), so "status:4" reads
// as 0. The charge runs to the next space. Never fails: what is not there is not set.
StatusReply ParseStatusReply(std::string_view reply);

// The message status for a gateway status number; nothing for 8 and for numbers outside 1 to 11,
// which change nothing.
std::optional<SmsStatus> StatusOfGatewayNumber(std::int32_t number);

// The next status query interval in seconds after one at `query_time`; 0: no more queries.
std::int32_t NextQueryInterval(std::int32_t query_time);

}  // namespace orvalo
