#pragma once
#include <chrono>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "service/http_message.h"

namespace orvalo::service {

// How long a client may take, whatever it sends meanwhile.
struct HttpPatience {
  std::chrono::milliseconds first_byte{10'000};  // of a new connection; a TLS handshake, too
  std::chrono::milliseconds next_request{60'000};
  std::chrono::milliseconds head{10'000};   // from its first byte on
  std::chrono::milliseconds body{30'000};   // from the end of the head on
  std::chrono::milliseconds reply{30'000};  // to take it
};

struct HttpServerOptions {
  std::string address = "127.0.0.1";     // numeric
  int port = 0;                          // 0: any free one
  std::string tls_key, tls_certificate;  // as PEM, the certificate with its chain; empty: no TLS
  int threads = 64;                      // requests worked on at a time
  int slow_threads = 40;                 // and of those that wait for something scarce
  int connections = 2000;
  int connections_of_an_address = 256;
  // Addresses, as NumericAddress has them, whose "X-Forwarded-For" tells who asks; they may have
  // any number of connections.
  std::vector<std::string> proxies;
  std::size_t largest_body = 1u << 20;
  HttpPatience patience;

  bool has_tls() const { return !tls_certificate.empty(); }
};

// HTTP/1.1 with keep-alive; knows nothing of what is served. Serves from construction (which throws
// std::runtime_error when the address cannot be had, or key and certificate are of no use) to
// destruction (which waits for the requests in hand).
//
// One thread of its own reads and writes all connections and keeps their deadlines; a request goes
// to a worker when it is there as a whole. So a connection that is silent, or slow, holds no
// worker. Where there is no room for a new connection, the one that has kept the server waiting for
// longest ends: of the same address when that has its number, else of the address that has most.
class HttpServer {
 public:
  HttpServer(const HttpServerOptions& options, HttpHandler& handler);
  ~HttpServer();
  HttpServer(const HttpServer&) = delete;
  HttpServer& operator=(const HttpServer&) = delete;

  int port() const { return port_; }

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
  int port_ = 0;
};

// A numeric address in the one form in which it is compared ("::1" for "0:0::1", "10.0.0.1" for
// "::ffff:10.0.0.1"); nothing for anything else, such as a name or a network.
std::optional<std::string> NumericAddress(const std::string& text);

// An address in the form "127.0.0.1:8480" or "[::1]:8480"; false for anything else.
bool SplitAddress(const std::string& text, std::string& address, int& port);

// Whether a numeric address is reached from this machine only.
bool IsLoopback(const std::string& address);

}  // namespace orvalo::service
