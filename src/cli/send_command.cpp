#include "cli/send_command.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <limits>
#include <map>
#include <ostream>
#include <utility>

#include "app/startup/program.h"
#include "cli/engine_session.h"
#include "cli/error_output.h"
#include "cli/gateway_login.h"
#include "cli/message_family.h"
#include "cli/message_listing.h"
#include "cli/message_state.h"

namespace orvalo::cli {

namespace {

constexpr std::int64_t kBetweenQueries = 1000;  // milliseconds

// Runs the engine until the family is settled, the time is up, or something ends the wait.
class SendWait {
 public:
  SendWait(Context& context, EngineSession& session, MessageFamily& family, std::int32_t seconds)
      : context_(context),
        session_(session),
        family_(family),
        clock_(context.program.GetClock()),
        deadline_(clock_.Tick() + std::int64_t{seconds} * 1000) {}

  // How the wait ended: kBurstOver when all is settled, else what broke it off.
  EngineSession::Event Run() {
    std::int64_t next_query = clock_.Tick() + kBetweenQueries;
    bool engine_idle = false;
    for (;;) {
      const EngineSession::Event event = session_.Wait(std::min(deadline_, next_query));
      if (event == EngineSession::Event::kOffline || event == EngineSession::Event::kStopWished)
        return event;
      engine_idle = engine_idle || event == EngineSession::Event::kBurstOver;
      family_.Refresh();
      if (family_.AllSettled()) return EngineSession::Event::kBurstOver;
      const std::int64_t now = clock_.Tick();
      if (now >= deadline_) return EngineSession::Event::kTime;
      if (now < next_query) continue;
      next_query = now + kBetweenQueries;
      // Questions go out one burst at a time, however long the gateway takes to answer.
      if (std::exchange(engine_idle, false)) engine_idle = !AskForNews();
    }
  }

 private:
  bool AskForNews() {
    IdList followed = family_.Followed();
    if (followed.ids.empty()) return false;
    context_.program.GetEngine().RequestQuery(std::move(followed));
    return true;
  }

  Context& context_;
  EngineSession& session_;
  MessageFamily& family_;
  platform::Clock& clock_;
  const std::int64_t deadline_;
};

std::string Messages(std::ptrdiff_t count) {
  return std::to_string(count) + (count == 1 ? " message" : " messages");
}

// Each reason once: a thousand recipients may have been refused for the same.
void SayReasons(Context& context, const std::vector<MessageRow>& rows) {
  std::map<std::string, std::ptrdiff_t> reasons;
  for (const MessageRow& row : rows) {
    if (!row.reason.empty()) ++reasons[row.reason];
  }
  for (const auto& [reason, count] : reasons)
    context.errors.Line("Refused: " + Messages(count) + ", " + reason);
}

// Says what the rows alone do not.
ExitCode ReportWait(Context& context, EngineSession::Event end,
                    const std::vector<MessageRow>& rows) {
  const auto expanded = std::count_if(rows.begin(), rows.end(), [](const MessageRow& row) {
    return row.stat == static_cast<std::int32_t>(SmsStatus::kExpanded);
  });
  const auto failed = std::count_if(rows.begin(), rows.end(), [](const MessageRow& row) {
    return row.stat == static_cast<std::int32_t>(SmsStatus::kFailed);
  });
  const auto open = std::count_if(rows.begin(), rows.end(),
                                  [](const MessageRow& row) { return !IsSettled(row); });
  if (open > 0) context.errors.Line("No final status yet: " + Messages(open));
  if (end == EngineSession::Event::kOffline) ThrowLost(context);
  if (failed > 0) {
    SayReasons(context, rows);
    const bool all = failed + expanded == std::ssize(rows);
    throw CommandError(all ? ExitCode::kGateway : ExitCode::kFailed,
                       "Not accepted by the gateway: " + Messages(failed));
  }
  if (end == EngineSession::Event::kStopWished)
    throw CommandError(ExitCode::kFailed,
                       "Interrupted; what is Pending goes out with the next run");
  return ExitCode::kDone;
}

}  // namespace

SendCommand::SendCommand() : Command("send", "Queue a message, and with --wait send it") {}

void SendCommand::Define(CLI::App& app) {
  recipients_.Define(app);
  content_.Define(app);
  app.add_option("--wait", wait_seconds_,
                 "Send now, and wait so long for the final status of every recipient")
      ->type_name("SECONDS")
      ->check(CLI::Range(1, std::numeric_limits<std::int32_t>::max()).description(""));
}

void SendCommand::Check() const {
  recipients_.Check();
  content_.Check();
}

ExitCode SendCommand::Execute(Context& context) {
  std::string to = recipients_.RecipientString(context.program.GetDatabase());
  std::string text = content_.Read(context);
  if (wait_seconds_ > 0) return SendAndWait(context, std::move(to), std::move(text));

  const std::int32_t id = Queue(context, std::move(to), std::move(text));
  if (context.json) {
    MessageListing listing(context);
    if (const auto row = context.program.GetDatabase().GetSms(id)) listing.Add(*row);
    listing.End();
  } else {
    context.out << "Queued message " << id << '\n';
  }
  return ExitCode::kDone;
}

std::int32_t SendCommand::Queue(Context& context, std::string to, std::string text) const {
  QueuedMessage message;
  message.type = content_.type();
  message.to = std::move(to);
  message.text = std::move(text);
  return context.program.GetEngine().QueueMessage(message);
}

// Logs in first: what could not be sent now is not left behind to be sent at some other time.
ExitCode SendCommand::SendAndWait(Context& context, std::string to, std::string text) const {
  RequireOnline(context);
  LogInAsStored(context);
  EngineSession session(context);
  const std::int32_t id = Queue(context, std::move(to), std::move(text));
  MessageFamily family(context.program.GetDatabase(), id);
  session.Start();
  const EngineSession::Event end = SendWait(context, session, family, wait_seconds_).Run();
  session.Stop();
  if (end == EngineSession::Event::kOffline) StayOnline(context);

  const std::vector<MessageRow> rows = family.Rows();
  MessageListing listing(context);
  for (const MessageRow& row : rows) listing.Add(row);
  listing.End();
  return ReportWait(context, end, rows);
}

}  // namespace orvalo::cli
