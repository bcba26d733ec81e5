#include <openssl/ssl.h>

// OpenSSL 3 renamed this function and keeps the old name in its headers only. The packaged civetweb
// looks the old name up in "libssl.so" when it starts TLS, and fails without it. So a library of
// ours goes by that file name: it brings the real one in and adds what is missing.
#undef SSL_get_peer_certificate
extern "C" X509* SSL_get_peer_certificate(const SSL* session) {
  return SSL_get1_peer_certificate(session);
}
