#pragma once
#include "service/http_message.h"
#include "service/refusal.h"

namespace orvalo::service {

// The reply that tells a refusal, with the headers that belong to it.
ServedReply ReplyOf(const Refusal& refusal);

}  // namespace orvalo::service
