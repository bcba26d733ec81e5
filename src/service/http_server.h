#pragma once
#include <cstddef>
#include <memory>
#include <string>

#include "service/http_message.h"

namespace orvalo::service {

struct HttpServerOptions {
  std::string address = "127.0.0.1";  // numeric
  int port = 0;                       // 0: any free one
  std::string certificate;            // a PEM file with key and certificates; empty: no TLS
  // As many connections are served at a time. From half of them on, each ends with its reply, so
  // that clients that keep theirs cannot keep others out.
  int threads = 64;
  std::size_t largest_body = 1u << 20;
  int longest_body_seconds = 30;  // until it has come whole, else the request is given up
};

// HTTP/1.1 with keep-alive; knows nothing of what is served. Serves from construction (which throws
// std::runtime_error when the address cannot be had) to destruction (which waits for the requests
// in hand).
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

// An address in the form "127.0.0.1:8480" or "[::1]:8480"; false for anything else.
bool SplitAddress(const std::string& text, std::string& address, int& port);

// Whether a numeric address is reached from this machine only.
bool IsLoopback(const std::string& address);

}  // namespace orvalo::service
