#include <fmt/format.h>

#include <stdexcept>

#include "service/http_conversation.h"

namespace orvalo::service {

boost::asio::ssl::context MakeTlsContext(const std::string& key, const std::string& certificate) {
  namespace ssl = boost::asio::ssl;
  ssl::context context(ssl::context::tls_server);
  SSL_CTX* const native = context.native_handle();
  SSL_CTX_set_min_proto_version(native, TLS1_2_VERSION);
  SSL_CTX_set_cipher_list(native, "ECDHE+AESGCM:ECDHE+CHACHA20");
  SSL_CTX_set_options(native, SSL_OP_NO_RENEGOTIATION | SSL_OP_NO_COMPRESSION);
  // Without this a key with a password would be asked about on the terminal.
  context.set_password_callback([](std::size_t, auto) { return std::string(); });
  try {
    context.use_certificate_chain(boost::asio::buffer(certificate));
  } catch (const std::exception& failure) {
    throw std::runtime_error(fmt::format("the TLS certificate is of no use ({})", failure.what()));
  }
  try {
    context.use_private_key(boost::asio::buffer(key), ssl::context::pem);
  } catch (const std::exception& failure) {
    throw std::runtime_error(fmt::format(
        "the TLS key is of no use: it must be the certificate's, and without a password ({})",
        failure.what()));
  }
  return context;
}

}  // namespace orvalo::service
