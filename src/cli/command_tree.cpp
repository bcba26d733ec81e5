#include "cli/command_tree.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <utility>

#include "cli/account_commands.h"
#include "cli/addressbook_command.h"
#include "cli/contact_commands.h"
#include "cli/group_commands.h"
#include "cli/init_command.h"
#include "cli/outbox_commands.h"
#include "cli/query_command.h"
#include "cli/run_command.h"
#include "cli/schedule_command.h"
#include "cli/send_command.h"
#include "cli/settings_command.h"
#include "cli/stop_command.h"
#include "cli/transfer_commands.h"
#include "cli/verify_command.h"

namespace orvalo::cli {

CommandTree::CommandTree(CLI::App& root) {
  root.require_subcommand(1);
  Add(root, std::make_unique<InitCommand>());
  Add(root, std::make_unique<LoginCommand>());
  Add(root, std::make_unique<BalanceCommand>());
  Add(root, std::make_unique<VoucherCommand>());
  Add(root, std::make_unique<AccountPageCommand>());
  Add(root, std::make_unique<RecoverCommand>());
  Add(root, std::make_unique<SendCommand>());
  Add(root, std::make_unique<ScheduleCommand>());
  CLI::App& outbox = Add(root, std::make_unique<OutboxListCommand>());
  outbox.require_subcommand(0, 1);
  Add(outbox, std::make_unique<OutboxShowCommand>());
  Add(outbox, std::make_unique<OutboxResendCommand>());
  Add(outbox, std::make_unique<OutboxStopCommand>());
  Add(outbox, std::make_unique<OutboxDeleteCommand>());
  Add(outbox, std::make_unique<OutboxExportCommand>());
  Add(root, std::make_unique<QueryCommand>());
  Add(root, std::make_unique<RunCommand>());
  Add(root, std::make_unique<VerifyCommand>());
  CLI::App& groups = AddFamily(root, "group", "The groups of the address book");
  Add(groups, std::make_unique<GroupAddCommand>());
  Add(groups, std::make_unique<GroupListCommand>());
  Add(groups, std::make_unique<GroupRenameCommand>());
  Add(groups, std::make_unique<GroupDeleteCommand>());
  CLI::App& contacts = AddFamily(root, "contact", "The contacts of the address book");
  Add(contacts, std::make_unique<ContactAddCommand>());
  Add(contacts, std::make_unique<ContactListCommand>());
  Add(contacts, std::make_unique<ContactShowCommand>());
  Add(contacts, std::make_unique<ContactEditCommand>());
  Add(contacts, std::make_unique<ContactDeleteCommand>());
  Add(root, std::make_unique<ImportCommand>());
  Add(root, std::make_unique<ExportCommand>());
  Add(root, std::make_unique<AddressBookCommand>());
  Add(root, std::make_unique<SettingsCommand>());
}

CommandTree::~CommandTree() = default;

Command* CommandTree::Chosen() const {
  const auto chosen = std::find_if(entries_.rbegin(), entries_.rend(),
                                   [](const Entry& entry) { return entry.app->parsed(); });
  return chosen == entries_.rend() ? nullptr : chosen->command.get();
}

void CommandTree::CheckOptions() const {
  const Command* const chosen = Chosen();
  for (const Entry& entry : entries_) {
    if (entry.command.get() == chosen) continue;
    for (const CLI::Option* option : entry.app->get_options()) {
      if (option->count() == 0) continue;
      throw CLI::ValidationError(option->get_name() + " does not go with " + chosen->name());
    }
  }
}

CLI::App& CommandTree::Add(CLI::App& parent, std::unique_ptr<Command> command) {
  CLI::App* app = parent.add_subcommand(command->name(), command->description());
  app->fallthrough();  // the options of every command may also stand behind it
  command->Define(*app);
  entries_.push_back({app, std::move(command)});
  return *app;
}

CLI::App& CommandTree::AddFamily(CLI::App& parent, const std::string& name,
                                 const std::string& description) {
  CLI::App* app = parent.add_subcommand(name, description);
  app->fallthrough();
  app->require_subcommand(1);
  return *app;
}

}  // namespace orvalo::cli
