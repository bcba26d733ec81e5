#include "shell/main_shell.h"

#include <algorithm>
#include <array>

#include "app/settings.h"
#include "app/texts.h"
#include "gateway/engine_notices.h"
#include "net/version_info.h"
#include "platform/code_page.h"
#include "platform/message_box.h"
#include "shell/shell_messages.h"
#include "store/store_error.h"

namespace orvalo {

namespace {

constexpr std::int64_t kBalanceBlink = 500;  // milliseconds
constexpr std::int64_t kBusyBlink = 200;
constexpr std::int64_t kOfflineBlink = 1000;
constexpr std::size_t kTipLength = 127;
constexpr int kForeignTipTextId = 221;
constexpr int kProductNameTextId = 1024;

// The icon's menu: its items by position, the separator between them as none.
constexpr std::array kTrayMenu{ShellCommand::kShowVersion, ShellCommand::kCheckForUpdates,
                               ShellCommand::kProxySettings, ShellCommand{}, ShellCommand::kExit};
constexpr std::size_t kExitPosition = kTrayMenu.size() - 1;

std::uint32_t TrayBit(ShellCommand command) {
  const auto place = std::find(kTrayMenu.begin(), kTrayMenu.end(), command);
  return 1u << (place - kTrayMenu.begin());
}

struct TabPage {
  ShellTab tab;
  ShellPage page;
};
constexpr std::array<TabPage, 4> kTabPages{{{ShellTab::kCompose, ShellPage::kCompose},
                                            {ShellTab::kContacts, ShellPage::kContacts},
                                            {ShellTab::kOutbox, ShellPage::kOutbox},
                                            {ShellTab::kOptions, ShellPage::kOptions}}};

std::string TipFor(const AppSettings& settings, const Texts& texts) {
  std::string tip;
  if (!IsOwnInstallation(settings)) tip = texts.LoadOrEmpty(kForeignTipTextId);
  if (tip.empty()) tip = ProgramTitle(settings, texts);
  return std::string(platform::FirstCharacters(tip, kTipLength));
}

}  // namespace

MainShell::MainShell(const Parts& parts)
    : parts_(parts),
      activity_(parts.texts),
      throttle_(parts.clock, parts.view, parts.main_window, parts.compose_page),
      balance_(parts.view, ShellTimer::kBalanceBlink, kBalanceBlink,
               [this](bool, bool lit) { parts_.view.LightBalance(lit); }),
      busy_(parts.view, ShellTimer::kBusyBlink, kBusyBlink,
            [this](bool on, bool lit) { parts_.view.ShowBusy(on, lit); }),
      offline_(parts.view, ShellTimer::kOfflineBlink, kOfflineBlink,
               [this](bool on, bool lit) { parts_.view.ShowOffline(on, lit); }) {}

void MainShell::SetUp() {
  parts_.view.SetTitle(ProgramTitle(parts_.settings, parts_.texts));
  TaskbarCreated();
  parts_.view.ReloadBanner();
  parts_.view.ShowPage(page_);
}

void MainShell::LoggedIn() {
  parts_.view.ShowTabs();
  const bool online = parts_.settings.Flag(FlagSetting::kWorkingOnLine);
  parts_.main_window.Post(online ? kWmOnline : kWmOffline, 0, 0);
  if (online) parts_.main_window.Post(kWmBalance, 0, 0);
  SwitchTo(ShellTab::kCompose);
  parts_.actions.StartEngine();
}

std::int32_t MainShell::Handle(std::uint32_t message, std::int32_t wparam, std::int32_t lparam) {
  if (ending_ != Ending::kNot) return 0;
  switch (message) {
    case kWmSwitchPage:
      SwitchTo(static_cast<ShellTab>(lparam));
      break;
    case kWmBalance:
      balance_.Start();
      throttle_.Request();
      break;
    case kWmBanner:
      parts_.view.ReloadBanner();
      break;
    case kWmTrayMask:
      return static_cast<std::int32_t>(TrayMask());
    case kWmOnline:
    case kWmOffline:
      ShowMode(message == kWmOnline);
      break;
    default:
      if (activity_.Take(message, wparam, lparam)) ShowActivity();
      break;
  }
  return 0;
}

void MainShell::OnTimer(ShellTimer timer) {
  if (ending_ != Ending::kNot) return;
  switch (timer) {
    case ShellTimer::kBalance:
      throttle_.OnTimer();
      if (!throttle_.IsWaiting()) balance_.Stop();
      break;
    case ShellTimer::kBalanceBlink:
      balance_.OnTimer();
      break;
    case ShellTimer::kBusyBlink:
      busy_.OnTimer();
      break;
    case ShellTimer::kOfflineBlink:
      offline_.OnTimer();
      break;
  }
}

void MainShell::Run(ShellCommand command) {
  switch (command) {
    case ShellCommand::kCloseApp:
      CloseApp();
      break;
    case ShellCommand::kExit:
      End();
      break;
    case ShellCommand::kCheckForUpdates:
      RunDialog(command, [this] { parts_.actions.CheckForUpdates(); });
      break;
    case ShellCommand::kProxySettings:
      RunDialog(command, [this] { parts_.actions.OpenProxySettings(); });
      break;
    case ShellCommand::kShowVersion:
      RunDialog(command, [this] { parts_.actions.ShowVersionInfo(); });
      break;
    case ShellCommand::kComposeKey:
    case ShellCommand::kCopy:
    case ShellCommand::kCut:
    case ShellCommand::kPaste:
    case ShellCommand::kSelectAll:
      if (page_ == ShellPage::kCompose) parts_.actions.RunComposeCommand(command);
      break;
  }
}

void MainShell::TrayRightClick() {
  if (parts_.view.IsOnScreen()) parts_.view.BringToFront();
  parts_.view.OpenTrayMenu(TrayMask(), kExitPosition);
}

void MainShell::TaskbarCreated() {
  parts_.view.AddTrayIcon(icon_, TipFor(parts_.settings, parts_.texts));
}

void MainShell::End() {
  if (ending_ == Ending::kNot) {
    ending_ = Ending::kStoring;
    StoreOptionsInFront();
  }
  if (ending_ == Ending::kClosed) return;
  ending_ = Ending::kClosed;
  parts_.view.Close();
}

void MainShell::SwitchTo(ShellTab tab) {
  if (tab == tab_) return;
  const auto place = std::find_if(kTabPages.begin(), kTabPages.end(),
                                  [tab](const TabPage& entry) { return entry.tab == tab; });
  if (place == kTabPages.end()) return;
  StoreOptionsInFront();
  if (tab_ != ShellTab::kNone) parts_.view.DrawTab(tab_, false);
  tab_ = tab;
  page_ = place->page;
  parts_.view.DrawTab(tab_, true);
  parts_.view.ShowPage(page_);
}

void MainShell::StoreOptionsInFront() {
  if (page_ == ShellPage::kOptions) parts_.actions.ApplyOptions();
}

void MainShell::ShowActivity() {
  parts_.actions.SetOutboxActivity(activity_.Text());
  if (!activity_.IsBusy()) {
    busy_.Stop();
    return;
  }
  parts_.view.SetBusyTip(activity_.Text());
  busy_.Start();
}

void MainShell::ShowMode(bool online) {
  icon_ = online ? TrayIcon::kNormal : TrayIcon::kOffline;
  parts_.view.SetTrayIcon(icon_);
  if (online) {
    offline_.Stop();
  } else {
    offline_.Start();
  }
  parts_.actions.ShowWorkingMode();
}

// The program keeps running behind its icon.
void MainShell::CloseApp() {
  parts_.view.Hide();
  try {
    parts_.actions.CommitStore();
  } catch (const StoreError& error) {
    parts_.boxes.Show(error.InWords(parts_.texts), parts_.texts.Load(kProductNameTextId),
                      platform::BoxIcon::kStop);
  }
}

// "Exit" always works; the others unless their window is open.
std::uint32_t MainShell::TrayMask() const { return ((1u << kTrayMenu.size()) - 1) & ~open_; }

void MainShell::RunDialog(ShellCommand command, const std::function<void()>& open) {
  struct Open {
    Open(std::uint32_t& mask, std::uint32_t bit) : mask_(mask), bit_(bit) { mask_ |= bit_; }
    ~Open() { mask_ &= ~bit_; }
    Open(const Open&) = delete;
    Open& operator=(const Open&) = delete;
    std::uint32_t& mask_;
    std::uint32_t bit_;
  };
  const std::uint32_t bit = TrayBit(command);
  if ((open_ & bit) != 0) return;
  const Open scope(open_, bit);
  open();
}

}  // namespace orvalo
