#include "ui/desktop_run.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QGuiApplication>
#include <QThread>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

#include "ui/desktop.h"
#include "ui/guarded.h"
#include "ui/qt_texts.h"
#include "ui/shutdown_window.h"
#include "ui/window_mailbox.h"

namespace orvalo::ui {

namespace {

constexpr int kPumpMilliseconds = 20;
constexpr int kShortPause = 500;  // milliseconds; how long a row of the window can be read
constexpr int kLongPause = 1000;

void ShowWaitCursor(bool shown) {
  if (QThread::currentThread() != qApp->thread()) return;  // nobody waits for the worker's calls
  if (shown) {
    QGuiApplication::setOverrideCursor(Qt::WaitCursor);
  } else {
    QGuiApplication::restoreOverrideCursor();
  }
}

// Handles what waits, for at most a moment.
void PumpMessages() { QCoreApplication::processEvents(QEventLoop::AllEvents, kPumpMilliseconds); }

void Pause(const Surroundings& around, int milliseconds) {
  PumpMessages();
  if (around.pause) around.pause(milliseconds);
  if (around.rethrow_fault) around.rethrow_fault();
}

// What a terminal takes for a command (a damaged file may hold one) becomes a blank.
std::string Plain(const std::string& text) {
  QString plain = Qt8(text);
  for (QChar& character : plain) {
    if (character.category() == QChar::Other_Control) character = u' ';
  }
  return plain.toStdString();
}

// None where a translation lacks it: the end goes on unseen.
std::unique_ptr<ShutdownWindow> ShowShutdown(const Kit& kit) {
  try {
    auto window = std::make_unique<ShutdownWindow>(kit);
    window->show();
    return window;
  } catch (const FormError&) {
    return nullptr;
  }
}

// The engine is let finish the message in hand, in sight of the operator.
void ShutDown(Program& program, const Kit& kit, const Surroundings& around) {
  const auto window = ShowShutdown(kit);
  const auto mark = [&window](ShutdownWindow::Row row) {
    if (window != nullptr) window->Mark(row);
  };
  QEventLoop until_ended;
  WindowMailbox ended([&](std::uint32_t message, std::int32_t, std::int32_t) {
    if (message == platform::kWmQuit) until_ended.quit();
  });
  program.GetEngine().RequestStop(&ended);
  until_ended.exec();
  if (around.rethrow_fault) around.rethrow_fault();
  mark(ShutdownWindow::kStopping);
  if (around.stop_asking) around.stop_asking();
  program.GetEngine().WaitForEnd();
  Pause(around, kShortPause);
  mark(ShutdownWindow::kSaving);
  PumpMessages();
  Guarded(program.GetMessageBoxes(), program.GetTexts(), [&] { program.GetDatabase().Commit(); });
  Pause(around, kLongPause);
  mark(ShutdownWindow::kCompleted);
  Pause(around, kLongPause);
}

// However the launcher ends, the worker is waited for after it: it must not wait for an answer
// then.
class EndOfAsking {
 public:
  explicit EndOfAsking(const Surroundings& around) : around_(around) {}
  ~EndOfAsking() {
    if (around_.stop_asking) around_.stop_asking();
  }
  EndOfAsking(const EndOfAsking&) = delete;
  EndOfAsking& operator=(const EndOfAsking&) = delete;

 private:
  const Surroundings& around_;
};

int Launch(Program& program, const Surroundings& around) {
  std::unique_ptr<Desktop> desktop;
  const EndOfAsking end_of_asking(around);  // before the desktop goes: its download may be asking
  try {
    desktop = std::make_unique<Desktop>(program, around);
  } catch (const FormError& problem) {
    if (program.GetLog().Enabled()) program.GetLog().Write("%s", problem.what());
    return 0;
  }
  desktop->Open();
  desktop->Run();
  if (around.rethrow_fault) around.rethrow_fault();
  if (program.GetEngine().IsRunning()) ShutDown(program, desktop->Kit(), around);
  return 0;
}

}  // namespace

int RunDesktop(Program& program, Program::Options options, const Surroundings& around) {
  options.wait_cursor = ShowWaitCursor;
  const QtTexts qt_texts(program.GetTexts());
  auto result =
      program.Run(options, [&around](Program& running) { return Launch(running, around); });
  try {
    if (around.rethrow_fault) around.rethrow_fault();  // of a message box outside the launcher
  } catch (...) {
    result.end = Program::End::kUnexpected;
    Program::ShowUnexpectedError(program.GetMessageBoxes(), program.GetSettings());
  }
  if (!result.reason.empty()) std::fprintf(stderr, "orvalo: %s\n", Plain(result.reason).c_str());
  return result.end == Program::End::kUnexpected ? EXIT_FAILURE : result.exit_code;
}

}  // namespace orvalo::ui
