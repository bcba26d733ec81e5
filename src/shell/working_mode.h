#pragma once
#include <functional>
#include <utility>

namespace orvalo::platform {
class Mailbox;
class MessageBoxes;
}  // namespace orvalo::platform

namespace orvalo {

class Account;
class AppSettings;
class Texts;

// The balance lines of the pages. Main thread.
class BalanceLines {
 public:
  // `show` draws the line of every page that has one, as the balance is last known.
  BalanceLines(Account& account, std::function<void()> show)
      : account_(account), show_(std::move(show)) {}

  void Refresh();  // asks the gateway when on-line, then shows
  void Show() { show_(); }

 private:
  Account& account_;
  std::function<void()> show_;
};

// Whoever shows the choice between working on-line and off-line; implemented by the options page.
class WorkingModeView {
 public:
  virtual ~WorkingModeView() = default;
  virtual void ShowWorkingMode(bool online) = 0;
};

// Switches between working on-line and off-line, for the operator's choice and for the engine's
// request to go off-line. Main thread. The outbox, which goes on-line for one command and says in
// its own words when that fails, does so by itself.
class WorkingMode {
 public:
  // All of it must outlive the object.
  struct Parts {
    AppSettings& settings;
    const Texts& texts;
    platform::MessageBoxes& boxes;
    platform::Mailbox& main_window;
    Account& account;
    BalanceLines& balance;
    WorkingModeView& view;
  };

  explicit WorkingMode(const Parts& parts) : parts_(parts) {}

  // Logs in with the stored login. False when that failed: the operator has been told and the
  // program is off-line.
  bool GoOnline();
  void GoOffline();

 private:
  void Announce(bool online);

  Parts parts_;
};

}  // namespace orvalo
