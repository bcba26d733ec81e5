#pragma once
#include <string>
#include <vector>

namespace orvalo::bench {

// The gateway service as a process of its own on a free loopback port, with an account "bench"
// (password "bench") that has more credit than any benchmark can spend. Ends with this object.
class GatewayProcess {
 public:
  // `folder` takes its data; `options` are added to its command line. Throws when it does not come
  // up.
  GatewayProcess(const std::string& folder, const std::vector<std::string>& options);
  ~GatewayProcess();
  GatewayProcess(const GatewayProcess&) = delete;
  GatewayProcess& operator=(const GatewayProcess&) = delete;

  const std::string& url() const { return url_; }

 private:
  int process_ = -1;
  std::string url_;
};

}  // namespace orvalo::bench
