#include "service/api_reply.h"

#include <fmt/format.h>

#include <nlohmann/json.hpp>

namespace orvalo::service {

ServedReply ReplyOf(const Refusal& refusal) {
  const nlohmann::json body{
      {"error", {{"code", static_cast<int>(refusal.code)}, {"message", refusal.message}}}};
  ServedReply reply{HttpStatusOf(refusal.code), body.dump(), {}, false};
  reply.error = static_cast<int>(refusal.code);
  if (refusal.code == ErrorCode::kTooManyRequests) reply.headers.emplace_back("Retry-After", "1");
  if (refusal.code == ErrorCode::kTooManyPasswords) reply.headers.emplace_back("Retry-After", "60");
  return reply;
}

ServedReply ReplyOf(const std::variant<Vouchers::Redeemed, Refusal>& result) {
  if (const auto* refusal = std::get_if<Refusal>(&result)) return ReplyOf(*refusal);
  const auto& redeemed = std::get<Vouchers::Redeemed>(result);
  return {200,
          fmt::format(R"({{"amount":"{}","balance":"{}"}})", MoneyText(redeemed.amount),
                      MoneyText(redeemed.balance)),
          {},
          false};
}

void CountRefusal(Metrics& metrics, ErrorCode code) {
  metrics.Count("orvalo_refusals_total", fmt::format("reason=\"{}\"", NameOf(code)));
}

}  // namespace orvalo::service
