#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <thread>

#include "service/running_service.h"
#include "support/raw_server.h"

namespace orvalo::test {
namespace {

using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

// Connections that have said something and say no more.
class Loiterers {
 public:
  Loiterers(int port, int count, const std::string& words) {
    for (int i = 0; i < count; ++i) {
      sockets_.push_back(ConnectLoopback(port));
      if (!words.empty()) (void)!::send(sockets_[i], words.data(), words.size(), MSG_NOSIGNAL);
    }
  }
  ~Loiterers() {
    for (const int socket : sockets_) ::close(socket);
  }
  Loiterers(const Loiterers&) = delete;
  Loiterers& operator=(const Loiterers&) = delete;

  // What the service tells one of them until it closes.
  std::string HearsOut(int which) const {
    std::string heard;
    char part[4096];
    for (ssize_t count = 0; (count = ::recv(sockets_[which], part, sizeof part, 0)) > 0;) {
      heard.append(part, static_cast<std::size_t>(count));
    }
    return heard;
  }

 private:
  std::vector<int> sockets_;
};

const std::string kPost = "POST /v1/session HTTP/1.1\r\nHost: a\r\n";
const std::string kHealth = "GET /v1/health HTTP/1.1\r\nHost: a\r\nConnection: close\r\n\r\n";

TEST(Door, RefusesWhatAProxyCouldReadOtherwise) {
  RunningService running;
  const int port = running.service().port();
  const std::string hidden = "0\r\n\r\n" + kHealth;
  const std::string requests[] = {
      kPost + "Content-Length: 2\r\nContent-Length: 3\r\n\r\n{} ",
      kPost + "Content-Length: 2, 3\r\n\r\n{} ",
      kPost + "Content-Length: 5\r\nTransfer-Encoding: chunked\r\n\r\n" + hidden,
      kPost + "Transfer-Encoding: chunked\r\nContent-Length: 5\r\n\r\n" + hidden,
      kPost + "Transfer-Encoding: gzip\r\n\r\n" + hidden,
      kPost + "Transfer-Encoding: gzip, chunked\r\n\r\n" + hidden,
      "POST /v1/session HTTP/1.0\r\nTransfer-Encoding: chunked\r\n\r\n" + hidden,
      kPost + "Content-Length : 2\r\n\r\n{}",
      "GET /v1/health%00 HTTP/1.1\r\nHost: a\r\n\r\n",
      "GET /v1/health%0d%0a HTTP/1.1\r\nHost: a\r\n\r\n",
      "GET /v1/%zz HTTP/1.1\r\nHost: a\r\n\r\n",
  };
  for (const auto& request : requests) {
    const auto reply = RawExchange(port, request);
    EXPECT_THAT(reply, StartsWith("HTTP/1.1 400 ")) << request;
    EXPECT_THAT(reply, Not(HasSubstr("\"ok\""))) << request;
  }
  EXPECT_THAT(RawExchange(port, "HEAD /v1/health HTTP/1.1\r\nHost: a\r\n\r\n" + kHealth),
              AllOf(StartsWith("HTTP/1.1 405 "), HasSubstr("\r\n\r\nHTTP/1.1 200 ")))
      << "a head has no body behind it";
  EXPECT_THAT(RawExchange(port, kPost + "Expect: 100-continue\r\nContent-Length: 2\r\n\r\n{}"),
              AllOf(StartsWith("HTTP/1.1 100 "), HasSubstr("HTTP/1.1 415 ")));
  EXPECT_THAT(RawExchange(port, "GET http://a/v1/health HTTP/1.0\r\n\r\n"),
              EndsWith("{\"ok\":true}"));
}

TEST(Door, KeepsNobodyWaitingForThoseWhoAreSlow) {
  RunningService running;
  running.options.http.threads = 4;
  running.options.http.connections_of_an_address = 100;
  running.options.http.patience.head = std::chrono::seconds(1);
  running.Restart();
  const int port = running.service().port();
  auto ann = running.Caller();
  const Loiterers silent(port, 70, ""), heads(port, 70, "GET /v1/"),
      bodies(port, 70, kPost + "Content-Length: 99\r\n\r\n{");
  for (int i = 0; i < 20; ++i) EXPECT_EQ(ann.Get("/v1/ping").status, 200);
  EXPECT_EQ(running.Caller("").Get("/v1/health").status, 200);
  EXPECT_EQ(silent.HearsOut(0), "") << "those who came first made room";
  const Loiterers late(port, 1, "GET /v1/");
  EXPECT_THAT(late.HearsOut(0), StartsWith("HTTP/1.1 408 "));
}

TEST(Door, KeepsThoseWaitingWhoAreRefusedAgainAndAgain) {
  RunningService running;
  running.options.hold_refusals = std::chrono::hours(1);
  running.options.http.connections_of_an_address = 3;
  running.Restart();
  const int port = running.service().port();
  const std::string request = "GET /v1/ping HTTP/1.1\r\nHost: a\r\n\r\n";
  auto ann = running.Caller(), nobody = running.Caller("");
  for (int i = 0; i < 10; ++i) EXPECT_EQ(nobody.Get("/v1/ping").code(), 111);
  const Loiterers held(port, 1, request);
  EXPECT_EQ(ann.Get("/v1/ping").status, 200) << "whoever is served does not notice";
  const Loiterers more(port, 3, request);
  EXPECT_EQ(held.HearsOut(0), "") << "it made room for others";
  running.Restart();  // which waits for none of them
  more.HearsOut(2);
}

}  // namespace
}  // namespace orvalo::test
