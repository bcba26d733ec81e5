#pragma once
#include <memory>
#include <string>

#include "support/child_process.h"
#include "support/temporary_folder.h"

namespace orvalo::test {

// A real directory server on free loopback ports, with a database of its own in a temporary folder.
// Its suffix is "dc=orvalo,dc=test", its administrator "cn=admin,dc=orvalo,dc=test" with the
// password "secret". Killed at the end of the scope.
class Slapd {
 public:
  // `ldif`: what the directory holds. `config`: lines for slapd.conf that hold for the whole server
  // (size limits, TLS files, schemas).
  explicit Slapd(const std::string& ldif, const std::string& config = "sizelimit unlimited");

  // "ldap://127.0.0.1:port", "ldaps://..."
  std::string url() const { return "ldap://127.0.0.1:" + std::to_string(port_); }
  std::string tls_url() const { return "ldaps://127.0.0.1:" + std::to_string(tls_port_); }
  int port() const { return port_; }
  int tls_port() const { return tls_port_; }
  bool IsUp() const { return port_ != 0; }  // else the error output says why

  // How many connections this process has to it.
  int Connections() const;

  void Stop();   // as if the machine went away
  void Start();  // again, on the same ports

  static std::string SchemaLine(const std::string& name);  // includes one of slapd's own schemas

 private:
  bool Serve();

  TemporaryFolder folder_;
  std::unique_ptr<ChildProcess> process_;
  int port_ = 0;
  int tls_port_ = 0;
};

}  // namespace orvalo::test
