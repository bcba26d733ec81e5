#include "cli/outbox_commands.h"

#include <CLI/CLI.hpp>
#include <ostream>

#include "app/startup/program.h"
#include "cli/content_arguments.h"
#include "cli/message_listing.h"
#include "cli/table.h"
#include "gateway/recipients.h"
#include "messages/message_texts.h"
#include "messages/outbox_export.h"
#include "platform/terminal.h"

namespace orvalo::cli {

namespace {

MessageRow MessageById(SmsDatabase& database, std::int32_t id) {
  if (auto row = database.GetSms(id)) return *row;
  throw CommandError(ExitCode::kFailed, "There is no message " + std::to_string(id));
}

std::string DetailText(const Json& value) {
  return platform::PrintableLine(value.is_string() ? value.get<std::string>() : value.dump());
}

}  // namespace

OutboxListCommand::OutboxListCommand() : Command("outbox", "List the messages, or act on some") {}

void OutboxListCommand::Define(CLI::App& app) {
  filter_.Define(app);
  app.add_flag("--reasons", reasons_, "Also why messages were refused");
}

ExitCode OutboxListCommand::Execute(Context& context) {
  MessageListing listing(context, reasons_);
  filter_.ForEach(context.program, [&](const MessageRow& row) {
    listing.Add(row);
    return context.out.good();
  });
  listing.End();
  return ExitCode::kDone;
}

OutboxShowCommand::OutboxShowCommand() : Command("show", "Show everything about one message") {}

void OutboxShowCommand::Define(CLI::App& app) {
  app.add_option("ID", id_, "The message's id")->required();
}

ExitCode OutboxShowCommand::Execute(Context& context) {
  const MessageRow row = MessageById(context.program.GetDatabase(), id_);
  const Json details = MessageJson(context.program, row);
  if (context.json) {
    JsonArray list(context.out);
    list.Add(details);
    list.End();
    return ExitCode::kDone;
  }
  for (const auto& [key, value] : details.items()) {
    context.out << key << ": " << DetailText(value);
    if (key == "Time") context.out << " (" << MessageTimeText(context.program, row.time) << ")";
    context.out << '\n';
  }
  return ExitCode::kDone;
}

OutboxResendCommand::OutboxResendCommand()
    : Command("resend", "Queue messages again, to all their recipients; with --wait send them") {}

void OutboxResendCommand::Define(CLI::App& app) {
  app.add_option("ID", ids_, "The messages' ids")->required();
  app.add_option_function<std::string>(
         "--sender", [this](const std::string& sender) { sender_ = sender; },
         "Another sender than the messages had")
      ->type_name("ID");
  delivery_.Define(app);
}

void OutboxResendCommand::Check() const { CheckSender(sender_.value_or("")); }

ExitCode OutboxResendCommand::Execute(Context& context) {
  std::vector<QueuedMessage> messages;
  for (const std::int32_t id : ids_) messages.push_back(CopyOf(context, id));
  return delivery_.Perform(context, messages, "Queued message");
}

QueuedMessage OutboxResendCommand::CopyOf(Context& context, std::int32_t id) const {
  SmsDatabase& database = context.program.GetDatabase();
  const MessageRow row = MessageById(database, id);
  const std::string name = "Message " + std::to_string(id);
  const auto status = static_cast<SmsStatus>(row.stat);
  if (status == SmsStatus::kEditing || status == SmsStatus::kProcessing)
    throw CommandError(ExitCode::kFailed, name + " is being edited or sent");
  const std::string prefix = context.program.GetSettings().Text(TextSetting::kPrefix);
  if (ExpandRecipients(row.to, prefix, database).empty())
    throw CommandError(ExitCode::kNothing,
                       "The contacts of message " + std::to_string(id) + " are no longer there");
  QueuedMessage message;
  message.type = row.type;
  message.to = row.to.starts_with(',') ? row.to : "," + row.to;
  message.text = row.msg;
  message.sender_id = sender_ ? *sender_ : row.sender_id;
  return message;
}

OutboxDeleteCommand::OutboxDeleteCommand() : Command("delete", "Delete messages") {}

void OutboxDeleteCommand::Define(CLI::App& app) {
  app.add_option("ID", ids_, "The messages' ids")->required();
}

ExitCode OutboxDeleteCommand::Execute(Context& context) {
  SmsDatabase& database = context.program.GetDatabase();
  for (const std::int32_t id : ids_) {
    if (MessageById(database, id).stat == static_cast<std::int32_t>(SmsStatus::kProcessing)) {
      const std::string number = std::to_string(id);
      throw CommandError(ExitCode::kFailed, "Message " + number +
                                                " is on its way: `orvaloctl outbox stop " + number +
                                                "` stops it.  Nothing was deleted");
    }
  }
  SmsDatabase::Transaction transaction(database);
  for (const std::int32_t id : ids_) database.DeleteSms(id);
  transaction.Commit();
  PrintIds(context, "ID", ids_);
  return ExitCode::kDone;
}

OutboxExportCommand::OutboxExportCommand()
    : Command("export", "Write messages to a tab-separated text file") {}

void OutboxExportCommand::Define(CLI::App& app) {
  app.add_option("FILE", file_, "The file; it is replaced")->required();
  app.add_option("ID", ids_, "The messages' ids, in the order wanted; none: all messages");
}

ExitCode OutboxExportCommand::Execute(Context& context) {
  Program& program = context.program;
  SmsDatabase& database = program.GetDatabase();
  for (const std::int32_t id : ids_) MessageById(database, id);
  const MessageTexts fields(database, program.GetSettings(), program.GetTexts(),
                            program.GetStatusNames(), program.GetTypeNames(), program.GetClock());
  OutboxExport writer(database, fields, program.GetTexts(), program.GetMessageBoxes(),
                      program.GetExportPlaces());
  const bool written = ids_.empty() ? writer.WriteAll(file_) : writer.WriteMessages(file_, ids_);
  if (!written) return ExitCode::kFailed;  // which was said
  if (context.json) PrintJson(context.out, {{"File", file_}});
  return ExitCode::kDone;
}

}  // namespace orvalo::cli
