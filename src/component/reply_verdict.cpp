#include "component/reply_verdict.h"

#include <utility>

#include "component/error_codes.h"
#include "component/reply_fields.h"

namespace orvalo::component {
namespace {

constexpr int kLowestServiceCode = 100;  // those below never travel
constexpr int kHighestServiceCode = 9999;
constexpr int kFirstErrorStatus = 400;

std::string WithReason(std::string text, const std::string& reason) {
  if (!reason.empty()) text += ": " + reason;
  return text;
}

Verdict JudgeFailure(const platform::HttpReply& reply) {
  using platform::HttpFailure;
  using enum Verdict::Again;
  switch (reply.failure) {
    case HttpFailure::kProxyUnreachable:
      return {Failed(kProxyUnreachable, WithReason("The proxy cannot be reached", reply.error)),
              kNo};
    case HttpFailure::kProxyRefused:
      return {Failed(kProxyRefuses, WithReason("The proxy refuses", reply.error)), kNo};
    case HttpFailure::kTooLarge:
      return {NotUnderstood(), kNo};
    case HttpFailure::kNoReply:
      return {Failed(kServiceUnreachable, WithReason("The service does not answer", reply.error)),
              kNoReply};
    case HttpFailure::kUnreachable:
      return {Failed(kServiceUnreachable, WithReason("The service cannot be reached", reply.error)),
              kUnreachable};
    case HttpFailure::kNone:
    case HttpFailure::kTls:
    case HttpFailure::kBadRequest:
      break;
  }
  return {Failed(kServiceUnreachable, WithReason("The service cannot be reached", reply.error)),
          kNo};
}

}  // namespace

Outcome Failed(int error, std::string message) { return {error, std::move(message), nullptr}; }

Outcome NotUnderstood() {
  return Failed(kNotUnderstood, "The reply of the service cannot be understood");
}

bool IsLoadRefusal(int error) {
  return error == kTooManyRequests || error == kServiceFailed || error == kNetworkUnavailable;
}

Outcome OutcomeOf(int status, nlohmann::json body) {
  if (!body.is_object()) return NotUnderstood();
  if (status >= 200 && status < 300) return {kSuccess, "", std::move(body)};
  const auto error = body.find("error");
  if (status < kFirstErrorStatus || error == body.end()) return NotUnderstood();
  const auto code = IntegerField(*error, "code", kLowestServiceCode, kHighestServiceCode);
  return code ? Failed(*code, TextField(*error, "message").value_or("")) : NotUnderstood();
}

Verdict Judge(const platform::HttpReply& reply) {
  if (reply.failure != platform::HttpFailure::kNone) {
    auto verdict = JudgeFailure(reply);
    verdict.outcome.failure = reply.failure;
    verdict.outcome.obstacle = reply.obstacle;
    return verdict;
  }
  auto outcome = OutcomeOf(reply.status,
                           nlohmann::json::parse(reply.body, nullptr, /*allow_exceptions=*/false));
  const auto again = IsLoadRefusal(outcome.error) ? Verdict::Again::kLoad : Verdict::Again::kNo;
  return {std::move(outcome), again};
}

}  // namespace orvalo::component
