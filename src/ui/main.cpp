#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "app/data_file.h"
#include "app/settings.h"
#include "app/startup/program.h"
#include "component/register_component.h"
#include "platform/automation.h"
#include "platform/clock.h"
#include "platform/fault_signal.h"
#include "platform/machine_config.h"
#include "platform/stop_signal.h"
#include "ui/application.h"
#include "ui/desktop_run.h"
#include "ui/file_dialogs.h"
#include "ui/message_dialogs.h"
#include "ui/system_desktop.h"

namespace {

// In the place of a run that a processor fault has ended.
int ShowFault(orvalo::platform::MessageBoxes& boxes) {
  orvalo::platform::MachineConfig::Unreadable ignored;  // the help site is then the built-in one
  const std::string folder =
      orvalo::platform::ReadDataPath(orvalo::platform::MachineConfig(), &ignored);
  const orvalo::DataFile file(folder + "/SMS.dat", false);
  orvalo::AppSettings settings;
  settings.Load(file, false);
  orvalo::Program::ShowUnexpectedError(boxes, settings);
  return EXIT_FAILURE;
}

constexpr char kHelp[] =
    "Usage: orvalo\n"
    "Opens the window on the data folder that ORVALO_DATA_PATH or the configuration names;\n"
    "`orvalo-start` makes one first where there is none. See orvalo(1). In a terminal, orvaloctl\n"
    "does the same work.\n"
    "  --help     Print this text\n"
    "  --version  Print the version\n";

// Whether the first argument asks for words only; they are then printed.
bool AnswersInWords(int count, char** values) {
  const std::string_view wish = count > 1 ? values[1] : "";
  if (wish == "--help" || wish == "-h") {
    std::fputs(kHelp, stdout);
  } else if (wish == "--version") {
    std::printf("orvalo %s\n", ORVALO_VERSION);
  } else {
    return false;
  }
  return true;
}

}  // namespace

// The desktop client. Of its command line it reads no more than these two words.
int main(int count, char** values) {
  if (AnswersInWords(count, values)) return std::fflush(stdout) == 0 ? 0 : EXIT_FAILURE;
  const QString problem = orvalo::ui::Application::WhyNoDisplay();
  if (!problem.isEmpty()) {
    std::fprintf(stderr, "%s\n", problem.toStdString().c_str());
    return 1;
  }
  // Before the first thread, so that none takes the signals.
  std::atomic<orvalo::ui::Application*> running = nullptr;
  std::optional<orvalo::platform::StopWatcher> stop(std::in_place, [&running] {
    if (auto* application = running.load()) application->WishEnd();
  });
  orvalo::ui::Application application(count, values);
  orvalo::platform::ShowFaultsAfresh(values[0]);
  running = &application;
  orvalo::ui::SystemShell shell;
  orvalo::ui::SystemClipboard clipboard;
  orvalo::ui::SystemFileDialogs files;
  orvalo::ui::MessageDialogs boxes(shell);
  if (orvalo::platform::FaultIsToBeShown()) return ShowFault(boxes);
  orvalo::platform::ClassRegistry registry;
  orvalo::component::RegisterComponent(registry);
  orvalo::Program program(boxes, orvalo::platform::SystemClock(), registry);
  const orvalo::ui::Surroundings around{
      files,
      shell,
      clipboard,
      [&application](auto end) { application.SetEndHandler(end); },
      [&application] { application.RethrowFault(); },
      [&boxes] { boxes.StopAsking(); },
      orvalo::ui::PauseShowing};
  const int exit_code = orvalo::ui::RunDesktop(program, {}, around);
  stop.reset();  // before the application goes
  return exit_code;
}
