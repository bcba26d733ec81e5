#include <atomic>
#include <cstdio>
#include <optional>
#include <string>
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
  const std::string folder = orvalo::platform::ReadDataPath(orvalo::platform::MachineConfig());
  const orvalo::DataFile file(folder + "/SMS.dat", false);
  orvalo::AppSettings settings;
  settings.Load(file, false);
  orvalo::Program::ShowUnexpectedError(boxes, settings);
  return 0;
}

}  // namespace

// The desktop client. Reads no command line of its own.
int main(int count, char** values) {
  orvalo::platform::ShowFaultsAfresh(values[0]);
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
