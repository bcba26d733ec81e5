#include "cli/outbox_commands.h"

#include <CLI/CLI.hpp>
#include <optional>
#include <ostream>

#include "app/startup/program.h"
#include "cli/message_listing.h"
#include "cli/table.h"
#include "messages/message_texts.h"
#include "messages/outbox_export.h"
#include "platform/collation.h"
#include "platform/terminal.h"

namespace orvalo::cli {

namespace {

// A status by its name, as it is shown or in English.
std::int32_t StatusByName(const SmsStatusNames& shown, const std::string& name) {
  const SmsStatusNames english;
  std::string known;
  for (std::int32_t status = 0; status < kSmsStatusCount; ++status) {
    if (platform::EqualNoCase(shown.Name(status), name) ||
        platform::EqualNoCase(english.Name(status), name))
      return status;
    known += (known.empty() ? "" : ", ") + shown.Name(status);
  }
  throw CommandError(ExitCode::kUsage, "There is no status " + name + ". There are: " + known);
}

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
  app.add_option("--status", status_, "Only the messages of this status, such as Pending")
      ->type_name("NAME");
  app.add_flag("--reasons", reasons_, "Also why messages were refused");
}

ExitCode OutboxListCommand::Execute(Context& context) {
  std::optional<std::int32_t> wanted;
  if (!status_.empty()) wanted = StatusByName(context.program.GetStatusNames(), status_);
  MessageListing listing(context, reasons_);
  context.program.GetDatabase().ForEachSms([&](const MessageRow& row) {
    if (!wanted || row.stat == *wanted) listing.Add(row);
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

OutboxDeleteCommand::OutboxDeleteCommand() : Command("delete", "Delete messages") {}

void OutboxDeleteCommand::Define(CLI::App& app) {
  app.add_option("ID", ids_, "The messages' ids")->required();
}

ExitCode OutboxDeleteCommand::Execute(Context& context) {
  SmsDatabase& database = context.program.GetDatabase();
  for (const std::int32_t id : ids_) MessageById(database, id);
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
  OutboxExport writer(database, fields, program.GetTexts(), program.GetMessageBoxes());
  const bool written = ids_.empty() ? writer.WriteAll(file_) : writer.WriteMessages(file_, ids_);
  if (!written) return ExitCode::kFailed;  // which was said
  if (context.json) PrintJson(context.out, {{"File", file_}});
  return ExitCode::kDone;
}

}  // namespace orvalo::cli
