#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <thread>

#include "service/running_service.h"

namespace orvalo::test {
namespace {

using testing::AnyOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

constexpr const char* kJson = "application/json";

TEST(Api, AnswersWhateverComes) {
  RunningService running;
  auto ann = running.Caller();
  const auto batch = ann.Post("/v1/batches", {{"text", "Hi"}}).body.value("batch", "");
  const std::string to_batch = "/v1/batches/" + batch;
  const std::string good = R"({"to":"27821110001","text":"Hi"})";
  const std::string none(32, '0');
  std::string thousand_and_one = R"({"to":["123")";
  for (int i = 0; i < 1000; ++i) thousand_and_one += R"(,"123")";
  thousand_and_one += "]}";
  const std::string megabytes(1'500'000, ' ');

  const struct {
    std::string method, path, body, key, type;
    int status, code;
  } cases[] = {
      {"GET", "/", "", "", "", 404, 102},
      {"GET", "/v1/nothing", "", "", "", 404, 102},
      {"GET", "/v1/messages/", "", "", "", 404, 102},
      {"GET", "/v1/messages/a/b", "", "", "", 404, 102},
      {"GET", "/v1/../v1/ping/..", "", "", "", 404, 102},
      {"GET", "/v1/session", "", "", "", 405, 105},
      {"DELETE", "/v1/messages/" + none, "", "", "", 405, 105},
      {"PUT", "/v1/messages", good, NewKey(), kJson, 405, 105},
      {"GET", "/v1/messages/" + none, "", "", "", 404, 205},
      {"GET", "/v1/messages/xyz", "", "", "", 404, 205},
      {"GET", "/v1/messages/%ff%fe", "", "", "", 404, 205},
      {"POST", "/v1/messages", good, "", kJson, 400, 101},
      {"POST", "/v1/messages", good, "123", kJson, 400, 101},
      {"POST", "/v1/messages", good, std::string(32, 'g'), kJson, 400, 101},
      {"POST", "/v1/messages", good, std::string(64, 'a'), kJson, 400, 101},
      {"POST", "/v1/messages", good, NewKey(), "text/plain", 415, 104},
      {"POST", "/v1/messages", good, NewKey(), "application/jsonx", 415, 104},
      {"POST", "/v1/messages", "", NewKey(), kJson, 400, 101},
      {"POST", "/v1/messages", "{", NewKey(), kJson, 400, 101},
      {"POST", "/v1/messages", "[" + good + "]", NewKey(), kJson, 400, 101},
      {"POST", "/v1/messages", R"({"text":"Hi"})", NewKey(), kJson, 400, 101},
      {"POST", "/v1/messages", R"({"to":27821110001,"text":"Hi"})", NewKey(), kJson, 400, 101},
      {"POST", "/v1/messages", R"({"to":"12","text":"Hi"})", NewKey(), kJson, 422, 201},
      {"POST", "/v1/messages", R"({"to":"123","text":"Hi","type":4})", NewKey(), kJson, 422, 204},
      {"POST", "/v1/messages", R"({"to":"27829900","text":"Hi"})", NewKey(), kJson, 422, 208},
      {"POST", "/v1/messages", megabytes, NewKey(), kJson, 413, 103},
      {"POST", to_batch + "/recipients", R"({"to":"123"})", NewKey(), kJson, 400, 101},
      {"POST", to_batch + "/recipients", R"({"to":[]})", NewKey(), kJson, 400, 101},
      {"POST", to_batch + "/recipients", R"({"to":[123]})", NewKey(), kJson, 400, 101},
      {"POST", to_batch + "/recipients", thousand_and_one, NewKey(), kJson, 413, 103},
      {"POST", "/v1/batches/" + none + "/recipients", R"({"to":["123"]})", NewKey(), kJson, 404,
       205},
      {"POST", "/v1/batches/" + none + "/end", "", NewKey(), kJson, 404, 205},
      {"POST", "/v1/vouchers", R"({"number":5})", NewKey(), kJson, 400, 101},
      {"POST", "/v1/vouchers", R"({"number":"' OR 1=1 --"})", NewKey(), kJson, 404, 606},
      {"POST", "/v1/session", R"({"client_id":"","user":"ann"})", "", kJson, 400, 101},
      {"POST", "/v1/session", R"({"client_id":"","user":"ann","password":""})", "", kJson, 401,
       110},
      {"POST", "/v1/session", "{" + std::string(5000, ' ') + "}", "", kJson, 413, 103},
      {"POST", "/v1/session", R"({"client_id":"","user":"eve","password":"ann"})", "", kJson, 401,
       110},
  };
  for (const auto& one : cases) {
    const auto reply = ann.Send(one.method, one.path, one.body, one.key, one.type);
    EXPECT_EQ(reply.status, one.status)
        << one.method << " " << one.path << " " << one.body.substr(0, 99);
    EXPECT_EQ(reply.code(), one.code)
        << one.method << " " << one.path << " " << one.body.substr(0, 99);
  }
  EXPECT_TRUE(running.Entries().empty());
  EXPECT_EQ(ann.Balance(), "100.0");
  EXPECT_EQ(
      ann.Send("POST", "/v1/messages", good, NewKey(), "Application/JSON; charset=utf-8").status,
      200);

  auto nobody = running.Caller("");
  for (const char* path : {"/v1/ping", "/v1/balance"}) EXPECT_EQ(nobody.Get(path).code(), 111);
  EXPECT_EQ(nobody.Message("27821110001").code(), 111);
  EXPECT_THAT(RawExchange(running.service().port(),
                          "PUT /v1/messages HTTP/1.1\r\nHost: a\r\nContent-Length: 0\r\n"
                          "Connection: close\r\n\r\n"),
              HasSubstr("\r\nAllow: GET, POST\r\n"));
  nobody.token = std::string(64, 'a');
  EXPECT_EQ(nobody.Get("/v1/ping").status, 401);
  EXPECT_EQ(nobody.Get("/v1/version").body.value("protocol", 0), 1);
}

TEST(Api, SurvivesWhatIsNoHttp) {
  RunningService running;
  const int port = running.service().port();
  const std::string garbage[] = {
      "",
      "\r\n\r\n",
      std::string(100'000, 'A'),
      std::string("\x16\x03\x01\x02\x00\x01\x00", 7),
      "GET /v1/health HTTP/9.9\r\n\r\n",
      "POST /v1/session HTTP/1.1\r\nHost: a\r\nContent-Length: -5\r\n\r\n",
      "POST /v1/session HTTP/1.1\r\nHost: a\r\nContent-Length: 99999999999999999999\r\n\r\n",
      "POST /v1/session HTTP/1.1\r\nHost: a\r\nContent-Length: 50\r\n\r\n{\"cut\":",
      "POST /v1/session HTTP/1.1\r\nHost: a\r\nTransfer-Encoding: chunked\r\n\r\nzz\r\n",
  };
  for (const auto& bytes : garbage) {
    const auto reply = RawExchange(port, bytes);
    if (!reply.empty()) {
      EXPECT_THAT(reply, AnyOf(StartsWith("HTTP/1.1 4"), StartsWith("HTTP/1.1 505")));
      EXPECT_THAT(reply, HasSubstr("{\"error\":{\"code\":")) << bytes.substr(0, 60);
    }
  }
  std::string many = "GET /v1/health HTTP/1.1\r\nHost: a\r\n";
  for (int i = 0; i < 5000; ++i) many += "X-" + std::to_string(i) + ": y\r\n";
  EXPECT_THAT(RawExchange(port, many + "\r\n"), Not(HasSubstr(" 200 ")));
  EXPECT_THAT(RawExchange(port, "GET /v1/health HTTP/1.1\r\nHost: a\r\nConnection: close\r\n\r\n"),
              HasSubstr("{\"ok\":true}"));
}

TEST(Api, ServesOthersBesideClientsThatHoldOn) {
  RunningService running;
  running.options.http.threads = 4;
  running.options.http.patience.body = std::chrono::seconds(1);
  running.Restart();
  const int port = running.service().port();
  std::vector<std::unique_ptr<GatewayCaller>> polling;
  for (int i = 0; i < 12; ++i) {
    auto& caller = *polling.emplace_back(std::make_unique<GatewayCaller>(port, ""));
    EXPECT_EQ(caller.Get("/v1/version").status, 200) << i;
  }
  polling.clear();
  int sent = 0;
  RawExchange(port, "POST /v1/session HTTP/1.1\r\nContent-Length: 4000\r\n\r\n", 400, &sent);
  EXPECT_LT(sent, 200);
}

// Each guess costs the service a hash, whoever makes it.
TEST(Api, StaysOpenDuringAFloodOfLogins) {
  RunningService running;
  running.options.http.threads = 96;
  running.Restart();
  const auto token = running.Caller().token;
  running.Restart();  // where ann has logged in from is known nevertheless
  auto ann = running.Caller("");
  ann.token = token;
  std::atomic<int> refused = 0, turned_away = 0;
  std::vector<std::thread> guessers;
  for (int i = 0; i < 60; ++i) {
    guessers.emplace_back([&, i] {
      GatewayCaller guesser(running.service().port(), "");
      const auto reply = guesser.Post(
          "/v1/session",
          {{"client_id", ""}, {"user", "guess" + std::to_string(i)}, {"password", "x"}});
      ++(reply.code() == 110 ? refused : turned_away);
    });
  }
  EXPECT_EQ(ann.Balance(), "100.0");
  for (auto& guesser : guessers) guesser.join();
  EXPECT_GT(refused, 0);
  EXPECT_EQ(turned_away, 60 - refused);
  EXPECT_LE(refused, 30) << "of one address, whatever the names";
  auto guesser = running.Caller("");
  for (int i = refused; i < 30; ++i) EXPECT_FALSE(guesser.LogIn(std::to_string(i), "x"));
  EXPECT_FALSE(running.Caller("").LogIn("bob", "bob")) << "who was not known there before";
  EXPECT_TRUE(ann.LogIn("ann", "ann"));
}

TEST(Api, TellsAReplayByItsHeader) {
  RunningService running;
  auto ann = running.Caller();
  const std::string body = R"({"to":"27821110001","text":"Hi"})";
  const auto request = fmt::format(
      "POST /v1/messages HTTP/1.1\r\nHost: a\r\nConnection: close\r\n"
      "Authorization: Bearer {}\r\nIdempotency-Key: {}\r\n"
      "Content-Type: application/json\r\nContent-Length: {}\r\n\r\n{}",
      ann.token, NewKey(), body.size(), body);
  const int port = running.service().port();
  const auto first = RawExchange(port, request), again = RawExchange(port, request);
  EXPECT_THAT(first, Not(HasSubstr("Idempotent-Replay")));
  EXPECT_THAT(again, HasSubstr("Idempotent-Replay: true\r\n"));
  EXPECT_EQ(first.substr(first.find("\r\n\r\n")), again.substr(again.find("\r\n\r\n")));
  EXPECT_EQ(running.Entries().size(), 1u);
}

}  // namespace
}  // namespace orvalo::test
