#pragma once
#include <string>

#include "cli/command.h"

namespace orvalo::cli {

// A secret of a command: never on the command line, where others could read it. It comes from the
// first line of the file of --password-file, else from the environment variable ORVALO_PASSWORD,
// else from the operator (without echo), else from the next line of the input.
class SecretArgument {
 public:
  void Define(CLI::App& app);
  bool file_given() const { return !file_.empty(); }
  // Throws CommandError when there is none, or it is longer than a password may be.
  std::string Read(Context& context, const std::string& prompt) const;

 private:
  std::string file_;
};

}  // namespace orvalo::cli
