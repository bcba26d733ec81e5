#include "ui/application.h"

#include <QDir>
#include <QEvent>
#include <QEventLoop>
#include <QSessionManager>
#include <QTimer>
#include <utility>

#include "ui/form_loader.h"
#include "ui/theme.h"

namespace orvalo::ui {

namespace {

bool HasWaylandPlugin() {
  for (const QString& path : QCoreApplication::libraryPaths()) {
    const QDir plugins(path + QStringLiteral("/platforms"));
    if (!plugins.entryList({QStringLiteral("*qwayland*")}, QDir::Files).isEmpty()) return true;
  }
  return false;
}

}  // namespace

Application::Application(int& count, char** values) : QApplication(count, values) {
  setApplicationName(QStringLiteral("Orvalo"));
  setDesktopFileName(QStringLiteral("example.orvalo.orvalo"));
  setQuitOnLastWindowClosed(false);  // the program lives on behind its icon
  ApplyTheme(Theme(palette()));
  connect(
      this, &QGuiApplication::commitDataRequest, this, [this] { End(); }, Qt::DirectConnection);
}

void Application::SetEndHandler(std::function<void()> end) {
  end_ = std::move(end);
  if (end_ && std::exchange(end_wished_, false)) WishEnd();
}

// Before there is a window to end, a message may be asking: it is closed, so that the start goes on
// to where it can be ended.
void Application::End() {
  if (end_) {
    end_();
  } else {
    end_wished_ = true;
    closeAllWindows();
  }
}

void Application::WishEnd() {
  QMetaObject::invokeMethod(
      this, [this] { End(); }, Qt::QueuedConnection);
}

bool Application::notify(QObject* receiver, QEvent* event) {
  try {
    if (event->type() == QEvent::ThemeChange && receiver->isWindowType()) {
      QMetaObject::invokeMethod(
          this, [this] { FollowSystem(); }, Qt::QueuedConnection);
    }
    return QApplication::notify(receiver, event);
  } catch (const FormError&) {
    return true;  // a translation lacks the window that was wanted: it does not open
  } catch (...) {
    if (telling_) return true;  // the message about the first one must not end
    if (!fault_) fault_ = std::current_exception();
    exit(0);
    return true;
  }
}

void Application::RethrowFault() {
  if (!fault_) return;
  // After exit() no event loop runs any more, not even that of the message about the fault: only
  // the end of exec() allows them again.
  QMetaObject::invokeMethod(
      this, [] { exit(0); }, Qt::QueuedConnection);
  exec();
  telling_ = true;
  std::rethrow_exception(std::exchange(fault_, nullptr));
}

void Application::FollowSystem() {
  setPalette(QPalette());  // ours hides the system's
  ApplyTheme(Theme(palette()));
}

QString Application::WhyNoDisplay() {
  if (!qEnvironmentVariableIsEmpty("DISPLAY") || !qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
    return {};
  if (!qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY")) {
    if (HasWaylandPlugin()) {
      qputenv("QT_QPA_PLATFORM", "wayland");  // Qt would look for an X server in some sessions
      return {};
    }
    return QStringLiteral(
        "Orvalo needs Qt's plugin for Wayland, or an X server, to open its window here: install "
        "the package qt6-wayland. The same work can be done in a terminal with orvaloctl.");
  }
  return QStringLiteral(
      "Orvalo needs a desktop: neither DISPLAY nor WAYLAND_DISPLAY is set. "
      "The same work can be done in a terminal with orvaloctl.");
}

void PauseShowing(int milliseconds) {
  QEventLoop loop;
  QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
  loop.exec();
}

}  // namespace orvalo::ui
