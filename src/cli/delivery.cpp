#include "cli/delivery.h"

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
#include "cli/outcome_tally.h"
#include "store/store_error.h"

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

std::vector<std::int32_t> Queue(Context& context, const std::vector<QueuedMessage>& messages) {
  std::vector<std::int32_t> ids;
  ids.reserve(messages.size());
  SmsDatabase::Transaction transaction(context.program.GetDatabase());
  for (const QueuedMessage& message : messages)
    ids.push_back(context.program.GetEngine().QueueMessage(message));
  transaction.Commit();
  return ids;
}

void List(Context& context, const std::vector<MessageRow>& rows) {
  MessageListing listing(context);
  for (const MessageRow& row : rows) listing.Add(row);
  listing.End();
}

// Each reason once: a thousand recipients may have been refused for the same.
void SayReasons(Context& context, const std::vector<MessageRow>& rows) {
  std::map<std::string, std::size_t> reasons;
  for (const MessageRow& row : rows) {
    if (!row.reason.empty()) ++reasons[row.reason];
  }
  for (const auto& [reason, count] : reasons)
    context.errors.Line("Refused: " + Counted(count, "message") + ", " + reason);
}

// What keeps messages from being sent now though they can be sent later; empty when nothing does.
std::string ObstacleToSending(Context& context) {
  if (!context.program.GetSettings().Flag(FlagSetting::kWorkingOnLine))
    return "Working offline (to go online: `orvaloctl settings WorkingOnLine 1`)";
  try {
    LogInAsStored(context);
  } catch (const CommandError& error) {
    if (error.code() != ExitCode::kUnreachable) throw;
    return error.what();
  }
  return {};
}

}  // namespace

void Delivery::Define(CLI::App& app) {
  app.add_option("--wait", wait_seconds_,
                 "Send now, and wait so long for the final status of every recipient")
      ->type_name("SECONDS")
      ->check(CLI::Range(1, std::numeric_limits<std::int32_t>::max()).description(""));
}

ExitCode Delivery::Perform(Context& context, const std::vector<QueuedMessage>& messages,
                           const std::string& says) const {
  if (wait_seconds_ == 0) return QueueOnly(context, messages, says);
  const std::string obstacle = ObstacleToSending(context);
  if (obstacle.empty()) return SendNow(context, messages);
  QueueOnly(context, messages, says);
  throw CommandError(ExitCode::kQueued,
                     "Queued, but not sent (the next `orvaloctl run` sends it): " + obstacle);
}

ExitCode Delivery::QueueOnly(Context& context, const std::vector<QueuedMessage>& messages,
                             const std::string& says) const {
  const std::vector<std::int32_t> ids = Queue(context, messages);
  if (context.json) {
    List(context, MessageFamily(context.program.GetDatabase(), ids).Rows());
  } else {
    for (const std::int32_t id : ids) context.out << says << ' ' << id << '\n';
  }
  return ExitCode::kDone;
}

// From the moment a message stands in the outbox no failure may look as if it did not: who then
// gave the command again would send it twice.
ExitCode Delivery::SendNow(Context& context, const std::vector<QueuedMessage>& messages) const {
  EngineSession session(context);
  const std::vector<std::int32_t> ids = Queue(context, messages);
  try {
    MessageFamily family(context.program.GetDatabase(), ids);
    session.Start();
    const EngineSession::Event end = SendWait(context, session, family, wait_seconds_).Run();
    session.Stop();
    if (end == EngineSession::Event::kOffline) StayOnline(context);
    const std::vector<MessageRow> rows = family.Rows();
    List(context, rows);
    if (end == EngineSession::Event::kOffline) context.errors.Line(LostGateway(context));
    if (end == EngineSession::Event::kStopWished) context.errors.Line("Interrupted");
    OutcomeTally tally;
    for (const MessageRow& row : rows) tally.Add(row);
    SayReasons(context, rows);
    tally.End(context.errors);
  } catch (const StoreError& error) {
    throw CommandError(
        ExitCode::kQueued,
        "Message " + std::to_string(ids.front()) +
            " stands in the outbox, but what became of it cannot be told: " + error.what());
  }
  return ExitCode::kDone;
}

}  // namespace orvalo::cli
