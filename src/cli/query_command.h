#pragma once
#include <cstdint>
#include <vector>

#include "cli/command.h"

namespace orvalo::cli {

// Asks the gateway once about messages, given or all that are followed, and lists them. Sends
// nothing and leaves the times of the engine's own questions as they are.
class QueryCommand : public Command {
 public:
  QueryCommand();
  void Define(CLI::App& app) override;
  Access AccessNeeded() const override { return Access::kGateway; }
  bool Answers() const override { return true; }
  ExitCode Execute(Context& context) override;

 private:
  std::vector<std::int32_t> Chosen(Context& context) const;

  std::vector<std::int32_t> ids_;
};

}  // namespace orvalo::cli
