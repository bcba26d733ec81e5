#include "cli/recipient_arguments.h"

#include <CLI/CLI.hpp>
#include <set>

#include "cli/address_book.h"
#include "cli/command.h"
#include "cli/error_output.h"
#include "cli/input_file.h"
#include "cli/outcome_tally.h"
#include "store/sms_database.h"

namespace orvalo::cli {

namespace {

constexpr std::uint64_t kLargestList = 64u << 20;  // bytes
constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";

[[noreturn]] void ThrowNoRecipients(ExitCode code) {
  throw CommandError(code,
                     "The message has no recipient: use --to, --to-file, --contact or --group");
}

}  // namespace

void RecipientArguments::Define(CLI::App& app) {
  app.add_option("--to", number_lists_,
                 "Mobile numbers, separated by commas, semicolons, tabs or line ends; may be "
                 "repeated")
      ->type_name("N[,N...]")
      ->allow_extra_args(false);
  app.add_option("--to-file", to_file_,
                 "File with mobile numbers, separated by line ends, commas, semicolons or tabs; "
                 "\"-\": the standard input")
      ->type_name("F");
  app.add_option("--contact", contacts_, "A contact's id; may be repeated")
      ->type_name("CID")
      ->allow_extra_args(false);
  app.add_option("--group", groups_, "All members of a group; may be repeated")
      ->type_name("NAME")
      ->allow_extra_args(false);
}

PastedNumbers RecipientArguments::Numbers() const {
  std::string all;
  for (const std::string& list : number_lists_) all.append(list).append("\n");
  return ReadPastedNumbers(all);
}

void RecipientArguments::Check(bool input_taken) const {
  if (input_taken && to_file_ == kStandardInput)
    throw CommandError(ExitCode::kUsage, "The standard input is either the numbers or the text");
  const PastedNumbers numbers = Numbers();
  if (numbers.left_out > 0) {
    std::string message = numbers.first_left_out + " is no mobile number: 3 to 16 digits";
    if (numbers.left_out > 1)
      message += " (and " + std::to_string(numbers.left_out - 1) + " more like it in --to)";
    throw CommandError(ExitCode::kUsage, message);
  }
  if (numbers.numbers.empty() && to_file_.empty() && contacts_.empty() && groups_.empty())
    ThrowNoRecipients(ExitCode::kUsage);
}

void RecipientArguments::ReadFile(Context& context) {
  if (to_file_.empty()) return;
  std::string text = ReadInput(context, to_file_, kLargestList);
  if (text.starts_with(kUtf8Mark)) text.erase(0, kUtf8Mark.size());
  from_file_ = ReadPastedNumbers(text, Numbers().numbers);
  if (from_file_.left_out > 0) {
    context.errors.Line("Left out as no mobile numbers: " + Counted(from_file_.left_out, "item") +
                        ", the first of them \"" + from_file_.first_left_out + "\"");
  }
}

void RecipientArguments::TellDoubles(ErrorOutput& errors) const {
  const PastedNumbers numbers = Numbers();
  const std::size_t doubled = numbers.doubled + from_file_.doubled;
  if (doubled == 0) return;
  const std::string& first = numbers.doubled > 0 ? numbers.first_doubled : from_file_.first_doubled;
  errors.Line("Given more than once, and written to once: " + first +
              (doubled > 1 ? " and others (" + std::to_string(doubled) + " doubles)" : ""));
}

std::string RecipientArguments::RecipientString(SmsDatabase& database) const {
  std::string recipients;
  for (const std::string& number : Numbers().numbers) recipients += "," + number;
  for (const std::string& number : from_file_.numbers) recipients += "," + number;
  std::set<std::int32_t> contacts;
  for (const std::int32_t cid : contacts_) {
    ContactById(database, cid);
    contacts.insert(cid);
  }
  for (const std::string& name : groups_) {
    for (const ContactRow& member : ContactsIn(database, GroupByName(database, name).gid))
      contacts.insert(member.cid);
  }
  for (const std::int32_t cid : contacts) recipients += ",A" + std::to_string(cid);
  if (recipients.empty()) ThrowNoRecipients(ExitCode::kNothing);
  return recipients;
}

}  // namespace orvalo::cli
