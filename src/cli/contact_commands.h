#pragma once
#include <cstdint>
#include <string>
#include <vector>

#include "cli/command.h"
#include "cli/contact_arguments.h"

namespace orvalo::cli {

class ContactAddCommand : public Command {
 public:
  ContactAddCommand();
  void Define(CLI::App& app) override { arguments_.Define(app, true); }
  void Check() const override { arguments_.Check(); }
  Access AccessNeeded() const override { return Access::kChange; }
  ExitCode Execute(Context& context) override;

 private:
  ContactArguments arguments_;
};

class ContactListCommand : public Command {
 public:
  ContactListCommand();
  void Define(CLI::App& app) override;
  Access AccessNeeded() const override { return Access::kLook; }
  ExitCode Execute(Context& context) override;

 private:
  std::string group_;
};

class ContactShowCommand : public Command {
 public:
  ContactShowCommand();
  void Define(CLI::App& app) override;
  Access AccessNeeded() const override { return Access::kLook; }
  ExitCode Execute(Context& context) override;

 private:
  std::int32_t cid_ = 0;
};

// Changes what is given; groups replace the contact's present ones.
class ContactEditCommand : public Command {
 public:
  ContactEditCommand();
  void Define(CLI::App& app) override;
  void Check() const override { arguments_.Check(); }
  Access AccessNeeded() const override { return Access::kChange; }
  ExitCode Execute(Context& context) override;

 private:
  std::int32_t cid_ = 0;
  ContactArguments arguments_;
};

// Deletes contacts, or only takes them out of a group; one that is then in no group goes as well.
// An unknown id leaves all of them as they are.
class ContactDeleteCommand : public Command {
 public:
  ContactDeleteCommand();
  void Define(CLI::App& app) override;
  Access AccessNeeded() const override { return Access::kChange; }
  ExitCode Execute(Context& context) override;

 private:
  std::vector<std::int32_t> cids_;
  std::string group_;
};

}  // namespace orvalo::cli
