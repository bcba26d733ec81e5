#pragma once
#include <QApplication>
#include <exception>
#include <functional>
#include <utility>

namespace orvalo::ui {

// The desktop program's QApplication. An exception out of an event handler ends every event loop
// and is thrown again by RethrowFault, so that it reaches the one handler around the run; but a
// window that the resource container lacks (FormError) just does not open. The look follows the
// system when that changes between light and dark. Main thread.
class Application : public QApplication {
 public:
  Application(int& count, char** values);

  bool notify(QObject* receiver, QEvent* event) override;
  // To be called after each event loop, when none runs any more. Throws what a handler has thrown;
  // whatever is thrown after that is dropped, so that nothing ends the message about it.
  void RethrowFault();

  // Called on the main thread when the session ends or the system wishes the program's end; an
  // empty one unsets it. An end that was wished before there was one comes as soon as it is set.
  void SetEndHandler(std::function<void()> end);
  void WishEnd();  // any thread

  // Why there can be no window here, in words for the terminal; empty when there can. Before the
  // object is made: chooses Wayland where there is nothing else.
  static QString WhyNoDisplay();

 private:
  void FollowSystem();
  void End();

  std::exception_ptr fault_;
  bool telling_ = false;  // of the fault
  std::function<void()> end_;
  bool end_wished_ = false;
};

// Lets the windows live on for so many milliseconds.
void PauseShowing(int milliseconds);

}  // namespace orvalo::ui
