#include "cli/run_command.h"

#include <CLI/CLI.hpp>
#include <limits>
#include <map>
#include <set>

#include "app/startup/program.h"
#include "cli/change_report.h"
#include "cli/engine_session.h"
#include "cli/error_output.h"
#include "cli/gateway_login.h"
#include "cli/message_listing.h"
#include "cli/message_state.h"
#include "cli/outcome_tally.h"
#include "store/send_journal.h"

namespace orvalo::cli {

namespace {

// Says what became of messages as it happens, and remembers them for the end.
class RunReport {
 public:
  explicit RunReport(Context& context)
      : context_(context), report_(context.program.GetDatabase()) {}

  void SayChanges() {
    for (MessageRow& row : report_.Changes()) {
      std::string line = "Message " + std::to_string(row.id) + " to " + row.to_info + ": " +
                         context_.program.GetStatusNames().Name(row.stat);
      if (!row.reason.empty()) line += ", " + row.reason;
      if (!row.charge.empty() && row.charge != "?") line += ", charge " + row.charge;
      if (!context_.json) context_.errors.Line(line);
      Count(row);
      if (context_.json) changed_[row.id] = std::move(row);
    }
  }

  // What became of the messages that the run has moved on, and what it has left unsent.
  OutcomeTally Tally() const {
    OutcomeTally tally = ended_;
    SmsDatabase& database = context_.program.GetDatabase();
    std::set<std::int32_t> left = open_;
    const auto pending = database.PendingSms(kEveryMessage);
    left.insert(pending.begin(), pending.end());
    const auto unfinished = SendJournal(database).Unfinished();
    left.insert(unfinished.begin(), unfinished.end());
    for (const std::int32_t id : left) {
      if (const auto row = database.GetSms(id)) tally.Add(*row);
    }
    return tally;
  }

  void PrintResults() const {
    if (!context_.json) return;
    MessageListing listing(context_);
    for (const auto& [id, row] : changed_) listing.Add(row);
    listing.End();
  }

 private:
  void Count(const MessageRow& row) {
    if (!IsSettled(row)) {
      if (IsFollowed(row)) open_.insert(row.id);
      return;
    }
    open_.erase(row.id);
    ended_.Add(row);
  }

  Context& context_;
  ChangeReport report_;
  OutcomeTally ended_;
  std::set<std::int32_t> open_;  // with the gateway, without a final status
  std::map<std::int32_t, MessageRow> changed_;
};

EngineSession::Event RunUntilEnd(EngineSession& session, RunReport& report, std::int64_t until) {
  for (;;) {
    const EngineSession::Event event = session.Wait(until);
    if (session.TakeChanged()) report.SayChanges();
    if (event != EngineSession::Event::kBurstOver) return event;
  }
}

}  // namespace

RunCommand::RunCommand() : Command("run", "Send, schedule and follow messages until it is ended") {}

void RunCommand::Define(CLI::App& app) {
  app.add_option("--for", seconds_, "End after so many seconds")
      ->type_name("SECONDS")
      ->check(CLI::Range(1, std::numeric_limits<std::int32_t>::max()).description(""));
}

ExitCode RunCommand::Execute(Context& context) {
  Program& program = context.program;
  const bool online = program.GetSettings().Flag(FlagSetting::kWorkingOnLine);
  if (online) LogInAsStored(context);
  EngineSession session(context);
  RunReport report(context);
  const std::int64_t until = seconds_ == 0
                                 ? std::numeric_limits<std::int64_t>::max()
                                 : program.GetClock().Tick() + std::int64_t{seconds_} * 1000;
  session.Start();
  context.errors.Line(online ? "The send engine is running"
                             : "The send engine is running offline: nothing is sent");
  const EngineSession::Event end = RunUntilEnd(session, report, until);
  session.Stop();
  report.SayChanges();
  report.PrintResults();
  session.RequireStored();
  if (end == EngineSession::Event::kOffline) {
    StayOnline(context);
    report.Tally().SayAllBut(ExitCode::kUnreachable, context.errors);
    throw CommandError(ExitCode::kUnreachable, LostGateway(context));
  }
  report.Tally().End(context.errors);
  return ExitCode::kDone;
}

}  // namespace orvalo::cli
