#pragma once
#include <variant>

#include "service/http_message.h"
#include "service/metrics.h"
#include "service/refusal.h"
#include "service/vouchers.h"

namespace orvalo::service {

// The reply that tells a refusal, with the headers that belong to it.
ServedReply ReplyOf(const Refusal& refusal);

// The reply to a voucher: what it brought, or the refusal.
ServedReply ReplyOf(const std::variant<Vouchers::Redeemed, Refusal>& result);

// A call or a recipient was refused.
void CountRefusal(Metrics& metrics, ErrorCode code);

}  // namespace orvalo::service
