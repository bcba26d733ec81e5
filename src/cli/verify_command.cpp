#include "cli/verify_command.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <limits>

#include "app/startup/program.h"
#include "cli/books_report.h"
#include "cli/error_output.h"
#include "cli/gateway_login.h"
#include "cli/message_filter.h"
#include "gateway/listed_messages.h"
#include "store/send_journal.h"

namespace orvalo::cli {

namespace {

constexpr char kCannotList[] =
    "The gateway does not list what it has accepted: nothing can be compared with it";

void AddOutbox(SmsDatabase& database, BooksCheck* check) {
  database.ForEachSms([&](const MessageRow& row) {
    check->AddRow(row);
    return true;
  });
  SendJournal journal(database);
  for (const std::int32_t id : journal.Unfinished()) {
    if (const auto entry = journal.Find(id)) check->AddUnanswered(*entry);
  }
}

[[noreturn]] void ThrowNotListed(Context& context, const GatewayFailure& failure) {
  if (failure.code == kGatewayCannot) throw CommandError(ExitCode::kFailed, kCannotList);
  Program& program = context.program;
  throw CommandError(CodeOfFailure(failure.code),
                     "Not compared to the end: " +
                         FailureText(failure, program.GetTexts(),
                                     program.GetSettings().Text(TextSetting::kComBaseUrl)));
}

}  // namespace

VerifyCommand::VerifyCommand()
    : Command("verify", "Compare the outbox with what the gateway has accepted and charged") {}

void VerifyCommand::Define(CLI::App& app) {
  app.add_option("--since", since_,
                 "What was accepted from this time on: 2026-11-23, \"2026-11-23 14:30\", or 2h, 3d "
                 "ago; else 31d")
      ->type_name("TIME");
  app.add_flag("--mend", mend_, "Take over charges and statuses from the gateway; sends nothing");
}

ExitCode VerifyCommand::Execute(Context& context) {
  Program& program = context.program;
  const std::int64_t since = std::clamp<std::int64_t>(TimeOf(since_, false, program.GetClock()), 0,
                                                      std::numeric_limits<std::int32_t>::max());
  RequireOnline(context);
  LogInAsStored(context);
  SmsDatabase& database = program.GetDatabase();
  GatewayClient& gateway = *program.GetGateway();
  if (!gateway.ListsMessages()) ThrowNotListed(context, {kGatewayCannot});
  BooksReport report(context);
  BooksCheck check(since, [&](const BooksDifference& difference) {
    report.Add(difference, mend_ && Mend(database, difference));
  });
  AddOutbox(database, &check);
  Funds before, funds;
  AskFunds(gateway, &before);
  const GatewayFailure failure = ForEachListed(
      gateway, program.GetClock(), since - BooksCheck::kMargin,
      [&](const ListedMessage& message) { check.AddListed(message); },
      [&] {
        context.errors.Progress("Comparing: messages " + std::to_string(check.totals().listed));
      });
  context.errors.Progress("");
  if (failure.code != kGatewayOk) {
    report.BreakOff();
    ThrowNotListed(context, failure);
  }
  check.End();
  // Another installation may be sending meanwhile.
  const bool checked = AskFunds(gateway, &funds) && funds == before;
  if (checked) check.CheckFunds(funds);
  if (funds.balance.empty()) {
    program.GetAccount().QueryBalanceTenths();
    funds.balance = program.GetAccount().BalanceAsTold();
  }
  report.End(check.totals(), since, funds, checked);
  if (report.left() > 0)
    throw CommandError(ExitCode::kDiffers,
                       "The outbox and the gateway differ: " + report.Summary());
  return ExitCode::kDone;
}

}  // namespace orvalo::cli
