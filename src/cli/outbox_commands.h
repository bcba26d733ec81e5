#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "cli/command.h"
#include "cli/delivery.h"
#include "cli/message_filter.h"

namespace orvalo::cli {

// Lists the messages, all or those that are wanted, in order of their ids.
class OutboxListCommand : public Command {
 public:
  OutboxListCommand();
  void Define(CLI::App& app) override;
  Access AccessNeeded() const override { return Access::kLook; }
  ExitCode Execute(Context& context) override;

 private:
  MessageFilter filter_;
  bool reasons_ = false;
};

// Every column of one message.
class OutboxShowCommand : public Command {
 public:
  OutboxShowCommand();
  void Define(CLI::App& app) override;
  Access AccessNeeded() const override { return Access::kLook; }
  ExitCode Execute(Context& context) override;

 private:
  std::int32_t id_ = 0;
};

// Queues copies of messages, with the sender that they had; on request sends them and waits for
// what becomes of them. All of them or none.
class OutboxResendCommand : public Command {
 public:
  OutboxResendCommand();
  void Define(CLI::App& app) override;
  void Check() const override;
  Access AccessNeeded() const override { return Access::kGateway; }
  ExitCode Execute(Context& context) override;

 private:
  QueuedMessage CopyOf(Context& context, std::int32_t id) const;

  std::vector<std::int32_t> ids_;
  std::optional<std::string> sender_;
  Delivery delivery_;
};

// Deletes messages; an unknown id leaves all of them as they are.
class OutboxDeleteCommand : public Command {
 public:
  OutboxDeleteCommand();
  void Define(CLI::App& app) override;
  Access AccessNeeded() const override { return Access::kChange; }
  ExitCode Execute(Context& context) override;

 private:
  std::vector<std::int32_t> ids_;
};

// Writes messages, or all of them, to a tab-separated text file, which is replaced. An unknown id
// leaves the file as it is.
class OutboxExportCommand : public Command {
 public:
  OutboxExportCommand();
  void Define(CLI::App& app) override;
  Access AccessNeeded() const override { return Access::kLook; }
  ExitCode Execute(Context& context) override;

 private:
  std::string file_;
  std::vector<std::int32_t> ids_;
};

}  // namespace orvalo::cli
