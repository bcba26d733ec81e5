#pragma once
#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace orvalo::platform {
class MessageBoxes;
class Shell;
}  // namespace orvalo::platform

namespace orvalo {

class Account;
class AppSettings;
class DataFile;
class Texts;

// The window of the password recovery dialog, as far as its logic needs it. Main thread.
class RecoveryView {
 public:
  virtual ~RecoveryView() = default;
  virtual void EnableOk(bool enabled) = 0;
  virtual void FocusEmail() = 0;
  virtual void FocusOk() = 0;
  virtual void Close() = 0;
};

// The password recovery dialog: made for one showing of it. Main thread.
class RecoveryDialog {
 public:
  static constexpr std::size_t kUserLength = 31;  // characters of the fields
  static constexpr std::size_t kEmailLength = 127;

  explicit RecoveryDialog(Account& account) : account_(account) {}

  // The window of this showing; set before anything else and alive as long as the dialog is open.
  void SetView(RecoveryView* view);

  void UserTyped(std::string_view text);
  void EmailTyped(std::string_view text);
  void EnterInUser() { view_->FocusEmail(); }
  void EnterInEmail() { view_->FocusOk(); }
  void Ok();  // asks the gateway and closes; does nothing while OK is not enabled
  void Cancel() { view_->Close(); }

  // Whether the gateway has sent the password; nothing when it was not asked.
  std::optional<bool> Sent() const { return sent_; }
  const std::string& WhyNotSent() const { return why_not_sent_; }  // in words for the operator

 private:
  bool OkEnabled() const;

  Account& account_;
  RecoveryView* view_ = nullptr;
  std::string user_, email_;
  std::optional<bool> sent_;
  std::string why_not_sent_;
};

// What stands in the login page's fields.
struct LoginValues {
  std::string user, password;
  bool remember = false;  // "Remember Password:"
  bool offline = false;   // "Work Off-line:"
};

// The login page's window, as far as its logic needs it. Main thread.
class LoginView {
 public:
  virtual ~LoginView() = default;
  virtual void ShowValues(const LoginValues& values) = 0;  // must not report them back as typed
  virtual void ShowTicks(bool remember, bool offline) = 0;
  virtual void EnableOk(bool enabled) = 0;
  virtual void FocusPassword() = 0;
  virtual void ShowMessage(const std::string& text) = 0;  // the message line
  // Opens the password recovery dialog; returns when it has been closed.
  virtual void OpenRecovery(RecoveryDialog& dialog) = 0;
};

// The login page without its window. Main thread; owned by whoever owns the window, which forwards
// what the operator does and draws what this tells it.
class LoginPage {
 public:
  static constexpr std::size_t kFieldLength = 126;  // characters of the two fields

  // All of it must outlive the page.
  struct Parts {
    AppSettings& settings;
    DataFile& data_file;
    const Texts& texts;
    Account& account;
    platform::Shell& shell;
    platform::MessageBoxes& boxes;
    LoginView& view;
    std::function<void()> logged_in;  // the operator is in, on-line or off-line
  };

  explicit LoginPage(const Parts& parts) : parts_(parts) {}

  void SetUp();  // once, when the window is there

  void UserTyped(std::string_view text);
  void PasswordTyped(std::string_view text);
  void ToggleRemember();
  void ToggleOffline();
  void EnterInUser();
  void EnterInPassword();

  // Logs in at the gateway or, off-line, compares with the login stored last. A refusal is shown in
  // the message line and leaves the fields as they are and the program off-line. A login that
  // cannot be saved counts for this run, and the operator is told.
  void Ok();
  void ForgotPassword();

 private:
  bool IsAccepted();
  void ShowOk();

  Parts parts_;
  LoginValues values_;
};

}  // namespace orvalo
