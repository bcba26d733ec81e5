#include "support/tls_certificate.h"

#include <openssl/pem.h>
#include <openssl/x509v3.h>

namespace orvalo::test {
namespace {

template <typename Write>
std::string PemText(Write write) {
  const std::unique_ptr<BIO, FreeWith<BIO_free_all>> memory(BIO_new(BIO_s_mem()));
  write(memory.get());
  char* text = nullptr;
  const long length = BIO_get_mem_data(memory.get(), &text);
  return std::string(text, static_cast<std::size_t>(length));
}

}  // namespace

TlsCertificate::TlsCertificate(int hours) : key_(EVP_EC_gen("P-256")), certificate_(X509_new()) {
  X509* const certificate = certificate_.get();
  X509_set_version(certificate, 2);
  ASN1_INTEGER_set(X509_get_serialNumber(certificate), 1);
  X509_gmtime_adj(X509_getm_notBefore(certificate), -3600);
  X509_gmtime_adj(X509_getm_notAfter(certificate), (hours - 1) * 3600L);
  X509_set_pubkey(certificate, key_.get());
  X509_NAME* const name = X509_get_subject_name(certificate);
  X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_ASC,
                             reinterpret_cast<const unsigned char*>("Orvalo test"), -1, -1, 0);
  X509_set_issuer_name(certificate, name);
  X509V3_CTX extension_context;
  X509V3_set_ctx_nodb(&extension_context);
  X509V3_set_ctx(&extension_context, certificate, certificate, nullptr, nullptr, 0);
  X509_EXTENSION* const names =
      X509V3_EXT_conf_nid(nullptr, &extension_context, NID_subject_alt_name, "IP:127.0.0.1");
  X509_add_ext(certificate, names, -1);
  X509_EXTENSION_free(names);
  X509_sign(certificate, key_.get(), EVP_sha256());
}

std::string TlsCertificate::KeyText() const {
  return PemText([this](BIO* out) {
    PEM_write_bio_PrivateKey(out, key_.get(), nullptr, nullptr, 0, nullptr, nullptr);
  });
}

std::string TlsCertificate::CertificateText() const {
  return PemText([this](BIO* out) { PEM_write_bio_X509(out, certificate_.get()); });
}

}  // namespace orvalo::test
