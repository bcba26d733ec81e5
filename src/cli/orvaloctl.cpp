#include "cli/orvaloctl.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <filesystem>
#include <ostream>
#include <utility>

#include "app/startup/data_folder.h"
#include "app/startup/program.h"
#include "cli/bash_completion.h"
#include "cli/command.h"
#include "cli/command_tree.h"
#include "cli/console_boxes.h"
#include "cli/error_output.h"
#include "cli/json_output.h"
#include "platform/file.h"
#include "store/store_error.h"

namespace orvalo::cli {

namespace {

constexpr char kDescription[] = "Orvalo without a window: sends short messages and keeps an outbox";
constexpr char kFolderFooter[] =
    "The data folder is --data DIR, or the environment variable ORVALO_DATA_PATH, or the machine's "
    "configuration.\n\nExit status:\n";

constexpr char kCompletionName[] = "Success";  // the parser's name for it

constexpr char kDamagedSettings[] =
    "Nothing was done: messages might go out in the wrong way. See `orvaloctl settings`, mend them "
    "with `orvaloctl settings KEY VALUE`, then repeat the command";

struct GlobalArguments {
  std::string data_folder;
  bool json = false;
  bool quiet = false;
};

std::string Footer() {
  std::string text = kFolderFooter;
  for (const ExitMeaning& end : ExitMeanings()) {
    const std::string value = std::to_string(static_cast<int>(end.code));
    text += std::string(4 - value.size(), ' ') + value + "  " + std::string(end.meaning) + "\n";
  }
  text.pop_back();
  return text;
}

void DefineGlobal(CLI::App& app, GlobalArguments* arguments) {
  app.description(kDescription);
  app.footer(Footer());
  app.add_option("--data", arguments->data_folder, "The data folder")->type_name("DIR");
  app.add_flag("--json", arguments->json, "Print results and errors as JSON");
  app.add_flag("-q,--quiet", arguments->quiet,
               "Print nothing but errors and what was asked to be shown");
  app.set_version_flag("--version", std::string("orvaloctl ") + ORVALO_VERSION);
  app.add_flag_callback(
      "--bash-completion", [] { throw CLI::Success("", CLI::ExitCodes::Success); },
      "Print a script that completes the command line in bash, and exit");
}

// The folder's full path, with what the command expects in it. A mistyped name must never become a
// new database.
std::string PreparedFolder(const GlobalArguments& arguments, Access access) {
  std::string folder = arguments.data_folder, problem;
  if (folder.empty()) folder = ConfiguredFolder(Texts(), &problem);
  if (!problem.empty()) throw CommandError(ExitCode::kFailed, problem);
  if (folder.empty()) {
    throw CommandError(ExitCode::kFailed,
                       "No data folder is known: name it with --data or ORVALO_DATA_PATH");
  }
  folder = std::filesystem::absolute(folder).lexically_normal().string();
  if (IsTooLong(folder, Texts(), &problem)) throw CommandError(ExitCode::kFailed, problem);
  if (access == Access::kMake) {
    if (!platform::MakeFolder(folder))
      throw CommandError(ExitCode::kFailed, "The folder " + folder + " cannot be made");
  } else if (!platform::FileSize(folder + "/SMS.db")) {
    throw CommandError(ExitCode::kFailed, folder +
                                              " is no data folder (it has no SMS.db): make one "
                                              "with `orvaloctl init`");
  }
  return folder;
}

Program::Options ProgramOptions(const std::string& folder, Access access) {
  Program::Options options;
  options.data_folder = folder;
  options.look_only = access == Access::kLook;
  options.with_gateway = access == Access::kGateway;
  options.test_connection = false;    // the login reports what the test would find
  options.enter_data_folder = false;  // paths on the command line are the operator's
  options.sound_settings_only = access == Access::kGateway;  // nobody may be there to be warned
  return options;
}

// Takes what is printed when nothing is to be.
class NoOutput : public std::ostream {
 public:
  NoOutput() : std::ostream(nullptr) {}
};

// How a run ends, and what is said about it.
struct Ending {
  ExitCode code = ExitCode::kDone;
  std::string reason;
};

Ending ExecuteReported(Command& command, Context& context) {
  try {
    return {command.Execute(context), {}};
  } catch (const CommandError& error) {
    return {error.code(), error.what()};
  } catch (const StoreError& error) {
    return {ExitCode::kFailed, error.what()};
  }
}

Ending EndingOf(const Program::Result& result, Ending of_command) {
  switch (result.end) {
    case Program::End::kRan:
      if (of_command.code == ExitCode::kDone && !result.settings_saved)
        of_command.code = ExitCode::kFailed;  // a box has told it
      return of_command;
    case Program::End::kInUse:
      return {ExitCode::kInUse, "Another program is using this data folder"};
    case Program::End::kNoGateway:
    case Program::End::kNoDataFolder:
      break;
    case Program::End::kDamagedSettings:
      return {ExitCode::kFailed, kDamagedSettings};
    case Program::End::kNoLock:
    case Program::End::kNoSettings:
    case Program::End::kNoDatabase:
      return {ExitCode::kFailed, {}};  // its box has told it
    case Program::End::kUnexpected:
      break;
  }
  return {ExitCode::kFailed, result.reason};
}

Ending Perform(Command& command, const GlobalArguments& arguments, const Console& console,
               ErrorOutput& errors, const platform::ClassRegistry& registry,
               platform::Clock& clock) {
  std::string folder;
  try {
    command.Check();
    folder = PreparedFolder(arguments, command.AccessNeeded());
  } catch (const CommandError& error) {
    return {error.code(), error.what()};
  }
  NoOutput nowhere;
  std::ostream& out = arguments.quiet && !command.Answers() ? nowhere : console.out;
  ConsoleBoxes boxes(errors);
  Program program(boxes, clock, registry);
  Ending ending;
  const Program::Result result =
      program.Run(ProgramOptions(folder, command.AccessNeeded()), [&](Program& running) {
        Context context{running, console.in, out, errors, arguments.json, console.in_is_terminal};
        ending = ExecuteReported(command, context);
        return static_cast<int>(ending.code);
      });
  return EndingOf(result, std::move(ending));
}

// What the parser ended with instead of a command: help and version, or wrong usage.
int EndWithoutCommand(const CLI::App& app, const CLI::ParseError& error, bool json,
                      const Console& console) {
  const bool asked_for = error.get_exit_code() == 0;
  if (error.get_name() == kCompletionName) {
    console.out << BashCompletion(app);
    return 0;
  }
  if (!json || (asked_for && error.get_name() != "CallForVersion")) {
    app.exit(error, console.out, console.err);
  } else if (asked_for) {
    PrintJson(console.out, {{"Program", "orvaloctl"}, {"Version", ORVALO_VERSION}});
  } else {
    ErrorOutput(console.err, {.json = true}).End(ExitCode::kUsage, error.what());
  }
  return static_cast<int>(asked_for ? ExitCode::kDone : ExitCode::kUsage);
}

}  // namespace

int RunOrvaloctl(const std::vector<std::string>& args, const Console& console,
                 const platform::ClassRegistry& registry, platform::Clock& clock) {
  GlobalArguments arguments;
  CLI::App app("", "orvaloctl");
  DefineGlobal(app, &arguments);
  CommandTree commands(app);
  const bool json = std::find(args.begin(), args.end(), "--json") != args.end();
  try {
    app.parse(std::vector<std::string>(args.rbegin(), args.rend()));
    commands.CheckOptions();
  } catch (const CLI::ParseError& error) {
    return EndWithoutCommand(app, error, json, console);
  }
  ErrorOutput errors(console.err, {console.err_is_terminal, arguments.quiet, arguments.json});
  Ending ending = Perform(*commands.Chosen(), arguments, console, errors, registry, clock);
  console.out.flush();
  if (!console.out && ending.code == ExitCode::kDone)
    ending = {ExitCode::kNotWritten, "The results cannot be written"};
  errors.End(ending.code, ending.reason);
  return static_cast<int>(ending.code);
}

}  // namespace orvalo::cli
