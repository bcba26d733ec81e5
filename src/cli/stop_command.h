#pragma once
#include <cstdint>
#include <vector>

#include "cli/command.h"

namespace orvalo::cli {

// Ends the sending of messages that wait for the gateway: nothing more of them goes out. The
// gateway is asked what it has of them; when nobody answers, later passes ask.
class OutboxStopCommand : public Command {
 public:
  OutboxStopCommand();
  void Define(CLI::App& app) override;
  Access AccessNeeded() const override { return Access::kGateway; }
  ExitCode Execute(Context& context) override;

 private:
  void Stop(Context& context) const;

  std::vector<std::int32_t> ids_;
};

}  // namespace orvalo::cli
