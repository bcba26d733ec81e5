// From the start of the process to the first paint of the window, on an empty data folder, beside a
// bare Qt window of the same size with one line of text: processor time of processes of their own,
// by turns, medians. What the engine waits for at its start is not in it. Needs no display.
//
//   start_bench            prints both and their ratio
//   start_bench bare|ours FOLDER  one start, for itself
#include <sys/resource.h>

#include <QApplication>
#include <QLabel>
#include <QTimer>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "app/startup/program.h"
#include "component/register_component.h"
#include "platform/automation.h"
#include "platform/clock.h"
#include "support/child_process.h"
#include "support/scripted_message_boxes.h"
#include "support/temporary_folder.h"
#include "timing.h"
#include "ui/application.h"
#include "ui/desktop.h"
#include "ui/file_dialogs.h"
#include "ui/system_desktop.h"

namespace orvalo {
namespace {

constexpr int kRounds = 11;
constexpr QSize kWindowSize(920, 664);

// Ends the process once the window has been painted.
class EndAtPaint : public QObject {
 public:
  bool eventFilter(QObject* watched, QEvent* event) override {
    if (event->type() == QEvent::Paint) QTimer::singleShot(0, [] { std::_Exit(0); });
    return QObject::eventFilter(watched, event);
  }
};

int StartBare(int count, char** values) {
  QApplication application(count, values);
  EndAtPaint end;
  QLabel window(QStringLiteral("Orvalo"));
  window.setFixedSize(kWindowSize);
  window.installEventFilter(&end);
  window.show();
  return QApplication::exec();
}

int StartOurs(int count, char** values, const char* folder) {
  ui::Application application(count, values);
  test::ScriptedMessageBoxes boxes;
  ui::SystemFileDialogs files;
  ui::SystemShell shell;
  ui::SystemClipboard clipboard;
  platform::ClassRegistry registry;
  component::RegisterComponent(registry);
  Program program(boxes, platform::SystemClock(), registry);
  Program::Options options;
  options.data_folder = folder;
  options.test_connection = false;
  const ui::Surroundings around{files, shell, clipboard, {}, {}, {}, {}};
  return program
      .Run(options,
           [&](Program& running) {
             ui::Desktop desktop(running, around);
             EndAtPaint end;
             desktop.Window().installEventFilter(&end);
             desktop.Open();
             return QApplication::exec();
           })
      .exit_code;
}

// Of all child processes that have ended.
double ChildrenSeconds() {
  rusage usage{};
  getrusage(RUSAGE_CHILDREN, &usage);
  const auto seconds = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
  };
  return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

double MedianStart(const std::string& program, const char* which, std::vector<double>& seconds) {
  const test::TemporaryFolder folder;
  const double before = ChildrenSeconds();
  test::RunProgram({program, which, folder.path()});
  seconds.push_back(ChildrenSeconds() - before);
  return bench::Median(seconds);
}

int Compare(const char* program) {
  std::vector<double> bare, ours;
  double floor = 0, own = 0;
  for (int round = 0; round < kRounds; ++round) {
    floor = MedianStart(program, "bare", bare);
    own = MedianStart(program, "ours", ours);
  }
  std::printf("start to first paint: bare %.1f ms, ours %.1f ms, ratio %.2f (goal 3)\n",
              floor * 1000, own * 1000, own / floor);
  return 0;
}

}  // namespace
}  // namespace orvalo

int main(int count, char** values) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  if (count < 3) return orvalo::Compare(values[0]);
  return values[1] == std::string("bare") ? orvalo::StartBare(count, values)
                                          : orvalo::StartOurs(count, values, values[2]);
}
