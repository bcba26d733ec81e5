#pragma once
#include <cstdint>

#include "cli/command.h"
#include "cli/content_arguments.h"
#include "cli/recipient_arguments.h"

namespace orvalo::cli {

// Queues a message; on request sends it and waits for what becomes of it.
class SendCommand : public Command {
 public:
  SendCommand();
  void Define(CLI::App& app) override;
  void Check() const override;
  Access AccessNeeded() const override { return Access::kGateway; }
  ExitCode Execute(Context& context) override;

 private:
  std::int32_t Queue(Context& context, std::string to, std::string text) const;
  ExitCode SendAndWait(Context& context, std::string to, std::string text) const;

  RecipientArguments recipients_;
  ContentArguments content_;
  std::int32_t wait_seconds_ = 0;  // 0: only queue
};

}  // namespace orvalo::cli
