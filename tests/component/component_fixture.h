#pragma once
#include <gtest/gtest.h>

#include <deque>
#include <mutex>
#include <string>
#include <utility>

#include "caller.h"
#include "component/component.h"
#include "support/fake_clock.h"
#include "support/scripted_http_server.h"

namespace orvalo::test {

inline const std::string kToken(64, 'a');
inline const std::string kId = "0123456789abcdef0123456789abcdef";

inline ScriptedReply Json(std::string body, int status = 200) { return {status, std::move(body)}; }
inline ScriptedReply Refusal(int status, int code, const std::string& message) {
  return Json(
      R"({"error": {"code": )" + std::to_string(code) + R"(, "message": ")" + message + "\"}}",
      status);
}
inline ScriptedReply Cut() {
  ScriptedReply reply;
  reply.cut = true;
  return reply;
}

// A component that talks to a scripted service: logins succeed by themselves, everything else is
// answered from the script, the last of which is used again and again.
class ComponentTest : public testing::Test {
 protected:
  ComponentTest() { caller_.Call(u"SetBaseURL", {Caller::Text(server_.address())}); }

  void LogIn() { ASSERT_EQ(caller_.LogIn(), "OK"); }

  // What was asked, logins left out.
  std::vector<RecordedRequest> Requests() const {
    auto requests = server_.requests();
    std::erase_if(requests, [](const auto& request) { return request.path == "/v1/session"; });
    return requests;
  }
  std::size_t Logins() const { return server_.requests().size() - Requests().size(); }

  void Script(std::deque<ScriptedReply> replies) {
    std::lock_guard guard(script_mutex_);
    replies_ = std::move(replies);
  }
  void ScriptLogin(ScriptedReply reply) {
    std::lock_guard guard(script_mutex_);
    login_ = std::move(reply);
  }

  const ScriptedReply good_login_ = Json(R"({"token": ")" + kToken + "\"}");

 private:
  ScriptedReply Answer(const RecordedRequest& request) {
    std::lock_guard guard(script_mutex_);
    if (request.path == "/v1/session") return login_;
    auto reply = replies_.empty() ? Refusal(404, 102, "No reply in the script") : replies_.front();
    if (replies_.size() > 1) replies_.pop_front();
    return reply;
  }

  std::mutex script_mutex_;
  ScriptedReply login_ = good_login_;
  std::deque<ScriptedReply> replies_;

 protected:
  FakeClock clock_;
  ScriptedHttpServer server_{[this](const auto& request) { return Answer(request); }};
  component::Component component_{clock_};
  Caller caller_{component_};
};

}  // namespace orvalo::test
