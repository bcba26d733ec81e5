#include "cli/schedule_command.h"

#include <CLI/CLI.hpp>
#include <ostream>

#include "app/startup/program.h"
#include "cli/json_output.h"
#include "cli/message_listing.h"
#include "gateway/schedule_queue.h"

namespace orvalo::cli {

ScheduleCommand::ScheduleCommand() : Command("schedule", "Queue a message to be sent later") {}

void ScheduleCommand::Define(CLI::App& app) {
  recipients_.Define(app);
  content_.Define(app);
  schedule_.Define(app);
  app.add_flag("--preview", times_only_, "Only print the times; needs no message");
}

void ScheduleCommand::Check() const {
  schedule_.Check();
  if (times_only_) return;
  recipients_.Check(content_.ReadsInput());
  content_.Check();
}

ExitCode ScheduleCommand::Execute(Context& context) {
  Program& program = context.program;
  ScheduleDialog dialog(program.GetDataFile(), program.GetSettings(), program.GetTexts(),
                        program.GetClock());
  const Schedule plan = schedule_.Plan(dialog);
  if (times_only_) {
    PrintTimes(context, plan);
    return ExitCode::kDone;
  }
  QueuedMessage message;
  recipients_.ReadFile(context);
  recipients_.TellDoubles(context.errors);
  message.to = recipients_.RecipientString(program.GetDatabase());
  message.type = content_.type();
  message.sender_id = content_.sender();
  message.text = content_.Read(context);
  const auto ids = QueueOccurrences(
      program.GetDatabase(), plan, message,
      [&program](const QueuedMessage& queued) { return program.GetEngine().QueueMessage(queued); });
  MessageListing listing(context);
  for (const std::int32_t id : ids) {
    if (const auto row = program.GetDatabase().GetSms(id)) listing.Add(*row);
  }
  listing.End();
  return ExitCode::kDone;
}

void ScheduleCommand::PrintTimes(Context& context, const Schedule& plan) {
  if (!context.json) {
    for (const Occurrence& occurrence : plan.occurrences)
      context.out << MessageTimeText(context.program, occurrence.time) << '\n';
    return;
  }
  JsonArray list(context.out);
  for (const Occurrence& occurrence : plan.occurrences) list.Add({{"Time", occurrence.time}});
  list.End();
}

}  // namespace orvalo::cli
