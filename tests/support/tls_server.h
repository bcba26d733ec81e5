#pragma once
#include <openssl/err.h>
#include <openssl/ssl.h>

#include <atomic>
#include <memory>
#include <string>

#include "support/raw_server.h"
#include "support/tls_certificate.h"

namespace orvalo::test {

using Context = std::unique_ptr<SSL_CTX, FreeWith<SSL_CTX_free>>;
using Session = std::unique_ptr<SSL, FreeWith<SSL_free>>;

// Answers every request on every connection over TLS.
class TlsServer {
 public:
  explicit TlsServer(int hours = 24)
      : certificate_(hours),
        context_(SSL_CTX_new(TLS_server_method())),
        server_([this](RawServer::Connection& connection) { Serve(connection); }) {
    SSL_CTX_use_certificate(context_.get(), certificate_.certificate());
    SSL_CTX_use_PrivateKey(context_.get(), certificate_.key());
  }

  std::string Url(const std::string& host = "127.0.0.1") const {
    return "https://" + host + ":" + std::to_string(server_.port()) + "/";
  }
  int connections() const { return connections_; }
  std::string CertificateText() const { return certificate_.CertificateText(); }

 private:
  void Serve(RawServer::Connection& connection) {
    const Session session(SSL_new(context_.get()));
    SSL_set_fd(session.get(), connection.socket());
    if (SSL_accept(session.get()) == 1) {
      ++connections_;
      const std::string reply = "HTTP/1.1 200 OK\r\nContent-Length: 6\r\n\r\nsecret";
      char bytes[4096];
      while (SSL_read(session.get(), bytes, sizeof bytes) > 0)
        SSL_write(session.get(), reply.data(), static_cast<int>(reply.size()));
    }
    ERR_clear_error();
  }

  TlsCertificate certificate_;
  Context context_;
  std::atomic<int> connections_ = 0;
  RawServer server_;
};

}  // namespace orvalo::test
