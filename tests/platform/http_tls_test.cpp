#include <gtest/gtest.h>

#include "platform/http.h"
#include "support/raw_server.h"
#include "support/temporary_folder.h"
#include "support/tls_server.h"

namespace orvalo::test {
namespace {

using platform::HttpClient;
using platform::HttpFailure;
using platform::HttpObstacle;
using platform::HttpReply;
using platform::HttpRequest;

HttpReply GetSecret(HttpClient& client, const std::string& url) {
  HttpRequest request;
  request.url = url;
  return client.Perform(request);
}

TEST(HttpTls, TrustsOnlyTheAuthoritiesGiven) {
  const TemporaryFolder folder;
  TlsServer server;
  Spill(folder.File("ours.pem"), server.CertificateText());
  Spill(folder.File("other.pem"), TlsServer().CertificateText());
  Spill(folder.File("none.pem"), "no certificate at all");
  HttpClient client;
  EXPECT_EQ(GetSecret(client, server.Url()).obstacle, HttpObstacle::kUntrusted);
  for (const char* file : {"other.pem", "none.pem", "missing.pem"}) {
    client.SetCertificateAuthorities(folder.File(file));
    const HttpReply reply = GetSecret(client, server.Url());
    EXPECT_EQ(reply.failure, HttpFailure::kTls) << file << ": " << reply.error;
    EXPECT_TRUE(reply.body.empty());
    EXPECT_FALSE(reply.error.empty());
  }
  const int before = server.connections();
  client.SetCertificateAuthorities(folder.File("ours.pem"));
  for (int i = 0; i < 5; ++i) {
    const HttpReply reply = GetSecret(client, server.Url());
    EXPECT_EQ(reply.failure, HttpFailure::kNone) << reply.error;
    EXPECT_EQ(reply.body, "secret");
  }
  EXPECT_EQ(server.connections(), before + 1);
  // Trust in the certificate is no trust in another name, and ends with the setting.
  client.SetCertificateAuthorities(folder.File("ours.pem"));  // lets go of the kept connection
  const HttpReply elsewhere = GetSecret(client, server.Url("localhost"));
  EXPECT_EQ(elsewhere.failure, HttpFailure::kTls);
  EXPECT_EQ(elsewhere.obstacle, HttpObstacle::kWrongName);
  client.SetCertificateAuthorities(folder.File("missing.pem"));
  EXPECT_EQ(GetSecret(client, server.Url()).obstacle, HttpObstacle::kNoAuthorities);
  client.SetCertificateAuthorities("");
  EXPECT_EQ(GetSecret(client, server.Url()).failure, HttpFailure::kTls);
}

TEST(HttpTls, RefusesWhatIsExpiredOrNoTls) {
  const TemporaryFolder folder;
  TlsServer expired(0);
  Spill(folder.File("expired.pem"), expired.CertificateText());
  HttpClient client;
  client.SetCertificateAuthorities(folder.File("expired.pem"));
  const HttpReply late = GetSecret(client, expired.Url());
  EXPECT_EQ(late.failure, HttpFailure::kTls);
  EXPECT_EQ(late.obstacle, HttpObstacle::kOutOfDate);
  RawServer plain([](RawServer::Connection& connection) {
    connection.Send("HTTP/1.1 400 Speak plainly\r\n\r\n");
  });
  const HttpReply unencrypted =
      GetSecret(client, "https://127.0.0.1:" + std::to_string(plain.port()));
  EXPECT_EQ(unencrypted.failure, HttpFailure::kTls);
  EXPECT_EQ(unencrypted.obstacle, HttpObstacle::kNoTls);
}

}  // namespace
}  // namespace orvalo::test
