#pragma once
#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>

#include "component/reply_verdict.h"
#include "component/session.h"
#include "platform/clock.h"
#include "platform/http.h"

namespace orvalo::component {

inline constexpr std::size_t kTokenDigits = 64;  // hexadecimal ones

// One call of the protocol.
struct Call {
  enum class Repeat {
    kNever,       // a repetition would do something twice
    kQuery,       // a repetition does no harm; somebody may be waiting at the window
    kSubmission,  // carries an idempotency key: as patient as can be
  };
  std::string method = "GET";
  std::string path;               // begins with "/v1/"
  nlohmann::json body = nullptr;  // null: no body
  Repeat repeat = Repeat::kQuery;
  bool needs_session = true;
  bool asks_for_submission = false;  // what became of one

  bool about_submission() const { return repeat == Repeat::kSubmission || asks_for_submission; }
  std::string key = "";  // of a submission, 32 hexadecimal digits; "": one is drawn
};

// Speaks the protocol of docs/gateway-protocol.md: builds requests, repeats what may be repeated,
// renews an expired session, and says what a reply means. Any thread; a call blocks for at most
// about 90 seconds (submissions) or 30 (others), twice that when the session must be renewed.
//
// Repeating: each submission has one idempotency key, and every repetition carries it, so the
// service does the work at most once whatever was lost on the way. A request without a reply is
// sent three times in all, one that the service refused because of load five times, one that could
// not be delivered twice; pauses grow from try to try.
class GatewayProtocol {
 public:
  // All three must outlive this object.
  GatewayProtocol(platform::HttpClient& http, platform::Clock& clock, Session& session);

  // Calls the service at the session's base address. Without a session, a call that needs one is
  // error 111 and nothing is sent. When the service says that the session has ended, logs in again
  // with the credentials of the last login, once, and repeats the call with the same key. When that
  // login is refused, the outcome has the login's code, but 111 for what is about a submission: its
  // own fate is not known then.
  Outcome Perform(const Call& call);

  // The same at another base address. The session is used as it is and never renewed: the
  // credentials go nowhere but to the service they are for.
  Outcome PerformAt(const std::string& base, const Call& call);

  // Logs in and keeps the session. `reply` of the outcome is of no interest. A refused login ends
  // the session, and so does any failure to log in as another user than before; when the service
  // only could not be asked, a session of the same user goes on.
  Outcome LogIn(const Credentials& credentials);

 private:
  platform::HttpRequest BuildRequest(const std::string& base, const std::string& token,
                                     const Call& call) const;
  Outcome Exchange(platform::HttpRequest request, Call::Repeat repeat);
  // Makes `request` carry a token that is newer than `stale`.
  Outcome Renew(const std::string& base, const std::string& stale, platform::HttpRequest* request);
  // An outcome that is ok() has a proper token in its reply.
  Outcome AskForToken(const std::string& base, const Credentials& credentials);

  platform::HttpClient& http_;
  platform::Clock& clock_;
  Session& session_;
};

}  // namespace orvalo::component
