#include "cli/recipient_arguments.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <set>
#include <string_view>

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
constexpr std::size_t kNowhere = std::string_view::npos;

std::string_view Trimmed(std::string_view text) {
  const std::size_t first = std::min(text.find_first_not_of(" \t\r\n"), text.size());
  text.remove_prefix(first);
  return text.substr(0, text.find_last_not_of(" \t\r\n") + 1);
}

[[noreturn]] void ThrowNoRecipients(ExitCode code) {
  throw CommandError(code,
                     "The message has no recipient: use --to, --to-file, --contact or --group");
}

}  // namespace

void RecipientArguments::Define(CLI::App& app) {
  app.add_option("--to", number_lists_, "Mobile numbers, separated by commas; may be repeated")
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

std::vector<std::string> RecipientArguments::Numbers() const {
  std::vector<std::string> numbers;
  for (std::string_view list : number_lists_) {
    while (!list.empty()) {
      const std::string_view item = list.substr(0, list.find(','));
      list.remove_prefix(std::min(item.size() + 1, list.size()));
      if (const std::string_view number = Trimmed(item); !number.empty())
        numbers.emplace_back(number);
    }
  }
  return numbers;
}

void RecipientArguments::Check(bool input_taken) const {
  if (input_taken && to_file_ == kStandardInput)
    throw CommandError(ExitCode::kUsage, "The standard input is either the numbers or the text");
  const std::vector<std::string> numbers = Numbers();
  for (const std::string& number : numbers) {
    if (!IsMobileNumber(number))
      throw CommandError(ExitCode::kUsage, number + " is no mobile number: 3 to 16 digits");
  }
  if (numbers.empty() && to_file_.empty() && contacts_.empty() && groups_.empty())
    ThrowNoRecipients(ExitCode::kUsage);
}

void RecipientArguments::ReadFile(Context& context) {
  if (to_file_.empty()) return;
  std::string text = ReadInput(context, to_file_, kLargestList);
  if (text.starts_with(kUtf8Mark)) text.erase(0, kUtf8Mark.size());
  std::size_t left_out = 0;
  std::string first;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = std::min(text.find_first_of(",;\t\r\n", at), text.size());
    const std::string item(Trimmed(std::string_view(text).substr(at, end - at)));
    at = end + 1;
    std::string number = item;
    std::erase_if(number, [](char c) { return std::string_view(" ()-.").find(c) != kNowhere; });
    if (IsMobileNumber(number)) {
      number_lists_.push_back(std::move(number));
    } else if (!item.empty() && left_out++ == 0) {
      first = item;
    }
  }
  if (left_out > 0)
    context.errors.Line("Left out as no mobile numbers: " + Counted(left_out, "item") +
                        ", the first of them \"" + first + "\"");
}

std::string RecipientArguments::RecipientString(SmsDatabase& database) const {
  std::string recipients;
  for (const std::string& number : Numbers()) recipients += "," + number;
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
