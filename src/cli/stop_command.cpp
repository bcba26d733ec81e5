#include "cli/stop_command.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <mutex>

#include "app/startup/program.h"
#include "cli/error_output.h"
#include "cli/gateway_login.h"
#include "cli/message_family.h"
#include "cli/message_listing.h"
#include "gateway/send_pass.h"
#include "platform/stop_signal.h"
#include "store/send_journal.h"

namespace orvalo::cli {

namespace {

constexpr char kNotAsked[] =
    "Nothing more is sent, but recipients without an answer may have got it; the next `orvaloctl "
    "run` asks the gateway: ";

void AskAbout(Context& context, const std::vector<std::int32_t>& ids) {
  Program& program = context.program;
  platform::StopWatcher stop([&] { program.GetNotices().RequestStop(); });
  std::mutex pass_lock;  // there is no engine whose passes could meet this one
  SendPass pass(
      {program.GetSettings(), program.GetDatabase(), program.GetLog(), program.GetTexts(),
       *program.GetGateway(), program.GetMessageBoxes(), program.GetClock(), program.GetNotices()},
      pass_lock);
  for (const std::int32_t id : ids) {
    context.errors.Progress("Asking what the gateway has of message " + std::to_string(id));
    pass.TryAgain();
    pass.SendQueuedSMSs(id);
  }
  pass.Finish();
  context.errors.Progress("");
}

}  // namespace

OutboxStopCommand::OutboxStopCommand()
    : Command("stop", "Send no more of messages that wait for the gateway") {}

void OutboxStopCommand::Define(CLI::App& app) {
  app.add_option("ID", ids_, "The messages' ids")->required();
}

ExitCode OutboxStopCommand::Execute(Context& context) {
  Program& program = context.program;
  Stop(context);
  try {
    RequireOnline(context);
    LogInAsStored(context);
  } catch (const CommandError& error) {
    throw CommandError(error.code(), kNotAsked + std::string(error.what()));
  }
  AskAbout(context, ids_);
  MessageListing listing(context, true);
  for (const MessageRow& row : MessageFamily(program.GetDatabase(), ids_).Rows()) listing.Add(row);
  listing.End();
  if (const std::string problem = program.GetNotices().TakeStoreProblem(); !problem.empty())
    throw CommandError(ExitCode::kFailed, problem);
  const auto open = SendJournal(program.GetDatabase()).Unfinished();
  if (std::find_first_of(open.begin(), open.end(), ids_.begin(), ids_.end()) != open.end()) {
    const std::string why = program.GetNotices().TakeWaitingReason();
    throw CommandError(ExitCode::kUnreachable, kNotAsked + (why.empty() ? "interrupted" : why));
  }
  return ExitCode::kDone;
}

// All of them or none.
void OutboxStopCommand::Stop(Context& context) const {
  SmsDatabase& database = context.program.GetDatabase();
  SendJournal journal(database);
  SmsDatabase::Transaction transaction(database, SmsDatabase::Transaction::Reach::kDisk);
  for (const std::int32_t id : ids_) {
    if (journal.Stop(id)) continue;
    const std::string name = std::to_string(id);
    throw CommandError(ExitCode::kFailed, database.GetSms(id)
                                              ? "Message " + name + " does not wait for the gateway"
                                              : "There is no message " + name);
  }
  transaction.Commit();
}

}  // namespace orvalo::cli
