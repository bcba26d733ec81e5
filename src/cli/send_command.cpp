#include "cli/send_command.h"

#include <CLI/CLI.hpp>

#include "app/startup/program.h"

namespace orvalo::cli {

SendCommand::SendCommand() : Command("send", "Queue a message, and with --wait send it") {}

void SendCommand::Define(CLI::App& app) {
  recipients_.Define(app);
  content_.Define(app);
  delivery_.Define(app);
}

void SendCommand::Check() const {
  content_.Check();
  recipients_.Check(content_.ReadsInput());
}

ExitCode SendCommand::Execute(Context& context) {
  QueuedMessage message;
  recipients_.ReadFile(context);
  recipients_.TellDoubles(context.errors);
  message.to = recipients_.RecipientString(context.program.GetDatabase());
  message.type = content_.type();
  message.sender_id = content_.sender();
  message.text = content_.Read(context);
  return delivery_.Perform(context, {message}, "Queued message");
}

}  // namespace orvalo::cli
