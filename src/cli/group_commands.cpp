#include "cli/group_commands.h"

#include <CLI/CLI.hpp>
#include <optional>
#include <ostream>
#include <vector>

#include "app/startup/program.h"
#include "cli/address_book.h"
#include "cli/json_output.h"
#include "cli/table.h"
#include "platform/code_page.h"
#include "platform/collation.h"
#include "platform/terminal.h"

namespace orvalo::cli {

namespace {

constexpr std::size_t kLongestGroupName = 21;  // characters

void CheckGroupName(const std::string& name) {
  if (name.find_first_not_of(' ') == std::string::npos)
    throw CommandError(ExitCode::kUsage, "The group's name is empty");
  if (platform::CountCharacters(name) > kLongestGroupName) {
    throw CommandError(ExitCode::kUsage, "A group's name has at most " +
                                             std::to_string(kLongestGroupName) + " characters");
  }
}

// Groups are looked up by their names, so no two may share one. `gid` is left out of the search.
void RequireFreeName(SmsDatabase& database, const std::string& name, std::int32_t gid) {
  for (const GroupRow& group : database.AllGroups()) {
    if (group.gid != gid && platform::EqualNoCase(group.name, name))
      throw CommandError(ExitCode::kFailed, "There is a group " + group.name + " already");
  }
}

void PrintGroup(const Context& context, const GroupRow& group, std::int32_t members,
                const char* what) {
  if (context.json) {
    JsonArray list(context.out);
    list.Add(GroupJson(group, members));
    list.End();
  } else {
    context.out << what << " group " << group.gid << ": " << platform::PrintableLine(group.name)
                << '\n';
  }
}

}  // namespace

GroupAddCommand::GroupAddCommand() : Command("add", "Add a group") {}

void GroupAddCommand::Define(CLI::App& app) {
  app.add_option("NAME", name_, "The new group's name")->required();
}

void GroupAddCommand::Check() const { CheckGroupName(name_); }

ExitCode GroupAddCommand::Execute(Context& context) {
  SmsDatabase& database = context.program.GetDatabase();
  RequireFreeName(database, name_, 0);
  PrintGroup(context, database.AddGroup(name_), 0, "Added");
  return ExitCode::kDone;
}

GroupListCommand::GroupListCommand() : Command("list", "List the groups") {}

ExitCode GroupListCommand::Execute(Context& context) {
  SmsDatabase& database = context.program.GetDatabase();
  std::optional<Table> table;
  JsonArray list(context.out);
  if (!context.json)
    table.emplace(context.out,
                  std::vector<Table::Column>{{"GID", 6, true}, {"Name", 24}, {"Members", 7, true}});
  for (const GroupRow& group : database.AllGroups()) {
    const auto members = group.gid == kAllContacts
                             ? static_cast<std::int32_t>(database.AllContacts().size())
                             : database.MemberCount(group.gid);
    if (table) {
      table->Add({std::to_string(group.gid), group.name, std::to_string(members)});
    } else {
      list.Add(GroupJson(group, members));
    }
  }
  if (context.json) list.End();
  return ExitCode::kDone;
}

GroupRenameCommand::GroupRenameCommand() : Command("rename", "Rename a group") {}

void GroupRenameCommand::Define(CLI::App& app) {
  app.add_option("NAME", name_, "The group's name")->required();
  app.add_option("NEW", new_name_, "Its new name")->required();
}

void GroupRenameCommand::Check() const { CheckGroupName(new_name_); }

ExitCode GroupRenameCommand::Execute(Context& context) {
  SmsDatabase& database = context.program.GetDatabase();
  GroupRow group = OwnGroupByName(database, name_);
  RequireFreeName(database, new_name_, group.gid);
  database.RenameGroup(group.gid, new_name_);
  group.name = new_name_;
  PrintGroup(context, group, database.MemberCount(group.gid), "Renamed");
  return ExitCode::kDone;
}

GroupDeleteCommand::GroupDeleteCommand()
    : Command("delete", "Delete a group and the contacts that are in no other") {}

void GroupDeleteCommand::Define(CLI::App& app) {
  app.add_option("NAME", name_, "The group's name")->required();
}

ExitCode GroupDeleteCommand::Execute(Context& context) {
  SmsDatabase& database = context.program.GetDatabase();
  const GroupRow group = OwnGroupByName(database, name_);
  const std::int32_t members = database.MemberCount(group.gid);
  database.DeleteGroup(group.gid);
  PrintGroup(context, group, members, "Deleted");
  return ExitCode::kDone;
}

}  // namespace orvalo::cli
