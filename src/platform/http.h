#pragma once
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace orvalo::platform {

// How requests leave the machine. The numbers are stored in the settings and never change.
enum class ProxyMode : std::int32_t {
  kNeverChosen = 0,  // as kSystem
  kDirect = 1,
  kSystem = 2,           // the proxy environment (http_proxy, https_proxy, no_proxy), else the
                         // desktop's settings, an automatic proxy script among them
  kSystemNoScripts = 3,  // the same, but directly where there would be a script
  kNamed = 4,
};

struct ProxyConfig {
  ProxyMode mode = ProxyMode::kDirect;
  std::string host;
  std::string port;
  std::string user;      // empty: no credentials are offered
  std::string password;  // never logged
};

// Why there is no response. A response with any status, 500 included, is no failure.
enum class HttpFailure {
  kNone,
  kUnreachable,  // name not found, refused, reset before the request was sent, no route: the server
                 // has surely not seen the request
  kNoReply,  // the request went out (perhaps in part) but no complete reply came: timed out, cut
             // off
  kProxyUnreachable,  // the proxy cannot be reached or found, or breaks off connecting through
  kProxyRefused,      // the proxy answered and refused (407, or any refusal to connect through)
  kTls,               // the server's certificate or the handshake was not acceptable
  kTooLarge,          // the reply exceeds max_reply
  kBadRequest,        // the address is not http or https, or is malformed
};

// What stood in the way, as far as it is known. The numbers go through the gateway component and
// never change.
enum class HttpObstacle : std::int32_t {
  kNotKnown = 0,
  kNameNotFound = 1,
  kRefused = 2,
  kTimedOut = 3,
  kNoRoute = 4,        // no network leads there
  kCutOff = 5,         // the other side ended the connection
  kUntrusted = 6,      // the certificate comes from no authority that is trusted
  kWrongName = 7,      // it is for another host
  kOutOfDate = 8,      // it has expired, or is not valid yet
  kNoTls = 9,          // what answers speaks no TLS
  kHandshake = 10,     // any other disagreement over TLS
  kNoAuthorities = 11  // the list of those that are trusted cannot be read
};

struct HttpRequest {
  std::string method = "GET";
  std::string url;
  std::vector<std::pair<std::string, std::string>> headers;
  std::string body;
  std::int64_t connect_timeout_ms = 10'000;
  std::int64_t timeout_ms = 30'000;  // for the whole exchange
  std::size_t max_reply = 4u << 20;  // bytes
  // Never send the request a second time by itself, on a kept connection that turns out to be
  // closed either: for servers that know no keys. Only for POST.
  bool once = false;
};

struct HttpReply {
  HttpFailure failure = HttpFailure::kNone;
  int status = 0;  // of the last reply; 0 when there is none
  std::string content_type;
  std::string body;
  // When failure is set.
  std::string error;  // the reason in words; holds no credentials
  HttpObstacle obstacle = HttpObstacle::kNotKnown;
};

// HTTP over libcurl: connections are kept open and reused (one for each thread that calls at the
// same time), TCP_NODELAY is on, certificates and host names are verified, redirects are not
// followed. Any thread.
//
// A kept connection can be closed by the server just as a request goes out on it. When no byte of
// a reply has come, the request is then sent once more on a new connection: whatever must not
// happen twice needs a key in the request by which the server knows it again.
class HttpClient {
 public:
  HttpClient();
  ~HttpClient();
  HttpClient(const HttpClient&) = delete;
  HttpClient& operator=(const HttpClient&) = delete;

  // Holds from the next request on. In the system modes a request that needs a new connection first
  // reads the desktop's settings anew (at most 3 s) and fetches and runs its script (5 s each).
  void SetProxy(const ProxyConfig& config);

  // A file of certificate authorities to trust instead of the system's; empty for the system's.
  void SetCertificateAuthorities(const std::string& file);

  // Blocks until the reply is complete or failed; never longer than request.timeout_ms, beside what
  // SetProxy says. Of several proxies that a script names the first that can be reached is taken.
  HttpReply Perform(const HttpRequest& request);

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace orvalo::platform
