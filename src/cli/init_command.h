#pragma once
#include <string>

#include "cli/command.h"

namespace orvalo::cli {

// Makes a data folder; of one that exists it changes the given settings only.
class InitCommand : public Command {
 public:
  InitCommand();
  void Define(CLI::App& app) override;
  Access AccessNeeded() const override { return Access::kMake; }
  ExitCode Execute(Context& context) override;

 private:
  std::string gateway_;
  std::string client_id_;
  bool plain_http_ = false;
};

}  // namespace orvalo::cli
