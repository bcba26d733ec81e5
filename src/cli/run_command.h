#pragma once
#include <cstdint>

#include "cli/command.h"

namespace orvalo::cli {

// Runs the send engine in the foreground until the operator or the system ends it, or the time is
// up: what is Pending or due goes out, what was sent is followed.
class RunCommand : public Command {
 public:
  RunCommand();
  void Define(CLI::App& app) override;
  Access AccessNeeded() const override { return Access::kGateway; }
  ExitCode Execute(Context& context) override;

 private:
  std::int32_t seconds_ = 0;  // 0: until it is ended
};

}  // namespace orvalo::cli
