#pragma once
#include <QEventLoop>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "shell/banner.h"
#include "shell/main_shell.h"
#include "shell/working_mode.h"
#include "ui/compose_area.h"
#include "ui/contacts_area.h"
#include "ui/form_loader.h"
#include "ui/images.h"
#include "ui/kit.h"
#include "ui/late_dialogs.h"
#include "ui/login_area.h"
#include "ui/main_window.h"
#include "ui/options_area.h"
#include "ui/outbox_area.h"
#include "ui/surroundings.h"
#include "ui/theme.h"
#include "ui/update_window.h"
#include "ui/window_mailbox.h"

namespace orvalo {
class Program;
}

namespace orvalo::ui {

// All windows of a run, put together over its Program: the main window with its pages, and what
// the pages set off in one another. Made by the launcher, main thread; while it lives the engine
// reports to it.
class Desktop : public MainShellActions {
 public:
  // Both must outlive the object. Throws FormError when the resource container lacks a window.
  Desktop(Program& program, const Surroundings& around);
  ~Desktop() override;
  Desktop(const Desktop&) = delete;
  Desktop& operator=(const Desktop&) = delete;

  // Shows the window, as the settings say, and starts the engine.
  void Open();
  // Until the operator or the session ends the program.
  void Run();

  platform::Mailbox& Mailbox() { return mailbox_; }
  MainWindow& Window() { return window_; }
  MainShell& Shell() { return shell_; }
  ComposeArea& Compose() { return compose_; }
  ContactsArea& Contacts() { return contacts_; }
  OutboxArea& Outbox() { return outbox_; }
  OptionsArea& Options() { return options_; }
  const ui::Kit& Kit() const { return kit_; }

  // --- MainShellActions
  void StartEngine() override;
  void CommitStore() override;
  void ShowVersionInfo() override;
  void CheckForUpdates() override;
  void OpenProxySettings() override;
  void RunComposeCommand(ShellCommand command) override;
  void ApplyOptions() override;
  void ShowWorkingMode() override;
  void SetOutboxActivity(const std::string& text) override;

 private:
  void PageShown(ShellPage page);
  void ShowStoreProblem();
  void ShowWaiting();
  void ShowQueryProblem();
  void RefreshBalance();
  void ShowBalances();
  void Handle(std::uint32_t message, std::int32_t wparam, std::int32_t lparam);

  std::optional<StyleHold> style_hold_{std::in_place};  // while the windows are made
  Program& program_;
  const Surroundings& around_;
  FormLoader forms_;
  Images images_;
  ui::Kit kit_;
  WindowMailbox mailbox_;          // of the main window
  WindowMailbox balance_mailbox_;  // gets kWmQueryBalance
  MainWindow window_;              // goes after the pages, which are its children
  BalanceLines balances_;
  LoginArea login_;
  OutboxArea outbox_;
  ComposeArea compose_;
  ContactsArea contacts_;
  OptionsArea options_;
  BannerDownload banner_;
  UpdateWindow update_window_;
  UpdateCheck update_;
  MainShell shell_;
  QEventLoop loop_;
  std::optional<LateDialogs> late_dialogs_;  // between the end of the window and that of its loop
};

}  // namespace orvalo::ui
