#include "gateway/status_reply.h"

#include "platform/collation.h"
#include "platform/number.h"

namespace orvalo {

namespace {

constexpr std::size_t kValueOffset = 8;  // from the start of "status:" or "charge:" to its value

std::optional<std::string_view> ValueAfter(std::string_view reply, std::string_view word) {
  const std::size_t at = reply.find(word);
  if (at == std::string_view::npos) return std::nullopt;
  return at + kValueOffset < reply.size() ? reply.substr(at + kValueOffset) : std::string_view();
}

}  // namespace

StatusReply ParseStatusReply(std::string_view reply) {
  const std::string lowered = platform::ToLower(reply);
  StatusReply result;
  if (const auto value = ValueAfter(lowered, "status:"))
    result.status = platform::ParseInteger(*value);
  if (auto value = ValueAfter(lowered, "charge:")) {
    const std::size_t begin = value->find_first_not_of(" \t\r\n\v\f");
    value->remove_prefix(begin == std::string_view::npos ? value->size() : begin);
    result.charge = std::string(value->substr(0, value->find(' ')));
  }
  return result;
}

std::optional<SmsStatus> StatusOfGatewayNumber(std::int32_t number) {
  switch (number) {
    case 1:
      return SmsStatus::kUnknown;
    case 2:
      return SmsStatus::kQueued;
    case 3:
      return SmsStatus::kDeliveredToGateway;
    case 4:
      return SmsStatus::kDelivered;
    case 5:
      return SmsStatus::kErrorWithMessage;
    case 6:
      return SmsStatus::kCancelled;
    case 7:
      return SmsStatus::kDeliveryError;
    case 9:
      return SmsStatus::kRoutingError;
    case 10:
      return SmsStatus::kMessageExpired;
    case 11:
      return SmsStatus::kScheduledOnServer;
    default:
      return std::nullopt;
  }
}

std::int32_t NextQueryInterval(std::int32_t query_time) {
  switch (query_time) {
    case 60:
      return 300;
    case 300:
      return 1800;
    case 1800:
      return 2700;
    case 2700:
      return 3600;
    default:
      return 0;
  }
}

}  // namespace orvalo
