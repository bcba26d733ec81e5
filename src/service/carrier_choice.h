#pragma once
#include <CLI/CLI.hpp>
#include <stdexcept>
#include <string>

#include "service/gateway_service.h"

namespace orvalo::service {

// Wrong use of the program, as opposed to a failure: exit status 2.
struct UsageError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// The command line's part about who brings messages to phones.
class CarrierChoice {
 public:
  void AddOptions(CLI::App& app);

  // Fills in what the options say; `options.http` stands already. Throws UsageError, before
  // anything is opened, for whatever cannot work or would let a password travel in the clear.
  void Apply(ServiceOptions& options) const;

 private:
  std::string carrier_ = "simulated", operations_, password_file_, status_password_file_;
  bool operations_tls_ = false;
  KannelOptions kannel_;
};

}  // namespace orvalo::service
