#include "service/account_calls.h"

#include <fmt/format.h>

#include <optional>

#include "service/api_reply.h"
#include "service/message_request.h"
#include "service/money.h"

namespace orvalo::service {
namespace {

constexpr int kRecoveriesOfUser = 5, kRecoveriesOfAddress = 15;
constexpr std::int64_t kMinuteMs = 60'000;
constexpr std::size_t kLongestCredential = 256;

ServedReply TrueReply() { return {200, R"({"ok":true})", {}, false}; }

}  // namespace

AccountCalls::AccountCalls(const Parts& parts)
    : parts_(parts),
      logins_(parts.database, parts.clock),
      strangers_(parts.clock),
      recoveries_of_user_(parts.clock, kRecoveriesOfUser, kMinuteMs),
      recoveries_of_address_(parts.clock, kRecoveriesOfAddress, kMinuteMs) {}

void AccountCalls::Register(Router& router) {
  router.Add({"POST", "/v1/session", Access::kOpen,
              [this](const Call& call) { return OpenSession(call); }, true});
  router.Add({"GET", "/v1/ping", Access::kSession, [](const Call&) { return TrueReply(); }});
  router.Add({"GET", "/v1/balance", Access::kSession,
              [this](const Call& call) { return GetBalance(call); }});
  router.Add({"POST", "/v1/vouchers", Access::kKeyed,
              [this](const Call& call) { return RedeemVoucher(call); }});
  router.Add({"POST", "/v1/password-recovery", Access::kOpen,
              [this](const Call& call) { return RecoverPassword(call); }, true});
  router.Add({"GET", "/v1/version", Access::kOpen, [](const Call&) {
                return ServedReply{200,
                                   fmt::format(R"({{"service":"orvalo-gateway","version":"{}",)"
                                               R"("protocol":1}})",
                                               ORVALO_VERSION),
                                   {},
                                   false};
              }});
  router.Add({"GET", "/v1/health", Access::kOpen, [this](const Call&) { return GetHealth(); }});
}

ServedReply AccountCalls::OpenSession(const Call& call) {
  const auto user = TextMember(call.body, "user", kLongestCredential);
  const auto password = TextMember(call.body, "password", kLongestCredential);
  const auto client = TextMember(call.body, "client_id", kLongestCredential);
  if (!user || !password || !client) return ReplyOf(Refuse(ErrorCode::kMalformed));
  const auto& address = call.request.address;
  const bool is_known = logins_.IsKnown(*user, address);
  if (!logins_.Take(*user, address)) return ReplyOf(Refuse(ErrorCode::kTooManyPasswords));
  std::optional<std::int64_t> account;
  const auto verify = [&] {
    account = parts_.accounts.Verify(*user, *password);
    return account.has_value();
  };
  if (is_known) {
    verify();
  } else if (!strangers_.Run(verify)) {
    logins_.GiveBack(*user, address);
    return ReplyOf(Refuse(ErrorCode::kTooManyRequests));
  }
  if (!account) return ReplyOf(Refuse(ErrorCode::kWrongPassword));
  logins_.Succeeded(*user, address);
  const auto token = parts_.sessions.Open(*account, *client);
  return {200, fmt::format(R"({{"token":"{}"}})", token), {}, false};
}

ServedReply AccountCalls::GetBalance(const Call& call) {
  const auto funds = parts_.accounts.FundsOf(call.account);
  if (!funds) return ReplyOf(Refuse(ErrorCode::kNoSession));
  return {200,
          fmt::format(R"({{"balance":"{}","credits":"{}"}})", MoneyText(funds->balance),
                      MoneyText(funds->credits)),
          {},
          false};
}

ServedReply AccountCalls::RedeemVoucher(const Call& call) {
  const auto number = TextMember(call.body, "number", kLongestCredential);
  if (!number) return ReplyOf(Refuse(ErrorCode::kMalformed));
  return parts_.vouchers.Redeem(KeyedRequestOf(call), *number);
}

ServedReply AccountCalls::RecoverPassword(const Call& call) {
  const auto user = TextMember(call.body, "user", kLongestCredential);
  const auto email = TextMember(call.body, "email", kLongestCredential);
  if (!user || !email) return ReplyOf(Refuse(ErrorCode::kMalformed));
  if (!recoveries_of_address_.Take(call.request.address) || !recoveries_of_user_.Take(*user)) {
    return ReplyOf(Refuse(ErrorCode::kTooManyRequests));
  }
  std::optional<std::string> password;
  const bool tried = strangers_.Run([&] {
    password = parts_.accounts.GiveTemporaryPassword(*user, *email);
    return password.has_value();
  });
  if (!tried) return ReplyOf(Refuse(ErrorCode::kTooManyRequests));
  if (!password) return ReplyOf(Refuse(ErrorCode::kNoSuchAddress));
  parts_.mail.Send(*user, *email, *password);
  return TrueReply();
}

ServedReply AccountCalls::GetHealth() {
  return parts_.carrier.IsHealthy() ? TrueReply() : ReplyOf(Refuse(ErrorCode::kNetworkDown));
}

}  // namespace orvalo::service
