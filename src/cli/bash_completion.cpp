#include "cli/bash_completion.h"

#include <CLI/CLI.hpp>
#include <map>
#include <set>

namespace orvalo::cli {

namespace {

// What follows an option is one of these.
const std::map<std::string, std::string> kWords{
    {"--type", "text flash unicode vcard vcal"},
    {"--separator", "comma semicolon tab"},
    {"--quotes", "refuse enclose literal"},
    {"--source", "ldap vcard"},
    {"--on", "Mon Tue Wed Thu Fri Sat Sun"},
    {"--status",
     "Pending Queued Failed Sent Scheduled Editing Delivered Processing Unknown Expanded"}};

constexpr char kHead[] = R"(_orvaloctl() {
  local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD-1]}
  local command= words= files= word i
  for ((i = 1; i < COMP_CWORD; ++i)); do
    word=${COMP_WORDS[i]}
    case $word in
      )";
constexpr char kTail[] = R"(  esac
  COMPREPLY=($(compgen -W "$words" -- "$current"))
  if [[ $files && $current != -* ]]; then
    compopt -o filenames 2>/dev/null
    COMPREPLY+=($(compgen -f -- "$current"))
  fi
}
complete -F _orvaloctl orvaloctl
)";

bool IsFile(const CLI::Option& option) {
  const std::string type = option.get_type_name();
  return type == "F" || type == "FILE" || option.get_name(true) == "FILE";
}

void Join(std::string* text, const std::string& word, const char* between) {
  *text += (text->empty() ? "" : between) + word;
}

// What the script is made of.
struct Parts {
  std::set<std::string> with_value, of_file, of_folder;
  std::string commands;  // patterns "parent command"
  std::string words;     // a case of the script for each command
};

void Collect(const CLI::App& app, const std::string& path, const std::string& outer, Parts* parts) {
  std::string words, options = outer;
  bool files = false;
  for (const CLI::Option* option : app.get_options()) {
    files = files || (option->get_positional() && IsFile(*option));
    for (const std::string& name : option->get_lnames()) {
      Join(&options, "--" + name, " ");
      if (option->get_items_expected_max() == 0) continue;
      parts->with_value.insert("--" + name);
      if (IsFile(*option)) parts->of_file.insert("--" + name);
      if (option->get_type_name() == "DIR") parts->of_folder.insert("--" + name);
    }
  }
  for (const CLI::App* child : app.get_subcommands(nullptr)) {
    Join(&words, child->get_name(), " ");
    Join(&parts->commands, "\"" + path + " " + child->get_name() + "\"", "|");
    const std::string below = path.empty() ? child->get_name() : path + " " + child->get_name();
    Collect(*child, below, path.empty() ? options : outer, parts);
  }
  Join(&words, options, " ");
  parts->words +=
      "    \"" + path + "\") words=\"" + words + "\"" + (files ? " files=1" : "") + " ;;\n";
}

std::string Alternatives(const std::set<std::string>& names) {
  std::string text;
  for (const std::string& name : names) Join(&text, name, "|");
  return text;
}

}  // namespace

std::string BashCompletion(const CLI::App& app) {
  Parts parts;
  Collect(app, "", "", &parts);
  std::string script =
      kHead + Alternatives(parts.with_value) + ") ((++i)); continue ;;\n    esac\n";
  script += "    case \"$command $word\" in\n      " + parts.commands +
            ") command=${command:+$command }$word ;;\n    esac\n  done\n  case $previous in\n";
  for (const auto& [name, words] : kWords) {
    script += "    " + name + ") COMPREPLY=($(compgen -W \"" + words +
              "\" -- \"$current\")); return ;;\n";
  }
  script += "    " + Alternatives(parts.of_folder) +
            ") COMPREPLY=($(compgen -d -- \"$current\")); return ;;\n";
  script += "    " + Alternatives(parts.of_file) +
            ") COMPREPLY=($(compgen -f -- \"$current\")); return ;;\n";
  script += "    " + Alternatives(parts.with_value) + ") return ;;\n  esac\n  case $command in\n";
  return script + parts.words + kTail;
}

}  // namespace orvalo::cli
