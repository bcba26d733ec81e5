// The packaged civetweb loads "libcrypto.so", a name that only machines with OpenSSL's headers
// have. This library goes by that name and holds nothing: it brings the real one in.
