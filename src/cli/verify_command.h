#pragma once
#include <string>

#include "cli/command.h"
#include "gateway/books_check.h"

namespace orvalo::cli {

// Compares the outbox with what the gateway has accepted from the account. Sends nothing.
class VerifyCommand : public Command {
 public:
  VerifyCommand();
  void Define(CLI::App& app) override;
  Access AccessNeeded() const override { return Access::kGateway; }
  bool Answers() const override { return true; }
  ExitCode Execute(Context& context) override;

 private:
  std::string since_ = "31d";
  bool mend_ = false;
};

}  // namespace orvalo::cli
