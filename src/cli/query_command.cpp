#include "cli/query_command.h"

#include <CLI/CLI.hpp>
#include <mutex>

#include "app/startup/program.h"
#include "cli/error_output.h"
#include "cli/gateway_login.h"
#include "cli/message_listing.h"
#include "cli/message_state.h"
#include "gateway/status_pass.h"
#include "platform/stop_signal.h"

namespace orvalo::cli {

namespace {

// False when the gateway was lost on the way.
bool AskAbout(Context& context, const std::vector<std::int32_t>& ids) {
  Program& program = context.program;
  platform::StopWatcher stop([&] { program.GetNotices().RequestStop(); });
  std::mutex pass_lock;  // there is no engine whose passes could meet this one
  StatusPass pass(
      {program.GetSettings(), program.GetDatabase(), program.GetLog(), program.GetTexts(),
       *program.GetGateway(), program.GetMessageBoxes(), program.GetClock(), program.GetNotices()},
      pass_lock);
  auto left = ids.size();
  for (const std::int32_t id : ids) {
    if (program.GetNotices().Stopping()) break;
    context.errors.Progress("Asking for news: messages left " + std::to_string(left--));
    pass.QueryMessageStatus(id);
    if (program.GetGateway()->LastError() == kGatewayUnreachable) return false;
  }
  return true;
}

}  // namespace

QueryCommand::QueryCommand() : Command("query", "Ask the gateway for news of messages") {}

void QueryCommand::Define(CLI::App& app) {
  app.add_option("ID", ids_, "The messages' ids; none: all that news are expected of");
}

ExitCode QueryCommand::Execute(Context& context) {
  RequireOnline(context);
  SmsDatabase& database = context.program.GetDatabase();
  const std::vector<std::int32_t> ids = Chosen(context);
  LogInAsStored(context);
  const bool reachable = AskAbout(context, ids);
  context.errors.Progress("");
  MessageListing listing(context);
  for (const std::int32_t id : ids) {
    if (const auto row = database.GetSms(id)) listing.Add(*row);
  }
  listing.End();
  if (!reachable) ThrowUnreachable(context);
  return ExitCode::kDone;
}

std::vector<std::int32_t> QueryCommand::Chosen(Context& context) const {
  SmsDatabase& database = context.program.GetDatabase();
  for (const std::int32_t id : ids_) {
    if (!database.GetSms(id))
      throw CommandError(ExitCode::kFailed, "There is no message " + std::to_string(id));
  }
  if (!ids_.empty()) return ids_;
  std::vector<std::int32_t> followed;
  database.ForEachSms([&](const MessageRow& row) {
    if (IsFollowed(row)) followed.push_back(row.id);
    return true;
  });
  return followed;
}

}  // namespace orvalo::cli
