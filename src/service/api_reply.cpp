#include "service/api_reply.h"

#include <nlohmann/json.hpp>

namespace orvalo::service {

ServedReply ReplyOf(const Refusal& refusal) {
  const nlohmann::json body{
      {"error", {{"code", static_cast<int>(refusal.code)}, {"message", refusal.message}}}};
  ServedReply reply{HttpStatusOf(refusal.code), body.dump(), {}, false};
  if (refusal.code == ErrorCode::kTooManyRequests) reply.headers.emplace_back("Retry-After", "1");
  if (refusal.code == ErrorCode::kTooManyPasswords) reply.headers.emplace_back("Retry-After", "60");
  return reply;
}

}  // namespace orvalo::service
