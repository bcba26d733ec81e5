#include "service/api.h"

#include <fmt/format.h>

#include <algorithm>

#include "service/api_reply.h"
#include "service/database.h"
#include "service/message_request.h"
#include "service/secrets.h"

namespace orvalo::service {
namespace {

// Of requests that anybody can make: a name, a password, an address.
constexpr std::size_t kLargestOpenBody = 4096;
constexpr int kRefusedAtOnce = 10;
constexpr std::int64_t kSecondMs = 1000;

// What a program that guesses, or floods, is told.
bool IsForGuesses(ErrorCode code) {
  switch (code) {
    case ErrorCode::kWrongPassword:
    case ErrorCode::kNoSession:
    case ErrorCode::kTooManyPasswords:
    case ErrorCode::kTooManyRequests:
    case ErrorCode::kNoSuchAddress:
    case ErrorCode::kNoSuchVoucher:
    case ErrorCode::kVoucherUsed:
      return true;
    default:
      return false;
  }
}

bool IsJsonType(std::string_view content_type) {
  constexpr std::string_view kJson = "application/json";
  const auto type = content_type.substr(0, content_type.find(';'));
  const auto end = type.find_last_not_of(" \t");
  return end != std::string_view::npos &&
         std::equal(kJson.begin(), kJson.end(), type.begin(), type.begin() + end + 1,
                    [](char a, char b) { return a == (b >= 'A' && b <= 'Z' ? b + 32 : b); });
}

std::string_view BearerToken(std::string_view authorization) {
  constexpr std::string_view kBearer = "Bearer ";
  return authorization.starts_with(kBearer) ? authorization.substr(kBearer.size()) : "";
}

}  // namespace

Api::Api(const Parts& parts, std::chrono::milliseconds hold,
         std::function<void(const std::string&)> report)
    : parts_(parts),
      hold_(hold),
      refusals_(parts.clock, kRefusedAtOnce, kSecondMs),
      report_(std::move(report)) {}

ServedReply Api::Handle(const ServedRequest& request) {
  try {
    return Held(Counted(Answer(request)), request.address);
  } catch (const std::exception& failure) {
    const bool is_full = dynamic_cast<const DiskFull*>(&failure) != nullptr;
    report_(fmt::format("{} {} failed: {}", request.method, request.path, failure.what()));
    return Counted(ReplyOf(is_full
                               ? Refusal{ErrorCode::kServiceFailed,
                                         "The disk of the service is full; nothing was accepted"}
                               : Refuse(ErrorCode::kServiceFailed)));
  }
}

ServedReply Api::Counted(ServedReply reply) {
  if (reply.error != 0) CountRefusal(parts_.metrics, static_cast<ErrorCode>(reply.error));
  return reply;
}

ServedReply Api::Held(ServedReply reply, const std::string& address) {
  if (IsForGuesses(static_cast<ErrorCode>(reply.error)) && !refusals_.Take(address)) {
    reply.hold = hold_;
  }
  return reply;
}

ServedReply Api::Malformed(int status) {
  const auto code = status == 413   ? ErrorCode::kTooLarge
                    : status == 500 ? ErrorCode::kServiceFailed
                                    : ErrorCode::kMalformed;
  auto reply = ReplyOf(Refuse(code));
  reply.status = status;
  return Counted(std::move(reply));
}

bool Api::TakesLong(std::string_view method, std::string_view path) const {
  const auto match = parts_.router.Find(method, path);
  return match.route && match.route->takes_long;
}

ServedReply Api::Answer(const ServedRequest& request) {
  const auto match = parts_.router.Find(request.method, request.path);
  if (!match.route) {
    if (match.other_methods.empty()) return ReplyOf(Refuse(ErrorCode::kNoSuchPath));
    auto reply = ReplyOf(Refuse(ErrorCode::kNoSuchMethod));
    reply.headers.emplace_back("Allow", match.other_methods);
    return reply;
  }
  const bool anybody = match.route->access == Access::kOpen;
  if (request.body_too_large || (anybody && request.body.size() > kLargestOpenBody))
    return ReplyOf(Refuse(ErrorCode::kTooLarge));
  Call call{request, nlohmann::json::object(), 0, match.id, {}};
  if (const auto refusal = Authorise(*match.route, call)) return ReplyOf(*refusal);
  if (!request.body.empty() && match.route->access != Access::kPage) {
    if (!IsJsonType(request.header("Content-Type"))) return ReplyOf(Refuse(ErrorCode::kNotJson));
    auto body = ParseObject(request.body);
    if (!body) return ReplyOf(Refuse(ErrorCode::kMalformed));
    call.body = std::move(*body);
  }
  return match.route->handler(call);
}

std::optional<Refusal> Api::Authorise(const Route& route, Call& call) {
  if (route.access == Access::kOpen || route.access == Access::kPage) return std::nullopt;
  const auto account = parts_.sessions.AccountOf(BearerToken(call.request.header("Authorization")));
  if (!account) return Refuse(ErrorCode::kNoSession);
  call.account = *account;
  if (!parts_.requests.Take(std::to_string(call.account)))
    return Refuse(ErrorCode::kTooManyRequests);
  if (route.access != Access::kKeyed) return std::nullopt;
  call.key = FromHex(call.request.header("Idempotency-Key"));
  if (call.key.size() != 16) {
    return Refusal{ErrorCode::kMalformed,
                   "The header Idempotency-Key must have 32 hexadecimal digits"};
  }
  return std::nullopt;
}

}  // namespace orvalo::service
