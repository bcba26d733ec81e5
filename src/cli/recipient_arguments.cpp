#include "cli/recipient_arguments.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <set>
#include <string_view>

#include "cli/address_book.h"
#include "cli/command.h"
#include "store/sms_database.h"

namespace orvalo::cli {

namespace {

std::string_view Trimmed(std::string_view text) {
  const std::size_t first = std::min(text.find_first_not_of(" \t\r\n"), text.size());
  text.remove_prefix(first);
  return text.substr(0, text.find_last_not_of(" \t\r\n") + 1);
}

[[noreturn]] void ThrowNoRecipients(ExitCode code) {
  throw CommandError(code, "The message has no recipient: use --to, --contact or --group");
}

}  // namespace

void RecipientArguments::Define(CLI::App& app) {
  app.add_option("--to", number_lists_, "Mobile numbers, separated by commas; may be repeated")
      ->type_name("N[,N...]")
      ->allow_extra_args(false);
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

void RecipientArguments::Check() const {
  const std::vector<std::string> numbers = Numbers();
  for (const std::string& number : numbers) {
    if (!IsMobileNumber(number))
      throw CommandError(ExitCode::kUsage, number + " is no mobile number: 3 to 16 digits");
  }
  if (numbers.empty() && contacts_.empty() && groups_.empty()) ThrowNoRecipients(ExitCode::kUsage);
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
