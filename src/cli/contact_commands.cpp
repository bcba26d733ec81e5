#include "cli/contact_commands.h"

#include <CLI/CLI.hpp>
#include <optional>
#include <ostream>

#include "app/startup/program.h"
#include "cli/address_book.h"
#include "cli/json_output.h"
#include "cli/table.h"

namespace orvalo::cli {

namespace {

std::string Joined(const std::vector<std::string>& names) {
  std::string text;
  for (const std::string& name : names) text += (text.empty() ? "" : ", ") + name;
  return text;
}

// Contacts with their groups, as a table or as JSON.
void PrintContacts(const Context& context, const std::vector<ContactRow>& contacts) {
  SmsDatabase& database = context.program.GetDatabase();
  std::optional<Table> table;
  JsonArray list(context.out);
  if (!context.json) {
    table.emplace(context.out, std::vector<Table::Column>{{"CID", 6, true},
                                                          {"Name", 16},
                                                          {"Surname", 16},
                                                          {"Title", 5},
                                                          {"Custom", 12},
                                                          {"Mobile", 16},
                                                          {"Groups", 0}});
  }
  for (const ContactRow& contact : contacts) {
    const auto groups = GroupNamesOf(database, contact.cid);
    if (table) {
      table->Add({std::to_string(contact.cid), contact.name, contact.surname, contact.title,
                  contact.custom, contact.mobile, Joined(groups)});
    } else {
      list.Add(ContactJson(contact, groups));
    }
  }
  if (context.json) list.End();
}

void PrintContact(const Context& context, std::int32_t cid) {
  const ContactRecord record = ContactById(context.program.GetDatabase(), cid);
  PrintContacts(context,
                {{cid, record.name, record.surname, record.title, record.custom, record.mobile}});
}

}  // namespace

ContactAddCommand::ContactAddCommand() : Command("add", "Add a contact") {}

ExitCode ContactAddCommand::Execute(Context& context) {
  SmsDatabase& database = context.program.GetDatabase();
  ContactRecord contact;
  arguments_.ApplyTo(&contact, database);
  PrintContact(context, database.AddContact(contact));
  return ExitCode::kDone;
}

ContactListCommand::ContactListCommand() : Command("list", "List the contacts") {}

void ContactListCommand::Define(CLI::App& app) {
  app.add_option("--group", group_, "Only the members of this group")->type_name("NAME");
}

ExitCode ContactListCommand::Execute(Context& context) {
  SmsDatabase& database = context.program.GetDatabase();
  const std::int32_t gid = group_.empty() ? kAllContacts : GroupByName(database, group_).gid;
  PrintContacts(context, ContactsIn(database, gid));
  return ExitCode::kDone;
}

ContactShowCommand::ContactShowCommand() : Command("show", "Show one contact") {}

void ContactShowCommand::Define(CLI::App& app) {
  app.add_option("CID", cid_, "The contact's id")->required();
}

ExitCode ContactShowCommand::Execute(Context& context) {
  PrintContact(context, cid_);
  return ExitCode::kDone;
}

ContactEditCommand::ContactEditCommand()
    : Command("edit", "Change a contact; groups replace its present ones") {}

void ContactEditCommand::Define(CLI::App& app) {
  app.add_option("CID", cid_, "The contact's id")->required();
  arguments_.Define(app, false);
}

ExitCode ContactEditCommand::Execute(Context& context) {
  SmsDatabase& database = context.program.GetDatabase();
  ContactRecord contact = ContactById(database, cid_);
  contact.group_ids = database.GroupsOf(cid_);
  arguments_.ApplyTo(&contact, database);
  database.UpdateContact(cid_, contact);
  PrintContact(context, cid_);
  return ExitCode::kDone;
}

ContactDeleteCommand::ContactDeleteCommand()
    : Command("delete", "Delete contacts, or take them out of a group") {}

void ContactDeleteCommand::Define(CLI::App& app) {
  app.add_option("CID", cids_, "The contacts' ids")->required();
  app.add_option("--group", group_, "Take them out of this group only")->type_name("NAME");
}

ExitCode ContactDeleteCommand::Execute(Context& context) {
  SmsDatabase& database = context.program.GetDatabase();
  const bool everywhere = group_.empty();
  const std::int32_t gid = everywhere ? 0 : OwnGroupByName(database, group_).gid;
  for (const std::int32_t cid : cids_) {
    ContactById(database, cid);
    if (!everywhere && !database.IsMember(cid, gid)) {
      throw CommandError(ExitCode::kFailed,
                         "Contact " + std::to_string(cid) + " is not in the group " + group_);
    }
  }
  SmsDatabase::Transaction transaction(database);
  for (const std::int32_t cid : cids_) database.DeleteContact(cid, everywhere, gid);
  transaction.Commit();
  PrintIds(context, "CID", cids_);
  return ExitCode::kDone;
}

}  // namespace orvalo::cli
