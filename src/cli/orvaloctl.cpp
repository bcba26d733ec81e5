#include "cli/orvaloctl.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <filesystem>
#include <ostream>

#include "app/startup/program.h"
#include "cli/command.h"
#include "cli/command_tree.h"
#include "cli/console_boxes.h"
#include "cli/error_output.h"
#include "platform/file.h"
#include "platform/machine_config.h"
#include "store/store_error.h"

namespace orvalo::cli {

namespace {

constexpr char kDescription[] = "Orvalo without a window: sends short messages and keeps an outbox";
constexpr char kFooter[] =
    "The data folder is --data DIR, or the environment variable ORVALO_DATA_PATH, or the machine's "
    "configuration.\n"
    "Exit status: 0 done, 1 failed, 2 usage, 3 data folder in use, 4 gateway refused or "
    "unreachable.";

struct GlobalArguments {
  std::string data_folder;
  bool json = false;
};

void DefineGlobal(CLI::App& app, GlobalArguments* arguments) {
  app.description(kDescription);
  app.footer(kFooter);
  app.add_option("--data", arguments->data_folder, "The data folder")->type_name("DIR");
  app.add_flag("--json", arguments->json, "Print results as JSON");
}

// The folder's full path, with what the command expects in it. A mistyped name must never become a
// new database.
std::string PreparedFolder(const GlobalArguments& arguments, Access access) {
  std::string folder = arguments.data_folder.empty()
                           ? platform::ReadDataPath(platform::MachineConfig())
                           : arguments.data_folder;
  if (folder.empty()) {
    throw CommandError(ExitCode::kFailed,
                       "No data folder is known: name it with --data or ORVALO_DATA_PATH");
  }
  folder = std::filesystem::absolute(folder).lexically_normal().string();
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
  return options;
}

ExitCode Report(ErrorOutput& errors, ExitCode code, const std::string& reason) {
  if (!reason.empty()) errors.Line("orvaloctl: " + reason);
  return code;
}

ExitCode ExecuteReported(Command& command, Context& context) {
  try {
    return command.Execute(context);
  } catch (const CommandError& error) {
    return Report(context.errors, error.code(), error.what());
  } catch (const StoreError& error) {
    return Report(context.errors, ExitCode::kFailed, error.what());
  }
}

ExitCode CodeOf(const Program::Result& result, ErrorOutput& errors) {
  switch (result.end) {
    case Program::End::kRan:
      return static_cast<ExitCode>(result.exit_code);
    case Program::End::kInUse:
      return Report(errors, ExitCode::kInUse, "Another program is using this data folder");
    case Program::End::kNoGateway:
      return Report(errors, ExitCode::kGateway, result.reason);
    case Program::End::kNoDatabase:
      return ExitCode::kFailed;
    case Program::End::kNoDataFolder:
    case Program::End::kUnexpected:
      break;
  }
  return Report(errors, ExitCode::kFailed, result.reason);
}

ExitCode Perform(Command& command, const GlobalArguments& arguments, const Console& console,
                 ErrorOutput& errors, const platform::ClassRegistry& registry,
                 platform::Clock& clock) {
  std::string folder;
  try {
    command.Check();
    folder = PreparedFolder(arguments, command.AccessNeeded());
  } catch (const CommandError& error) {
    return Report(errors, error.code(), error.what());
  }
  ConsoleBoxes boxes(errors);
  Program program(boxes, clock, registry);
  const Program::Result result =
      program.Run(ProgramOptions(folder, command.AccessNeeded()), [&](Program& running) {
        Context context{running, console.in,     console.out,
                        errors,  arguments.json, console.in_is_terminal};
        return static_cast<int>(ExecuteReported(command, context));
      });
  return CodeOf(result, errors);
}

}  // namespace

int RunOrvaloctl(const std::vector<std::string>& args, const Console& console,
                 const platform::ClassRegistry& registry, platform::Clock& clock) {
  GlobalArguments arguments;
  CLI::App app("", "orvaloctl");
  DefineGlobal(app, &arguments);
  CommandTree commands(app);
  try {
    app.parse(std::vector<std::string>(args.rbegin(), args.rend()));
  } catch (const CLI::ParseError& error) {
    return static_cast<int>(app.exit(error, console.out, console.err) == 0 ? ExitCode::kDone
                                                                           : ExitCode::kUsage);
  }
  ErrorOutput errors(console.err, console.err_is_terminal);
  ExitCode code = Perform(*commands.Chosen(), arguments, console, errors, registry, clock);
  console.out.flush();
  if (!console.out && code == ExitCode::kDone)
    code = Report(errors, ExitCode::kFailed, "The results cannot be written");
  return static_cast<int>(code);
}

}  // namespace orvalo::cli
