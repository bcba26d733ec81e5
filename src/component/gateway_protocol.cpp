#include "component/gateway_protocol.h"

#include <algorithm>
#include <array>
#include <span>
#include <utility>

#include "component/error_codes.h"
#include "component/reply_fields.h"
#include "component/submission_key.h"

namespace orvalo::component {
namespace {

constexpr std::size_t kLargestReply = 1u << 20;  // bytes; a thousand recipients take a tenth of it
constexpr std::int64_t kLongestTry = 30'000;     // milliseconds, as all times here
constexpr std::int64_t kLongestConnect = 10'000;

// Pauses before the second try, the third …; as many repetitions as pauses.
constexpr std::array<std::int64_t, 2> kPausesAfterNoReply = {500, 2'000};
constexpr std::array<std::int64_t, 4> kPausesAfterLoad = {1'000, 2'000, 4'000, 8'000};
constexpr std::array<std::int64_t, 1> kPausesAfterUnreachable = {200};

// How many pauses of each kind a call has taken.
class Patience {
 public:
  explicit Patience(Call::Repeat repeat) : repeat_(repeat) {}

  std::int64_t total() const {
    return repeat_ == Call::Repeat::kSubmission ? 3 * kLongestTry : kLongestTry;
  }

  // The next pause; negative when the request is not to be tried again.
  std::int64_t NextPause(Verdict::Again again) {
    switch (again) {
      case Verdict::Again::kNo:
        return -1;
      case Verdict::Again::kNoReply:
        return repeat_ == Call::Repeat::kNever ? -1 : Take(kPausesAfterNoReply, &after_no_reply_);
      case Verdict::Again::kLoad:
        return Take(kPausesAfterLoad, &after_load_);
      case Verdict::Again::kUnreachable:
        return Take(kPausesAfterUnreachable, &after_unreachable_);
    }
    return -1;
  }

 private:
  static std::int64_t Take(std::span<const std::int64_t> pauses, std::size_t* taken) {
    return *taken < pauses.size() ? pauses[(*taken)++] : -1;
  }

  Call::Repeat repeat_;
  std::size_t after_no_reply_ = 0;
  std::size_t after_load_ = 0;
  std::size_t after_unreachable_ = 0;
};

// Codes of a login that was not refused.
bool IsNoAnswer(int error) { return error < kMalformed || IsLoadRefusal(error); }

std::string Authorisation(const std::string& token) { return "Bearer " + token; }

}  // namespace

GatewayProtocol::GatewayProtocol(platform::HttpClient& http, platform::Clock& clock,
                                 Session& session)
    : http_(http), clock_(clock), session_(session) {}

Outcome GatewayProtocol::Perform(const Call& call) {
  const auto session = session_.Current();
  if (call.needs_session && session.token.empty()) return Failed(kNoSession, "Not logged in");
  auto request = BuildRequest(session.base, session.token, call);
  auto outcome = Exchange(request, call.repeat);
  if (!call.needs_session || outcome.error != kNoSession) return outcome;
  auto renewed = Renew(session.base, session.token, &request);
  if (renewed.ok()) return Exchange(std::move(request), call.repeat);
  // A login that is refused says nothing of a submission, which may have arrived before.
  if (call.about_submission() && !IsNoAnswer(renewed.error)) renewed.error = kNoSession;
  return renewed;
}

Outcome GatewayProtocol::PerformAt(const std::string& base, const Call& call) {
  const auto token = session_.Current().token;
  if (call.needs_session && token.empty()) return Failed(kNoSession, "Not logged in");
  return Exchange(BuildRequest(base, token, call), call.repeat);
}

Outcome GatewayProtocol::LogIn(const Credentials& credentials) {
  session_.Expect(credentials);
  const auto base = session_.Current().base;
  auto outcome = AskForToken(base, credentials);
  if (outcome.ok()) {
    session_.Begin(base, credentials, outcome.reply["token"].get<std::string>());
  } else if (outcome.error >= kMalformed && !IsLoadRefusal(outcome.error)) {
    session_.End();
  }
  return outcome;
}

platform::HttpRequest GatewayProtocol::BuildRequest(const std::string& base,
                                                    const std::string& token,
                                                    const Call& call) const {
  platform::HttpRequest request;
  request.method = call.method;
  request.url = base + call.path;
  request.connect_timeout_ms = kLongestConnect;
  request.max_reply = kLargestReply;
  request.once = call.repeat == Call::Repeat::kNever;
  // First of the headers, where Renew finds it.
  if (call.needs_session) request.headers.emplace_back("Authorization", Authorisation(token));
  if (call.repeat == Call::Repeat::kSubmission) {
    request.headers.emplace_back("Idempotency-Key", call.key.empty() ? DrawKey() : call.key);
  }
  if (!call.body.is_null()) {
    request.headers.emplace_back("Content-Type", "application/json");
    request.body = call.body.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
  }
  return request;
}

Outcome GatewayProtocol::Exchange(platform::HttpRequest request, Call::Repeat repeat) {
  Patience patience(repeat);
  const auto deadline = clock_.Tick() + patience.total();
  for (;;) {
    // A last try that begins just before the deadline still gets a second.
    request.timeout_ms = std::clamp<std::int64_t>(deadline - clock_.Tick(), 1'000, kLongestTry);
    auto verdict = Judge(http_.Perform(request));
    const auto pause = patience.NextPause(verdict.again);
    if (pause < 0 || clock_.Tick() + pause >= deadline) return std::move(verdict.outcome);
    clock_.Sleep(pause);
  }
}

Outcome GatewayProtocol::Renew(const std::string& base, const std::string& stale,
                               platform::HttpRequest* request) {
  auto current = session_.Current();
  if (current.base != base) return Failed(kNoSession, "The session has ended");
  if (current.token == stale || current.token.empty()) {
    const auto credentials = session_.credentials();
    if (!credentials) return Failed(kNoSession, "The session has ended");
    auto outcome = AskForToken(base, *credentials);
    if (!outcome.ok()) return outcome;
    current.token = outcome.reply["token"].get<std::string>();
    session_.Renew(stale, current.token);
  }
  request->headers.front().second = Authorisation(current.token);
  return {};
}

Outcome GatewayProtocol::AskForToken(const std::string& base, const Credentials& credentials) {
  Call call;
  call.method = "POST";
  call.path = "/v1/session";
  call.body = {{"client_id", credentials.client_id},
               {"user", credentials.user},
               {"password", credentials.password}};
  call.needs_session = false;
  auto outcome = Exchange(BuildRequest(base, "", call), call.repeat);
  if (outcome.ok() && !HexField(outcome.reply, "token", kTokenDigits)) return NotUnderstood();
  return outcome;
}

}  // namespace orvalo::component
