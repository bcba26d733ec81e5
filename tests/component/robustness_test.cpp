#include <gtest/gtest.h>

#include <set>

#include "component_fixture.h"

namespace orvalo::test {
namespace {

// What smsERROR tells after a query of the balance that is answered so.
struct Reply {
  const char* what;
  ScriptedReply reply;
  int error;
};

ScriptedReply Raw(std::string bytes) {
  ScriptedReply reply;
  reply.raw = std::move(bytes);
  return reply;
}

TEST_F(ComponentTest, UnderstandsNoReplyButAProperOne) {
  LogIn();
  const Reply replies[] = {
      {"the proper one", Json(R"({"balance": "87.2"})"), 0},
      {"unknown members", Json(R"({"balance": "7", "more": [1, {}]})"), 0},
      {"HTML", {200, "<html><body>Welcome</body></html>", "text/html"}, 98},
      {"nothing", Json(""), 98},
      {"cut JSON", Json(R"({"balance": "87.)"), 98},
      {"no object", Json(R"(["balance", "87.2"])"), 98},
      {"no such member", Json(R"({"Balance": "87.2"})"), 98},
      {"a number", Json(R"({"balance": 87.2})"), 98},
      {"an object", Json(R"({"balance": {"balance": "87.2"}})"), 98},
      {"negative", Json(R"({"balance": "-1.0"})"), 98},
      {"huge", Json(R"({"balance": "214748364.0"})"), 98},
      {"endless digits", Json(R"({"balance": ")" + std::string(5000, '9') + "\"}"), 98},
      {"bytes that are no UTF-8", Json("{\"balance\": \"87.2\", \"x\": \"\xff\xfe\"}"), 98},
      {"deep nesting", Json(std::string(500'000, '[')), 98},
      {"an endless line", Json(std::string(10u << 20, 'x')), 98},
      {"a redirection", Json(R"({"balance": "87.2"})", 302), 98},
      {"an error without a code", Json(R"({"error": {"message": "no"}})", 400), 98},
      {"a code that never travels", Refusal(400, 99, "no"), 98},
      {"a huge code", Json(R"({"error": {"code": 18446744073709551615}})", 400), 98},
      {"a code with a fraction", Json(R"({"error": {"code": 202.5}})", 400), 98},
      {"a code of later versions", Refusal(418, 777, "no"), 777},
      {"no HTTP", Raw("SSH-2.0-OpenSSH_9.2\r\n"), 99},
      {"a reply that breaks off", Raw("HTTP/1.1 200 OK\r\nContent-Length: 99\r\n\r\n{"), 99},
  };
  for (const auto& [what, reply, error] : replies) {
    Script({reply});
    const auto text = caller_.Call(u"QueryBalance");
    EXPECT_EQ(caller_.Error(), error) << what << ": " << text;
    EXPECT_EQ(text.substr(0, 5) == "ERR: ", error != 0) << what << ": " << text;
  }
}

TEST_F(ComponentTest, BelievesNoIdStatusChargeOrTokenUnseen) {
  LogIn();
  const auto query = [&](const std::string& reply) {
    Script({Json(reply)});
    caller_.Call(u"GetMsgCharge", {Caller::Flag(1), Caller::Text(kId)});
    return caller_.Error();
  };
  EXPECT_EQ(query(R"({"status": 11, "charge": "0.8"})"), 0);
  for (const auto* status : {"-1", "1000", "4.0", "\"4\"", "null", "18446744073709551619"}) {
    EXPECT_EQ(query(R"({"charge": "0.8", "status": )" + std::string(status) + "}"), 98) << status;
  }
  EXPECT_EQ(query(R"({"status": 4})"), 98);
  for (const auto* id :
       {"", "12", "0123456789abcdef0123456789abcdeg", "../../../v1/vouchers/0000"}) {
    Script({Json(R"({"id": ")" + std::string(id) + "\"}")});
    caller_.Send("Hello", "27821110001");
    EXPECT_EQ(caller_.Error(), 98) << id;
    const auto asked = Requests().size();
    caller_.Call(u"GetMsgCharge", {Caller::Flag(1), Caller::Text(id)});
    EXPECT_EQ(caller_.Error(), 205) << id;
    EXPECT_EQ(Requests().size(), asked);
  }
  ScriptLogin(Json(R"({"token": "x\r\nX-Injected: yes"})"));
  caller_.LogIn();
  EXPECT_EQ(caller_.Error(), 98);
}

// The service does the work of every key that it has not seen yet.
struct Ledger {
  std::set<std::string> keys;
  int lost = 0;     // replies that still get lost after the work is done
  int refused = 0;  // requests that are still refused because of load

  ScriptedReply Accept(const RecordedRequest& request) {
    if (refused > 0) return --refused, Refusal(503, 503, "Not now");
    keys.insert(request.header("idempotency-key"));
    if (lost > 0) return --lost, Cut();
    return Json(R"({"id": ")" + kId + "\"}");
  }
};

TEST_F(ComponentTest, SubmitsAtMostOnceWhateverGetsLost) {
  struct Case {
    int lost, refused, error;
    std::size_t requests, messages;
  };
  const Case cases[] = {{0, 0, 0, 1, 1}, {1, 0, 0, 2, 1},   {2, 0, 0, 3, 1}, {3, 0, 99, 3, 1},
                        {0, 4, 0, 5, 1}, {0, 5, 503, 5, 0}, {2, 4, 0, 7, 1}};
  const std::string closing_login =
      "HTTP/1.1 200 OK\r\nConnection: close\r\n\r\n" + good_login_.body;
  for (const auto& [lost, refused, error, requests, messages] : cases) {
    Ledger ledger{{}, lost, refused};
    ScriptedHttpServer service([&](const RecordedRequest& request) {
      // A connection that was used before is tried anew by libcurl itself, which would not count.
      if (request.path == "/v1/session") return Raw(closing_login);
      return ledger.Accept(request);
    });
    component::Component component(clock_);
    Caller caller(component);
    caller.Call(u"SetBaseURL", {Caller::Text(service.address())});
    caller.LogIn();
    caller.Send("Hello", "27821110001");
    EXPECT_EQ(caller.Error(), error);
    const auto seen = service.requests();
    EXPECT_EQ(ledger.keys.size(), messages);
    ASSERT_EQ(seen.size(), 1 + requests) << lost << " lost, " << refused << " refused";
    EXPECT_EQ(seen.front().path, "/v1/session");
    for (std::size_t i = 2; i < seen.size(); ++i) {
      EXPECT_EQ(seen[i].header("idempotency-key"), seen[1].header("idempotency-key"));
      EXPECT_EQ(seen[i].body, seen[1].body);
    }
  }
}

TEST_F(ComponentTest, RepeatsNoRequestThatWouldDoSomethingTwice) {
  for (const bool connection_kept : {false, true}) {
    if (connection_kept) LogIn();
    const std::size_t before = Requests().size();
    Script({Cut()});
    caller_.Call(u"RecoverPassword", {Caller::Text("demo"), Caller::Text("demo@example.org")});
    EXPECT_EQ(caller_.Error(), 99);
    EXPECT_EQ(Requests().size(), before + 1) << connection_kept;
  }
}

// The clock of a service that needs `slowness` for each reply.
class SlowWorld : public FakeClock {
 public:
  void Sleep(std::int64_t milliseconds) override { Advance(milliseconds); }
};

TEST(ComponentPatience, EndsAfterAMinuteAndAHalf) {
  SlowWorld clock;
  ScriptedHttpServer service([&](const RecordedRequest& request) {
    if (request.path == "/v1/session") return Json(R"({"token": ")" + kToken + "\"}");
    clock.Advance(40'000);
    return Cut();
  });
  component::Component component(clock);
  Caller caller(component);
  caller.Call(u"SetBaseURL", {Caller::Text(service.address())});
  caller.LogIn();
  const auto start = clock.Tick();
  caller.Send("Hello", "27821110001");
  EXPECT_EQ(caller.Error(), 99);
  EXPECT_LE(clock.Tick() - start, 130'000);
  const auto asked = service.requests().size();
  caller.Call(u"Ping");
  EXPECT_EQ(caller.Error(), 99);
  EXPECT_EQ(service.requests().size(), asked + 1);
}

}  // namespace
}  // namespace orvalo::test
