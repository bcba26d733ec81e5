#pragma once
#include <string>

#include "cli/command.h"

namespace orvalo::cli {

// Adds a group; names are unique whatever their case.
class GroupAddCommand : public Command {
 public:
  GroupAddCommand();
  void Define(CLI::App& app) override;
  void Check() const override;
  Access AccessNeeded() const override { return Access::kChange; }
  ExitCode Execute(Context& context) override;

 private:
  std::string name_;
};

class GroupListCommand : public Command {
 public:
  GroupListCommand();
  void Define(CLI::App&) override {}
  Access AccessNeeded() const override { return Access::kLook; }
  ExitCode Execute(Context& context) override;
};

class GroupRenameCommand : public Command {
 public:
  GroupRenameCommand();
  void Define(CLI::App& app) override;
  void Check() const override;
  Access AccessNeeded() const override { return Access::kChange; }
  ExitCode Execute(Context& context) override;

 private:
  std::string name_;
  std::string new_name_;
};

// Deletes a group, and with it the contacts that are in no other.
class GroupDeleteCommand : public Command {
 public:
  GroupDeleteCommand();
  void Define(CLI::App& app) override;
  Access AccessNeeded() const override { return Access::kChange; }
  ExitCode Execute(Context& context) override;

 private:
  std::string name_;
};

}  // namespace orvalo::cli
