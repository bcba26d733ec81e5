#pragma once
#include <memory>
#include <string>
#include <vector>

#include "cli/command.h"

namespace orvalo::cli {

// Every command of orvaloctl, each on its place of the command line. Lives as long as the parser
// that it was made on.
class CommandTree {
 public:
  explicit CommandTree(CLI::App& root);
  ~CommandTree();
  CommandTree(const CommandTree&) = delete;
  CommandTree& operator=(const CommandTree&) = delete;

  // The command that the parsed line names; null before a line was parsed.
  Command* Chosen() const;
  // Throws CLI::ParseError when an option of one command stands before or behind another one, which
  // would not heed it.
  void CheckOptions() const;

 private:
  CLI::App& Add(CLI::App& parent, std::unique_ptr<Command> command);
  // A word that is only the first half of commands.
  CLI::App& AddFamily(CLI::App& parent, const std::string& name, const std::string& description);

  struct Entry {
    CLI::App* app;
    std::unique_ptr<Command> command;
  };
  std::vector<Entry> entries_;  // parents before their children
};

}  // namespace orvalo::cli
