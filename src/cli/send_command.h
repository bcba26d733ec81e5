#pragma once
#include "cli/command.h"
#include "cli/content_arguments.h"
#include "cli/delivery.h"
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
  RecipientArguments recipients_;
  ContentArguments content_;
  Delivery delivery_;
};

}  // namespace orvalo::cli
