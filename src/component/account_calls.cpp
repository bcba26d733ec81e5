#include "component/account_calls.h"

#include <algorithm>
#include <utility>

#include "component/error_codes.h"
#include "component/reply_fields.h"
#include "component/reply_texts.h"

namespace orvalo::component {
namespace {

constexpr char kDone[] = "OK";

Answer PlainAnswer(const Outcome& outcome) {
  return outcome.ok() ? Answer{kSuccess, kDone} : RefusalAnswer(outcome);
}

Call GetCall(std::string path) {
  Call call;
  call.path = std::move(path);
  return call;
}

Call VoucherCall(const std::string& number) {
  Call call;
  call.method = "POST";
  call.path = "/v1/vouchers";
  call.body = {{"number", number}};
  call.repeat = Call::Repeat::kSubmission;
  return call;
}

Answer VoucherAnswer(const Outcome& outcome) {
  if (!outcome.ok()) return RefusalAnswer(outcome);
  const auto amount = DecimalField(outcome.reply, "amount");
  if (!amount) return RefusalAnswer(NotUnderstood());
  return {kSuccess, std::string(kDone) + ": " + *amount};
}

bool IsPort(const std::string& text) {
  return !text.empty() && text.size() <= 5 &&
         std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; }) &&
         std::stoi(text) >= 1 && std::stoi(text) <= 65'535;
}

// What a failed test of a named proxy says of the proxy: one that takes the request and breaks off
// does not work as one, and a reply that is not the service's own is the proxy's, which does not
// let the request through.
Outcome BlameProxy(Outcome outcome) {
  if (outcome.failure == platform::HttpFailure::kNoReply)
    return Failed(kProxyUnreachable, std::move(outcome.message));
  if (outcome.error == kNotUnderstood)
    return Failed(kProxyRefuses, "The proxy does not let the request through");
  return outcome;
}

}  // namespace

Answer RefusalAnswer(const Outcome& outcome) {
  return {outcome.error, ErrorText(outcome.error, outcome.message), PlainWords(outcome.message),
          outcome.obstacle};
}

AccountCalls::AccountCalls(GatewayProtocol& protocol, Session& session, platform::HttpClient& http)
    : protocol_(protocol), session_(session), http_(http) {}

Answer AccountCalls::LogIn(const Credentials& credentials) {
  return PlainAnswer(protocol_.LogIn(credentials));
}

Answer AccountCalls::Ping() { return PlainAnswer(protocol_.Perform(GetCall("/v1/ping"))); }

Answer AccountCalls::QueryBalance() {
  const auto outcome = protocol_.Perform(GetCall("/v1/balance"));
  if (!outcome.ok()) return RefusalAnswer(outcome);
  const auto balance = DecimalField(outcome.reply, "balance");
  return balance ? Answer{kSuccess, *balance} : RefusalAnswer(NotUnderstood());
}

Answer AccountCalls::QueryFunds() {
  const auto outcome = protocol_.Perform(GetCall("/v1/balance"));
  if (!outcome.ok()) return RefusalAnswer(outcome);
  if (!outcome.reply.contains("credits")) {
    return RefusalAnswer(Failed(kNoSuchCall, "The service does not tell the credits"));
  }
  const auto balance = DecimalField(outcome.reply, "balance");
  const auto credits = DecimalField(outcome.reply, "credits");
  if (!balance || !credits) return RefusalAnswer(NotUnderstood());
  return {kSuccess, nlohmann::json{{"balance", *balance}, {"credits", *credits}}.dump()};
}

Answer AccountCalls::RecoverPassword(const std::string& user, const std::string& email) {
  Call call;
  call.method = "POST";
  call.path = "/v1/password-recovery";
  call.body = {{"user", user}, {"email", email}};
  call.repeat = Call::Repeat::kNever;  // each one sends a mail
  call.needs_session = false;
  return PlainAnswer(protocol_.Perform(call));
}

Answer AccountCalls::RedeemVoucher(const std::string& number) {
  return VoucherAnswer(protocol_.Perform(VoucherCall(number)));
}

Answer AccountCalls::RedeemVoucherAt(const std::string& number, const std::string& base) {
  const auto address = ReadBaseAddress(base);
  if (!address) return RefusalAnswer(Failed(kMalformed, "Not a base address"));
  return VoucherAnswer(protocol_.PerformAt(*address, VoucherCall(number)));
}

std::string AccountCalls::PageToken() {
  Call call;
  call.method = "POST";
  call.path = "/v1/page-token";
  const auto outcome = protocol_.Perform(call);
  if (outcome.ok()) {
    if (const auto token = HexField(outcome.reply, "token", kTokenDigits)) return *token;
  }
  return session_.Current().token;
}

Answer AccountCalls::SetBase(const std::string& base) {
  if (!session_.SetBase(base)) return RefusalAnswer(Failed(kMalformed, "Not a base address"));
  return {kSuccess, kDone};
}

Answer AccountCalls::ConfigureProxy(bool test, std::int32_t type, platform::ProxyConfig config) {
  using platform::ProxyMode;
  if (type < static_cast<std::int32_t>(ProxyMode::kNeverChosen) ||
      type > static_cast<std::int32_t>(ProxyMode::kNamed)) {
    return RefusalAnswer(Failed(kMalformed, "No such proxy type"));
  }
  config.mode = static_cast<ProxyMode>(type);
  http_.SetProxy(config);
  if (config.mode == ProxyMode::kNamed && (config.host.empty() || !IsPort(config.port))) {
    return RefusalAnswer(Failed(kProxyUnreachable, "The proxy has no host or no port"));
  }
  if (!test) return {kSuccess, kDone};
  auto health = GetCall("/v1/health");
  health.needs_session = false;
  auto outcome = protocol_.Perform(health);
  return PlainAnswer(config.mode == ProxyMode::kNamed ? BlameProxy(std::move(outcome)) : outcome);
}

}  // namespace orvalo::component
