#include "cli/addressbook_command.h"

#include <CLI/CLI.hpp>
#include <ostream>
#include <vector>

#include "app/startup/program.h"
#include "cli/error_output.h"
#include "cli/json_output.h"
#include "platform/terminal.h"

namespace orvalo::cli {

namespace {

constexpr char kLdap[] = "ldap";
constexpr char kVcard[] = "vcard";
constexpr std::size_t kIndent = 2;

// Folders by their names, what is in them indented; entries as the recipient tree labels them.
void PrintTree(std::ostream& out, const AddressTree& tree, AddressTree::NodeId folder) {
  for (const AddressTree::NodeId child : tree.Children(folder)) {
    out << std::string(kIndent * static_cast<std::size_t>(tree.Depth(folder)), ' ')
        << platform::PrintableLine(tree.Name(child));
    if (tree.IsFolder(child)) {
      out << '\n';
      PrintTree(out, tree, child);
    } else {
      out << " (" << platform::PrintableLine(tree.Number(child)) << ")\n";
    }
  }
}

// Every entry with the folders that lead to it.
void PrintEntries(JsonArray* list, const AddressTree& tree, AddressTree::NodeId folder,
                  std::vector<std::string>* path) {
  for (const AddressTree::NodeId child : tree.Children(folder)) {
    if (tree.IsFolder(child)) {
      path->push_back(tree.Name(child));
      PrintEntries(list, tree, child, path);
      path->pop_back();
    } else {
      list->Add({{"Folders", *path}, {"Name", tree.Name(child)}, {"Mobile", tree.Number(child)}});
    }
  }
}

}  // namespace

AddressBookCommand::AddressBookCommand()
    : Command("addressbook", "Show the address book outside: an LDAP directory, or vCard files") {}

void AddressBookCommand::Define(CLI::App& app) {
  app.add_option("--source", source_, "This one instead of the one that is set")
      ->check(CLI::IsMember({kLdap, kVcard}));
}

ExitCode AddressBookCommand::Execute(Context& context) {
  // A run that only looks never saves its settings.
  if (!source_.empty())
    context.program.GetSettings().SetFlag(FlagSetting::kMapiAddressBook, source_ == kLdap);
  ExternalAddressBook& book = context.program.GetExternalAddressBook();
  book.LoadExternalAddressBook(true);
  if (context.json) {
    JsonArray list(context.out);
    std::vector<std::string> path;
    PrintEntries(&list, book.tree(), AddressTree::kRoot, &path);
    list.End();
  } else {
    PrintTree(context.out, book.tree(), AddressTree::kRoot);
  }
  const std::vector<std::string> problems = book.Problems();
  for (const std::string& problem : problems) context.errors.Line(problem);
  return book.IsLoaded() && problems.empty() ? ExitCode::kDone : ExitCode::kFailed;
}

}  // namespace orvalo::cli
