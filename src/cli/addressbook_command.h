#pragma once
#include <string>

#include "cli/command.h"

namespace orvalo::cli {

// Prints the tree of the external address book: of the source that the settings choose, or of the
// one that is asked for. Also beside a running program; the settings stay as they are. When the
// book, or a part of it, could not be read, that is told and the status is kFailed.
class AddressBookCommand : public Command {
 public:
  AddressBookCommand();
  void Define(CLI::App& app) override;
  Access AccessNeeded() const override { return Access::kLook; }
  ExitCode Execute(Context& context) override;

 private:
  std::string source_;
};

}  // namespace orvalo::cli
