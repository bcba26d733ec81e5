#pragma once
#include <memory>
#include <string>
#include <vector>

#include "support/child_process.h"

namespace orvalo::test {

// The real gateway program, serving on a free loopback port. Killed at the end of the scope if it
// still runs.
class GatewayProgram {
 public:
  // Returns once it listens. `folder` takes its port file, its output ("out", "err") and, in
  // "data", its data; `options` are added to its command line. `port`: 0 for a free one.
  GatewayProgram(const std::string& folder, const std::vector<std::string>& options, int port = 0);

  int port() const { return port_; }                        // 0: it does not listen
  int operations_port() const { return operations_port_; }  // 0: it has none
  std::string url() const { return "http://127.0.0.1:" + std::to_string(port_); }

  void Signal(int signal) const { process_->Signal(signal); }
  int Stop(int signal);  // and its exit status; -1 when a signal ended it

  // The lines that its ledger command prints, one JSON object each; also while it is stopped.
  std::vector<std::string> Ledger() const;

 private:
  std::string data_;
  std::unique_ptr<ChildProcess> process_;
  int port_ = 0, operations_port_ = 0;
};

std::string GatewayPath();  // of the program's file

// Runs one of the program's commands to its end.
ProgramResult RunGateway(std::vector<std::string> arguments);

}  // namespace orvalo::test
