#include <mutex>

#include "orvaloctl_fixture.h"
#include "support/raw_server.h"
#include "support/scripted_http_server.h"
#include "support/tls_server.h"

namespace orvalo::test {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

const std::string kToken = R"({"token": ")" + std::string(64, 'a') + "\"}";
const std::string kMessage = R"({"id": "0123456789abcdef0123456789abcdef"})";

ScriptedReply Refusal(int status, int code, const std::string& words) {
  return {status,
          R"({"error": {"code": )" + std::to_string(code) + R"(, "message": ")" + words + "\"}}"};
}

// orvaloctl and a service that refuses what it is told to; everything else succeeds.
class RefusalsTest : public OrvaloctlTest {
 protected:
  void SetUp() override {
    Init(service_.address());
    ASSERT_THAT(LogIn(), EndsWith(0));
  }
  Outcome LogIn() { return RunWith("demo\n", {"login", "demo"}, hurrying_); }
  Outcome Hurry(std::vector<std::string> args) { return RunWith("", std::move(args), hurrying_); }

  // What begins with `path` gets this reply from now on.
  void Answer(const std::string& path, ScriptedReply reply) {
    const std::lock_guard lock(mutex_);
    replies_[path] = std::move(reply);
  }

  HurryingClock hurrying_;

 private:
  ScriptedReply ReplyTo(const RecordedRequest& request) {
    const std::lock_guard lock(mutex_);
    for (auto entry = replies_.rbegin(); entry != replies_.rend(); ++entry) {
      if (request.path.starts_with(entry->first)) return entry->second;
    }
    return Refusal(404, 102, "No such path");
  }

  std::mutex mutex_;
  std::map<std::string, ScriptedReply> replies_ = {
      {"/v1/session", {200, kToken}},
      {"/v1/balance", {200, R"({"balance": "87.2"})"}},
      {"/v1/messages", {200, kMessage}},
      {"/v1/vouchers", {200, R"({"amount": "50.0", "balance": "137.2"})"}}};
  ScriptedHttpServer service_{[this](const RecordedRequest& request) { return ReplyTo(request); }};
};

TEST_F(RefusalsTest, MoneyIsPrintedAsTheGatewayTellsIt) {
  Answer("/v1/balance", {200, R"({"balance": "87.2345"})"});
  EXPECT_EQ(Hurry({"balance"}).out, "Balance: 87.2345\n");
  const auto told = nlohmann::json::parse(Hurry({"--json", "balance"}).out);
  EXPECT_EQ(told.at("balance"), "87.2345");
  EXPECT_EQ(told.at("tenths"), 872);
  EXPECT_EQ(Hurry({"balance", "--offline"}).out, "Balance: 87.2?\n");
}

TEST_F(RefusalsTest, ABalanceThatTheGatewayDidNotTellIsTheLastKnownOne) {
  Answer("/v1/balance", Refusal(404, 999, "Out of paper"));
  const std::string why = "last known balance: Out of paper (gateway code 999)";
  const Outcome asked = Hurry({"balance"});
  EXPECT_THAT(asked, FailsWith(5, why));
  EXPECT_EQ(asked.out, "Balance: 87.2?\n");
  const Outcome json = Hurry({"--json", "balance"});
  EXPECT_THAT(json, FailsWith(5, why));
  const auto told = nlohmann::json::parse(json.out);
  EXPECT_EQ(told.at("online"), false);
  EXPECT_EQ(told.at("tenths"), 872);
  EXPECT_EQ(told.at("reason"), "Out of paper (gateway code 999)");
  // What was asked for has been done, and trying again would not do it again.
  EXPECT_THAT(Hurry({"voucher", "1234567890123456"}), FailsWith(0, why));
  EXPECT_THAT(LogIn(), FailsWith(0, why));
  EXPECT_EQ(Hurry({"balance", "--offline"}).err, "");
}

TEST_F(RefusalsTest, AMessageKeepsTheReasonOfItsRefusal) {
  const std::string reason = "202: Not enough credit";
  Answer("/v1/messages", Refusal(402, 202, "Not enough credit"));
  const Outcome sent =
      Hurry({"--json", "send", "--to", "27821110001", "--text", "x", "--wait", "60"});
  EXPECT_THAT(sent, FailsWith(5, "Refused: 1 message, " + reason));
  EXPECT_EQ(sent.First().at("Reason"), reason);
  EXPECT_EQ(sent.First().at("Number"), "27821110001");
  EXPECT_EQ(Json({"outbox"}).First().at("Reason"), reason);
  EXPECT_THAT(Run({"outbox", "show", "1"}).out, HasSubstr("Reason: " + reason + "\n"));
  EXPECT_THAT(Run({"outbox", "--reasons"}).out, HasSubstr(reason + "\n"));
  EXPECT_THAT(Run({"outbox"}).out, Not(HasSubstr(reason)));
  ASSERT_THAT(Hurry({"send", "--to", "27821110002", "--text", "y"}), EndsWith(0));
  EXPECT_THAT(Hurry({"run", "--for", "1"}).err,
              HasSubstr("Message 2 to 27821110002: Failed, " + reason));
}

TEST_F(RefusalsTest, NewsThatTheGatewayDidNotTellAreMissed) {
  for (const char* number : {"27821110001", "27821110002"})
    ASSERT_THAT(Hurry({"send", "--to", number, "--text", "x"}), EndsWith(0));
  Outcome sent = Hurry({"run", "--for", "1"});
  for (int runs = 0; runs < 50 && sent.code == 9; ++runs)  // a hurried second may be too short
    sent = Hurry({"run", "--for", "1"});
  ASSERT_THAT(sent, EndsWith(8));
  Answer("/v1/messages/", Refusal(404, 205, "No such message"));
  EXPECT_THAT(Hurry({"query", "1"}), FailsWith(5, "No news of 1 message: No such message"));
  Answer("/v1/messages/", Refusal(429, 112, "Wait a minute"));
  const Outcome down = Hurry({"--json", "query"});
  EXPECT_THAT(down, FailsWith(5, "statuses shown are the last known ones: Wait a minute"));
  EXPECT_EQ(down.All().size(), 2u);
}

TEST_F(RefusalsTest, ALoginSaysWhatStoodInItsWay) {
  Answer("/v1/session", Refusal(429, 112, "Too many words"));
  EXPECT_THAT(Hurry({"balance"}), FailsWith(5, "Too many words (gateway code 112)"));

  ASSERT_THAT(Run({"settings", "WriteLog", "1"}), EndsWith(0));
  RawServer proxy([](RawServer::Connection& connection) {
    connection.ReadRequest();
    connection.Send(
        "HTTP/1.1 407 Who are you\r\nProxy-Authenticate: Basic realm=\"x\"\r\n"
        "Content-Length: 0\r\nConnection: close\r\n\r\n");
  });
  ASSERT_THAT(Run({"settings", "ProxyHost", "127.0.0.1"}), EndsWith(0));
  ASSERT_THAT(Run({"settings", "ProxyPort", std::to_string(proxy.port())}), EndsWith(0));
  ASSERT_THAT(Run({"settings", "ProxyType", "4"}), EndsWith(0));
  EXPECT_THAT(Hurry({"balance"}),
              FailsWith(4, "orvaloctl: Failed to communicate via the proxy server."));
  ASSERT_THAT(Run({"settings", "ProxyType", "1"}), EndsWith(0));

  TlsServer stranger;
  RawServer plain(
      [](RawServer::Connection& connection) { connection.Send("400 Speak up\r\n\r\n"); });
  const std::pair<std::string, const char*> cases[] = {
      {stranger.Url(), "cannot be trusted: its certificate comes from no authority"},
      {"https://127.0.0.1:" + std::to_string(plain.port()), "does not encrypt"},
      {"http://127.0.0.1:" + std::to_string(UnusedPort()), "the connection is refused"},
      {"https://gateway.invalid", "there is no computer of this name"}};
  for (const auto& [address, why] : cases) {
    ASSERT_THAT(Run({"settings", "COMBaseURL", address}), EndsWith(0));
    const Outcome asked = Hurry({"balance"});
    EXPECT_THAT(asked, FailsWith(4, why)) << address;
    EXPECT_EQ(asked.out, "");
  }
  EXPECT_THAT(Slurp(folder() + "/SMS.log"),
              AllOf(HasSubstr("Login failed: Error:96, "),
                    HasSubstr("Login failed: Error:99, The service cannot be reached: SSL "
                              "certificate problem: self")));
}

}  // namespace
}  // namespace orvalo::test
