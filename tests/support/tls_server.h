#pragma once
#include <openssl/err.h>
#include <openssl/pem.h>
#include <openssl/ssl.h>
#include <openssl/x509v3.h>

#include <atomic>
#include <memory>
#include <string>

#include "support/raw_server.h"

namespace orvalo::test {

template <auto Free>
struct FreeWith {
  template <typename T>
  void operator()(T* object) const {
    Free(object);
  }
};
using Key = std::unique_ptr<EVP_PKEY, FreeWith<EVP_PKEY_free>>;
using Certificate = std::unique_ptr<X509, FreeWith<X509_free>>;
using Context = std::unique_ptr<SSL_CTX, FreeWith<SSL_CTX_free>>;
using Session = std::unique_ptr<SSL, FreeWith<SSL_free>>;

// A certificate for "127.0.0.1" that signs itself, valid from an hour ago for so many hours.
inline Certificate MakeCertificate(EVP_PKEY* key, int hours) {
  Certificate certificate(X509_new());
  X509_set_version(certificate.get(), 2);
  ASN1_INTEGER_set(X509_get_serialNumber(certificate.get()), 1);
  X509_gmtime_adj(X509_getm_notBefore(certificate.get()), -3600);
  X509_gmtime_adj(X509_getm_notAfter(certificate.get()), (hours - 1) * 3600L);
  X509_set_pubkey(certificate.get(), key);
  X509_NAME* const name = X509_get_subject_name(certificate.get());
  X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_ASC,
                             reinterpret_cast<const unsigned char*>("Orvalo test"), -1, -1, 0);
  X509_set_issuer_name(certificate.get(), name);
  X509V3_CTX extension_context;
  X509V3_set_ctx_nodb(&extension_context);
  X509V3_set_ctx(&extension_context, certificate.get(), certificate.get(), nullptr, nullptr, 0);
  X509_EXTENSION* const names =
      X509V3_EXT_conf_nid(nullptr, &extension_context, NID_subject_alt_name, "IP:127.0.0.1");
  X509_add_ext(certificate.get(), names, -1);
  X509_EXTENSION_free(names);
  X509_sign(certificate.get(), key, EVP_sha256());
  return certificate;
}

// Answers every request on every connection over TLS.
class TlsServer {
 public:
  explicit TlsServer(int hours = 24)
      : key_(EVP_EC_gen("P-256")),
        certificate_(MakeCertificate(key_.get(), hours)),
        context_(SSL_CTX_new(TLS_server_method())),
        server_([this](RawServer::Connection& connection) { Serve(connection); }) {
    SSL_CTX_use_certificate(context_.get(), certificate_.get());
    SSL_CTX_use_PrivateKey(context_.get(), key_.get());
  }

  std::string Url(const std::string& host = "127.0.0.1") const {
    return "https://" + host + ":" + std::to_string(server_.port()) + "/";
  }
  int connections() const { return connections_; }
  std::string CertificateText() const {
    const std::unique_ptr<BIO, FreeWith<BIO_free_all>> memory(BIO_new(BIO_s_mem()));
    PEM_write_bio_X509(memory.get(), certificate_.get());
    char* text = nullptr;
    const long length = BIO_get_mem_data(memory.get(), &text);
    return std::string(text, static_cast<std::size_t>(length));
  }

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

  Key key_;
  Certificate certificate_;
  Context context_;
  std::atomic<int> connections_ = 0;
  RawServer server_;
};

}  // namespace orvalo::test
