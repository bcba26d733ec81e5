#pragma once
#include <openssl/evp.h>
#include <openssl/x509.h>

#include <memory>
#include <string>

namespace orvalo::test {

template <auto Free>
struct FreeWith {
  template <typename T>
  void operator()(T* object) const {
    Free(object);
  }
};

// A key and a certificate for "127.0.0.1" that signs itself, valid from an hour ago for so many
// hours.
class TlsCertificate {
 public:
  explicit TlsCertificate(int hours = 24);

  EVP_PKEY* key() const { return key_.get(); }
  X509* certificate() const { return certificate_.get(); }
  std::string KeyText() const;  // as PEM
  std::string CertificateText() const;

 private:
  std::unique_ptr<EVP_PKEY, FreeWith<EVP_PKEY_free>> key_;
  std::unique_ptr<X509, FreeWith<X509_free>> certificate_;
};

}  // namespace orvalo::test
