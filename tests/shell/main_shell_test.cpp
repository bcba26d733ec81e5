#include "shell/main_shell.h"

#include <gtest/gtest.h>

#include <map>
#include <set>

#include "shell/shell_bench.h"
#include "shell/shell_messages.h"
#include "store/store_error.h"

namespace orvalo {
namespace {

class FakeWindow : public MainShellView {
 public:
  void StartTimer(ShellTimer timer, std::int64_t period) override { timers[timer] = period; }
  void StopTimer(ShellTimer timer) override { timers.erase(timer); }
  void SetTitle(const std::string& text) override { title = text; }
  void AddTrayIcon(TrayIcon shown, const std::string& text) override {
    ++icons;
    icon = shown;
    tip = text;
  }
  void SetTrayIcon(TrayIcon shown) override { icon = shown; }
  void OpenTrayMenu(std::uint32_t enabled, std::size_t item) override {
    mask = enabled;
    default_item = item;
  }
  void ShowTabs() override { tabs = true; }
  void DrawTab(ShellTab tab, bool selected) override {
    if (selected) {
      drawn.insert(tab);
    } else {
      drawn.erase(tab);
    }
  }
  void ShowPage(ShellPage shown) override { pages.push_back(shown); }
  void ShowBusy(bool shown, bool lit) override { busy = Look(shown, lit); }
  void SetBusyTip(const std::string& text) override { busy_tip = text; }
  void ShowOffline(bool shown, bool lit) override { offline = Look(shown, lit); }
  void LightBalance(bool lit) override { balance_lit = lit; }
  void BringToFront() override { ++fronts; }
  void Hide() override { ++hidden; }
  void ReloadBanner() override { ++banners; }
  void Close() override { ++closed; }

  std::map<ShellTimer, std::int64_t> timers;
  std::string title, tip, busy_tip;
  std::string busy = "hidden", offline = "hidden";
  TrayIcon icon = TrayIcon::kOffline;
  std::set<ShellTab> drawn;
  std::vector<ShellPage> pages;
  std::uint32_t mask = 0;
  std::size_t default_item = 0;
  bool tabs = false, balance_lit = true;
  int icons = 0, fronts = 0, hidden = 0, banners = 0, closed = 0;

 private:
  static std::string Look(bool shown, bool lit) { return !shown ? "hidden" : lit ? "lit" : "dark"; }
};

// Notes what was set off.
class FakeActions : public MainShellActions {
 public:
  void StartEngine() override { done += "engine "; }
  void CommitStore() override {
    done += "commit ";
    if (store_refuses) throw StoreError("disk full");
  }
  void ShowVersion() override { Dialog("version "); }
  void CheckForUpdates() override { Dialog("updates "); }
  void OpenProxySettings() override { Dialog("proxy "); }
  void RunComposeCommand(ShellCommand command) override {
    done += "compose:" + std::to_string(static_cast<std::int32_t>(command)) + " ";
  }
  void ApplyOptions() override { done += "apply "; }
  void ShowWorkingMode() override { done += "mode "; }
  void SetOutboxActivity(const std::string& text) override { activity = text; }

  std::string Take() { return std::exchange(done, {}); }
  std::string done, activity = "?";
  bool store_refuses = false;
  std::function<void()> meanwhile;  // while a dialog is open

 private:
  void Dialog(const char* name) {
    done += name;
    if (meanwhile) meanwhile();
  }
};

struct MainBench : test::ShellBench {
  FakeWindow view;
  FakeActions actions;
  test::RecordingMailbox posts, compose;
  MainShell main{{settings, texts, clock, boxes, posts, compose, actions, view}};

  // As the window does with what was posted to it.
  void Deliver() {
    const auto messages = posts.messages();
    posts.Clear();
    for (const auto& [message, wparam, lparam] : messages) main.Handle(message, wparam, lparam);
  }
  void Send(std::uint32_t message, std::int32_t wparam = 0, std::int32_t lparam = 0) {
    main.Handle(message, wparam, lparam);
  }
  void LogIn(bool online = true) {
    settings.SetFlag(FlagSetting::kWorkingOnLine, online);
    main.SetUp();
    main.LoggedIn();
    Deliver();
    actions.Take();
  }
};

TEST(MainShellTest, BeginsWithTheLoginPage) {
  const struct {
    const char* client;
    const char* title;
  } cases[] = {{"Orvalo", "Orvalo"}, {"Other", "SMS"}};
  for (const auto& c : cases) {
    MainBench bench;
    bench.settings.SetText(TextSetting::kClientId, c.client);
    bench.main.SetUp();
    EXPECT_EQ(bench.view.title, c.title);
    EXPECT_EQ(bench.view.tip, c.title);
    EXPECT_EQ(bench.view.icon, TrayIcon::kNormal);
    EXPECT_EQ(bench.view.pages, std::vector{ShellPage::kLogin});
    EXPECT_FALSE(bench.view.tabs);
    EXPECT_EQ(bench.view.banners, 1);
    EXPECT_EQ(bench.actions.done, "engine ");
  }
}

TEST(MainShellTest, SwitchesPagesByTheirTabs) {
  MainBench bench;
  bench.LogIn();
  EXPECT_TRUE(bench.view.tabs);
  const struct {
    std::int32_t tab;
    ShellPage page;  // in front afterwards
    const char* done;
  } cases[] = {
      {1044, ShellPage::kCompose, ""},
      {1047, ShellPage::kOptions, ""},
      {1047, ShellPage::kOptions, ""},
      {9999, ShellPage::kOptions, ""},
      {1045, ShellPage::kContacts, "apply "},
      {1046, ShellPage::kOutbox, ""},
      {0, ShellPage::kOutbox, ""},
  };
  for (const auto& c : cases) {
    const std::size_t shown = bench.view.pages.size();
    const bool change = bench.main.Page() != c.page;
    bench.Send(kWmSwitchPage, 0, c.tab);
    EXPECT_EQ(bench.main.Page(), c.page) << c.tab;
    EXPECT_EQ(bench.view.pages.size() - shown, change ? 1u : 0u);
    EXPECT_EQ(bench.view.pages.back(), c.page);
    EXPECT_EQ(bench.view.drawn, std::set{bench.main.Tab()});
    EXPECT_EQ(bench.actions.Take(), c.done) << c.tab;
  }
}

TEST(MainShellTest, TellsWhatTheEngineIsDoing) {
  const struct {
    std::uint32_t message;
    std::int32_t wparam, lparam;
    const char* text;
  } cases[] = {
      {kWmProgress, 1, 2, "?"},  // of no phase
      {kWmBusy, 0, 0, "Communicating to server ..."},
      {kWmPromoting, 0, 0, "Performing escalation"},
      {kWmProgress, 2, 5, "Performing escalation: 2 of 5"},
      {kWmSending, 0, 0, "Sending SMS"},
      {kWmProgress, 3, 40, "Sending SMS:3 SMS to go. Expanding(40)"},
      {kWmBusy, 0, 0, "Communicating to server ..."},
      {kWmProgress, 2, 39, "Sending SMS:2 SMS to go. Expanding(39)"},
      {kWmQuerying, 0, 0, "Querying status"},
      {kWmProgress, 7, 0, "Querying status: 7 SMS still to check!"},
      {kWmIdle, 0, 0, ""},
      {kWmProgress, 6, 0, ""},
  };
  MainBench bench;
  for (const auto& c : cases) {
    bench.Send(c.message, c.wparam, c.lparam);
    EXPECT_EQ(bench.actions.activity, c.text);
    const bool busy = std::string(c.text).size() > 1;
    EXPECT_EQ(bench.view.busy, busy ? "lit" : "hidden") << c.text;
    if (busy) {
      EXPECT_EQ(bench.view.busy_tip, c.text);
    }
    EXPECT_EQ(bench.view.timers.count(ShellTimer::kBusyBlink), busy ? 1u : 0u);
  }
  bench.Send(kWmBusy);
  EXPECT_EQ(bench.view.timers[ShellTimer::kBusyBlink], 200);
  bench.main.OnTimer(ShellTimer::kBusyBlink);
  EXPECT_EQ(bench.view.busy, "dark");
  bench.Send(kWmSending);
  EXPECT_EQ(bench.view.busy, "dark") << "keeps its rhythm";
  bench.main.OnTimer(ShellTimer::kBusyBlink);
  EXPECT_EQ(bench.view.busy, "lit");
  bench.Send(kWmIdle);
  bench.main.OnTimer(ShellTimer::kBusyBlink);  // was on its way
  EXPECT_EQ(bench.view.busy, "hidden");
}

TEST(MainShellTest, ShowsHowTheProgramWorks) {
  for (const bool online : {true, false}) {
    MainBench bench;
    bench.settings.SetFlag(FlagSetting::kWorkingOnLine, online);
    bench.main.SetUp();
    bench.main.LoggedIn();
    EXPECT_EQ(bench.main.Page(), ShellPage::kCompose);
    bench.Deliver();
    EXPECT_EQ(bench.view.offline, online ? "hidden" : "lit");
    EXPECT_EQ(bench.view.icon, online ? TrayIcon::kNormal : TrayIcon::kOffline);
    EXPECT_EQ(bench.actions.done, "engine mode ");
    EXPECT_EQ(bench.view.timers.count(ShellTimer::kBalance), online ? 1u : 0u);
  }
  MainBench bench;
  bench.LogIn(false);
  EXPECT_EQ(bench.view.timers[ShellTimer::kOfflineBlink], 1000);
  bench.main.OnTimer(ShellTimer::kOfflineBlink);
  EXPECT_EQ(bench.view.offline, "dark");
  bench.main.TaskbarCreated();
  EXPECT_EQ(bench.view.icons, 2);
  EXPECT_EQ(bench.view.icon, TrayIcon::kOffline) << "added again as it was";
  bench.Send(kWmOnline);
  EXPECT_EQ(bench.view.offline, "hidden");
  EXPECT_EQ(bench.view.icon, TrayIcon::kNormal);
  EXPECT_TRUE(bench.view.timers.empty());
}

TEST(MainShellTest, AsksForTheBalanceAtMostEveryTenSeconds) {
  MainBench bench;
  const auto fire = [&](std::int64_t after) {
    bench.clock.Advance(after);
    bench.main.OnTimer(ShellTimer::kBalance);
    bench.Deliver();
    return bench.compose.messages().size();
  };
  for (int i = 0; i < 5; ++i) {
    bench.Send(kWmBalance);
    bench.clock.Advance(200);
  }
  EXPECT_EQ(bench.view.timers[ShellTimer::kBalance], 10'000);
  EXPECT_EQ(bench.view.timers[ShellTimer::kBalanceBlink], 500);
  bench.main.OnTimer(ShellTimer::kBalanceBlink);
  EXPECT_FALSE(bench.view.balance_lit);

  EXPECT_EQ(fire(8'500), 0u) << "early";
  EXPECT_EQ(bench.view.timers[ShellTimer::kBalance], 500);
  EXPECT_EQ(fire(500), 1u);
  EXPECT_EQ(bench.compose.messages()[0], (test::RecordingMailbox::Message{kWmQueryBalance, 0, 0}));
  EXPECT_FALSE(bench.view.balance_lit) << "still waits for the second";
  EXPECT_EQ(bench.view.timers[ShellTimer::kBalance], 10'000);
  EXPECT_EQ(fire(10'000), 2u);
  EXPECT_TRUE(bench.view.balance_lit);
  EXPECT_TRUE(bench.view.timers.empty());
  EXPECT_EQ(fire(10'000), 2u) << "was on its way";
  bench.Send(kWmBalance);
  EXPECT_EQ(fire(10'000), 3u);
}

TEST(MainShellTest, RunsItsCommands) {
  const struct {
    ShellCommand command;
    std::int32_t tab;
    const char* done;
  } cases[] = {
      {ShellCommand::kShowVersion, 1045, "version "},
      {ShellCommand::kCheckForUpdates, 1045, "updates "},
      {ShellCommand::kProxySettings, 1045, "proxy "},
      {ShellCommand::kCloseApp, 1047, "commit "},
      {ShellCommand::kCopy, 1044, "compose:57634 "},
      {ShellCommand::kCut, 1044, "compose:57635 "},
      {ShellCommand::kPaste, 1044, "compose:57637 "},
      {ShellCommand::kSelectAll, 1044, "compose:57642 "},
      {ShellCommand::kComposeKey, 1044, "compose:32804 "},
      {ShellCommand::kCopy, 1046, ""},
      {ShellCommand::kExit, 1047, "apply "},
      {ShellCommand::kExit, 1046, ""},
  };
  for (const auto& c : cases) {
    MainBench bench;
    bench.LogIn();
    bench.Send(kWmSwitchPage, 0, c.tab);
    bench.main.Run(c.command);
    EXPECT_EQ(bench.actions.Take(), c.done);
    EXPECT_EQ(bench.view.hidden, c.command == ShellCommand::kCloseApp ? 1 : 0);
    EXPECT_EQ(bench.view.closed, c.command == ShellCommand::kExit ? 1 : 0);
    bench.main.End();
    bench.main.End();
    EXPECT_EQ(bench.view.closed, 1);
    bench.Send(kWmSwitchPage, 0, 1045);
    EXPECT_EQ(static_cast<std::int32_t>(bench.main.Tab()), c.tab) << "nothing moves after the end";
  }
  MainBench bench;
  bench.actions.store_refuses = true;
  bench.main.Run(ShellCommand::kCloseApp);
  EXPECT_EQ(bench.boxes.shown().at(0).text, "disk full");
}

TEST(MainShellTest, TheMenuOpensEachOfItsWindowsOnce) {
  MainBench bench;
  EXPECT_EQ(bench.main.Handle(kWmTrayMask, 0, 0), 31);
  bench.actions.meanwhile = [&bench] {
    bench.main.TrayRightClick();
    bench.main.Run(ShellCommand::kProxySettings);
  };
  bench.main.Run(ShellCommand::kProxySettings);
  EXPECT_EQ(bench.actions.done, "proxy ");
  EXPECT_EQ(bench.view.mask, 31u - 4u);
  EXPECT_EQ(bench.view.default_item, 4u);
  EXPECT_EQ(bench.view.fronts, 1);
  EXPECT_EQ(bench.main.Handle(kWmTrayMask, 0, 0), 31);
  bench.main.TrayLeftClick();
  EXPECT_EQ(bench.view.fronts, 2);
  bench.Send(kWmBanner);
  EXPECT_EQ(bench.view.banners, 1);
}

}  // namespace
}  // namespace orvalo
