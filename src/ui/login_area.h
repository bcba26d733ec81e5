#pragma once
#include <QPointer>
#include <functional>

#include "shell/login_page.h"
#include "ui/kit.h"
#include "ui/login_window.h"

namespace orvalo {
class Program;
}

namespace orvalo::ui {

// The login page and its window. Main thread; owned by the desktop. The window may be given to a
// parent; it goes with the area or with that parent, whichever goes first.
class LoginArea {
 public:
  // All of it must outlive the area; `logged_in` is told that the operator is in, on-line or
  // off-line. Throws FormError.
  LoginArea(Program& program, const Kit& kit, platform::Shell& shell,
            std::function<void()> logged_in);

  ~LoginArea();
  LoginArea(const LoginArea&) = delete;
  LoginArea& operator=(const LoginArea&) = delete;

  LoginWindow& Window() { return *window_; }

 private:
  QPointer<LoginWindow> window_;
  LoginPage page_;
};

}  // namespace orvalo::ui
