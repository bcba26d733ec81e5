#pragma once
#include <sys/types.h>

#include <string>
#include <vector>

#include "support/temporary_folder.h"

namespace orvalo::test {

// The gateway service as a process of its own, with its demonstration data, on a free loopback port
// and a folder of its own. Ended with the object.
class GatewayProcess {
 public:
  GatewayProcess();  // the address stays empty when the service does not come up
  ~GatewayProcess();
  GatewayProcess(const GatewayProcess&) = delete;
  GatewayProcess& operator=(const GatewayProcess&) = delete;

  const std::string& address() const { return address_; }
  void End();

  // The lines that the service's ledger command prints, as JSON.
  std::vector<std::string> Ledger() const;

 private:
  TemporaryFolder folder_;
  pid_t process_ = -1;
  int output_ = -1;
  std::string address_;
};

}  // namespace orvalo::test
