#include "cli/query_command.h"

#include <CLI/CLI.hpp>
#include <mutex>

#include "app/startup/program.h"
#include "cli/error_output.h"
#include "cli/gateway_login.h"
#include "cli/message_listing.h"
#include "cli/message_state.h"
#include "cli/outcome_tally.h"
#include "gateway/status_pass.h"
#include "platform/stop_signal.h"

namespace orvalo::cli {

namespace {

// What the gateway did not answer. Ends at a failure that every further question would meet, too.
StatusPass::Unanswered AskAbout(Context& context, const std::vector<std::int32_t>& ids) {
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
    if (ConcernsEveryCall(pass.unanswered().last.code)) break;
  }
  return pass.unanswered();
}

// None at all has been answered: the command has done nothing; else it has done a part.
[[noreturn]] void ThrowUnanswered(const Context& context, const StatusPass::Unanswered& unanswered,
                                  bool all) {
  const auto& program = context.program;
  const GatewayFailure& failure = unanswered.last;
  const std::string why = FailureText(failure, program.GetTexts(),
                                      context.program.GetSettings().Text(TextSetting::kComBaseUrl));
  const std::string count = Counted(static_cast<std::size_t>(unanswered.count), "message");
  throw CommandError(all ? CodeOfFailure(failure.code) : ExitCode::kFailed,
                     ConcernsEveryCall(failure.code)
                         ? "The statuses shown are the last known ones: " + why
                         : "No news of " + count + ": " + why);
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
  const StatusPass::Unanswered unanswered = AskAbout(context, ids);
  context.errors.Progress("");
  MessageListing listing(context);
  for (const std::int32_t id : ids) {
    if (const auto row = database.GetSms(id)) listing.Add(*row);
  }
  listing.End();
  if (const std::string problem = context.program.GetNotices().TakeStoreProblem(); !problem.empty())
    throw CommandError(ExitCode::kFailed, problem);
  if (unanswered.count > 0) {
    const bool all = unanswered.count >= std::ssize(ids) || ConcernsEveryCall(unanswered.last.code);
    ThrowUnanswered(context, unanswered, all);
  }
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
