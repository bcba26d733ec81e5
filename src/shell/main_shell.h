#pragma once
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

#include "shell/activity.h"
#include "shell/balance_throttle.h"
#include "shell/blinker.h"
#include "shell/shell_timers.h"

namespace orvalo::platform {
class MessageBoxes;
}

namespace orvalo {

class AppSettings;
class Texts;

// Pages, tab buttons and commands by number; the numbers never change.
enum class ShellPage { kLogin = 1, kCompose = 3, kContacts = 4, kOutbox = 5, kOptions = 6 };
enum class ShellTab : std::int32_t {
  kNone = 0,
  kCompose = 1044,
  kContacts = 1045,
  kOutbox = 1046,
  kOptions = 1047
};
enum class ShellCommand : std::int32_t {
  kCloseApp = 1002,
  kExit = 32801,
  kCheckForUpdates = 32806,
  kProxySettings = 32807,
  kShowVersion = 32809,
  // From the keyboard, for the compose page:
  kComposeKey = 32804,
  kCopy = 0xE122,
  kCut = 0xE123,
  kPaste = 0xE125,
  kSelectAll = 0xE12A
};
enum class TrayIcon { kNormal = 221, kOffline = 258 };  // by icon resource

// The main window and its icon in the notification area, as far as their logic needs them. Main
// thread. Tabs are hidden and no page is shown until told.
class MainShellView : public ShellTimers {
 public:
  virtual void SetTitle(const std::string& title) = 0;
  // Adds the icon with its tip and the messages of its mouse buttons.
  virtual void AddTrayIcon(TrayIcon icon, const std::string& tip) = 0;
  virtual void SetTrayIcon(TrayIcon icon) = 0;
  // At the cursor; bit i of `mask` enables the item at position i.
  virtual void OpenTrayMenu(std::uint32_t mask, std::size_t default_position) = 0;
  virtual void ShowTabs() = 0;
  virtual void DrawTab(ShellTab tab, bool selected) = 0;
  virtual void ShowPage(ShellPage page) = 0;  // and hides the others
  virtual void ShowBusy(bool shown, bool lit) = 0;
  virtual void SetBusyTip(const std::string& text) = 0;
  virtual void ShowOffline(bool shown, bool lit) = 0;
  virtual void LightBalance(bool lit) = 0;  // the balance lines of the pages
  virtual bool IsOnScreen() const = 0;      // minimised counts as well
  // Shows the window, brings it to the foreground and to the top without moving it.
  virtual void BringToFront() = 0;
  virtual void Hide() = 0;
  virtual void ReloadBanner() = 0;  // from the data folder; without one the background stays
  virtual void Close() = 0;         // for good: the message loop ends
};

// What the main window sets off elsewhere; implemented where the pages and dialogs are put
// together. Main thread. The three dialogs return when they have been closed.
class MainShellActions {
 public:
  virtual ~MainShellActions() = default;
  // Not before the login: the gateway would refuse all that waits, and it would be Failed.
  virtual void StartEngine() = 0;
  virtual void CommitStore() = 0;  // throws StoreError
  virtual void ShowVersionInfo() = 0;
  virtual void CheckForUpdates() = 0;
  virtual void OpenProxySettings() = 0;  // then OptionsPage::ProxyDialogClosed
  virtual void RunComposeCommand(ShellCommand command) = 0;
  virtual void ApplyOptions() = 0;
  virtual void
  ShowWorkingMode() = 0;  // as the setting says: the options page's choice, the balances
  virtual void SetOutboxActivity(const std::string& text) = 0;
};

// The main window without its window: pages and tabs, the messages that other parts and the engine
// post to it, the two indicators, the icon in the notification area, and the end of the program.
// Main thread; owned by whoever owns the window, which hands on what it receives.
class MainShell {
 public:
  // All of it must outlive the object.
  struct Parts {
    const AppSettings& settings;
    const Texts& texts;
    const platform::Clock& clock;
    platform::MessageBoxes& boxes;
    platform::Mailbox& main_window;   // posts to Handle
    platform::Mailbox& compose_page;  // gets kWmQueryBalance
    MainShellActions& actions;
    MainShellView& view;
  };

  explicit MainShell(const Parts& parts);
  MainShell(const MainShell&) = delete;
  MainShell& operator=(const MainShell&) = delete;

  void SetUp();     // once, when the window and its pages are there; starts the engine
  void LoggedIn();  // the login page's report: on-line or off-line, as the settings say

  // A posted message; those that are not the main window's do nothing. The result is that of
  // kWmTrayMask, else 0.
  std::int32_t Handle(std::uint32_t message, std::int32_t wparam, std::int32_t lparam);
  void OnTimer(ShellTimer timer);
  void Run(ShellCommand command);
  void TabClicked(ShellTab tab) { SwitchTo(tab); }

  // The icon in the notification area.
  void TrayLeftClick() { parts_.view.BringToFront(); }
  void TrayRightClick();
  void TaskbarCreated();  // the desktop's bar was restarted: the icon is added again

  // The session ends, or "Exit": what the options page holds is stored and the window closed.
  void End();

  ShellPage Page() const { return page_; }
  ShellTab Tab() const { return tab_; }

 private:
  void SwitchTo(ShellTab tab);
  void StoreOptionsInFront();
  void ShowActivity();
  void ShowMode(bool online);
  void CloseApp();
  std::uint32_t TrayMask() const;
  // Runs a command of the icon's menu, unless it is open already.
  void RunDialog(ShellCommand command, const std::function<void()>& open);

  // While the options are stored a window may open, and hold up the end until it comes again.
  enum class Ending { kNot, kStoring, kClosed };

  Parts parts_;
  ShellPage page_ = ShellPage::kLogin;
  ShellTab tab_ = ShellTab::kNone;
  TrayIcon icon_ = TrayIcon::kNormal;
  std::uint32_t open_ = 0;  // by position in the icon's menu
  Ending ending_ = Ending::kNot;
  Activity activity_;
  BalanceThrottle throttle_;
  Blinker balance_, busy_, offline_;
};

}  // namespace orvalo
