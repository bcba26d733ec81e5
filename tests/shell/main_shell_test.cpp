#include "shell/main_shell.h"

#include <gtest/gtest.h>

#include <utility>

#include "shell/shell_bench.h"
#include "shell/shell_messages.h"
#include "store/store_error.h"

namespace orvalo {
namespace {

// The window and all that it sets off, as a transcript of words.
class Scene : public MainShellView, public MainShellActions {
 public:
  void StartTimer(ShellTimer timer, std::int64_t ms) override { Note("start", Id(timer), ms); }
  void StopTimer(ShellTimer timer) override { Note("stop", Id(timer)); }
  void SetTitle(const std::string& text) override { Note("title", text); }
  void AddTrayIcon(TrayIcon icon, const std::string& tip) override { Note("add", Id(icon), tip); }
  void SetTrayIcon(TrayIcon icon) override { Note("icon", Id(icon)); }
  void OpenTrayMenu(std::uint32_t mask, std::size_t item) override { Note("menu", mask, item); }
  void ShowTabs() override { Note("tabs"); }
  void DrawTab(ShellTab tab, bool selected) override { Note(selected ? "on" : "off", Id(tab)); }
  void ShowPage(ShellPage page) override { Note("page", Id(page)); }
  void ShowBusy(bool shown, bool lit) override { Note("busy", shown, lit); }
  void SetBusyTip(const std::string& text) override { Note("tip", text); }
  void ShowOffline(bool shown, bool lit) override { Note("offline", shown, lit); }
  void LightBalance(bool lit) override { Note("balance", lit); }
  bool IsOnScreen() const override { return on_screen; }
  void BringToFront() override { Note("front"); }
  void Hide() override { Note("hide"); }
  void ReloadBanner() override { Note("banner"); }
  void Close() override { Note("close"); }

  void StartEngine() override { Note("engine"); }
  void CommitStore() override {
    Note("commit");
    if (store_refuses) throw StoreError("disk full");
  }
  void ShowVersionInfo() override { Note("version"); }
  void CheckForUpdates() override { Note("updates"); }
  void OpenProxySettings() override {
    Note("proxy");
    if (while_open) while_open();
  }
  void RunComposeCommand(ShellCommand command) override { Note("compose", Id(command)); }
  void ApplyOptions() override {
    Note("apply");
    if (while_applying) while_applying();
  }
  void ShowWorkingMode() override { Note("mode"); }
  void SetOutboxActivity(const std::string& text) override { Note("outbox", text); }

  std::string Take() { return std::exchange(words_, {}); }
  bool store_refuses = false;
  bool on_screen = true;
  std::function<void()> while_open, while_applying;

 private:
  template <typename Enumeration>
  static int Id(Enumeration value) {
    return static_cast<int>(value);
  }
  static std::string Word(const std::string& text) { return text; }
  template <typename Number>
  static std::string Word(Number number) {
    return std::to_string(number);
  }
  template <typename... Details>
  void Note(const char* what, const Details&... details) {
    if (!words_.empty()) words_ += ' ';
    words_ += what;
    ((words_ += ':' + Word(details)), ...);
  }

  std::string words_;
};

struct MainBench : test::ShellBench {
  Scene scene;
  test::RecordingMailbox posts, compose;
  MainShell main{{settings, texts, clock, boxes, posts, compose, scene, scene}};

  // Logged in and working off-line, so that nothing but what a test does asks for the balance.
  explicit MainBench(bool logged_in = false) {
    if (!logged_in) return;
    settings.SetFlag(FlagSetting::kWorkingOnLine, false);
    main.SetUp();
    main.LoggedIn();
    posts.Clear();
    scene.Take();
  }
  std::string After(std::uint32_t message, std::int32_t wparam = 0, std::int32_t lparam = 0) {
    main.Handle(message, wparam, lparam);
    return scene.Take();
  }
  std::string AfterTimer(ShellTimer timer) {
    main.OnTimer(timer);
    return scene.Take();
  }
};

TEST(MainShellTest, BeginsWithTheLoginPageAndGoesOnToTheFirstTab) {
  const struct {
    const char* client;
    bool online;
    const char* created;
    const char* mode;
  } cases[] = {
      {"Orvalo", true, "title:Orvalo add:221:Orvalo banner page:1", "icon:221 mode"},
      {"Other", false, "title:SMS add:221:SMS banner page:1",
       "icon:258 offline:1:1 start:4:1000 mode"},
  };
  for (const auto& c : cases) {
    MainBench bench;
    bench.settings.SetText(TextSetting::kClientId, c.client);
    bench.settings.SetFlag(FlagSetting::kWorkingOnLine, c.online);
    bench.main.SetUp();
    EXPECT_EQ(bench.scene.Take(), c.created);
    bench.main.LoggedIn();
    EXPECT_EQ(bench.scene.Take(), "tabs on:1044 page:3 engine");
    const auto posted = bench.posts.messages();
    ASSERT_EQ(posted.size(), c.online ? 2u : 1u);
    EXPECT_EQ(bench.After(std::get<0>(posted[0])), c.mode);
    if (c.online) {
      EXPECT_EQ(std::get<0>(posted[1]), kWmBalance);
    }
  }
}

TEST(MainShellTest, SwitchesPagesByTheirTabs) {
  const std::pair<std::int32_t, const char*> cases[] = {
      {1044, ""}, {1047, "off:1044 on:1047 page:6"},       {1047, ""},
      {9999, ""}, {1045, "apply off:1047 on:1045 page:4"}, {1046, "off:1045 on:1046 page:5"},
      {0, ""},    {1044, "off:1046 on:1044 page:3"},
  };
  MainBench bench(true);
  for (const auto& [tab, done] : cases) EXPECT_EQ(bench.After(kWmSwitchPage, 0, tab), done) << tab;
}

TEST(MainShellTest, TellsWhatTheEngineIsDoing) {
  const struct {
    std::uint32_t message;
    std::int32_t wparam, lparam;
    std::string text;
  } cases[] = {
      {kWmBusy, 0, 0, "Communicating to server ..."},
      {kWmPromoting, 0, 0, "Performing escalation"},
      {kWmProgress, 2, 5, "Performing escalation: 2 of 5"},
      {kWmSending, 0, 0, "Sending SMS"},
      {kWmProgress, 3, 40, "Sending SMS:3 SMS to go. Expanding(40)"},
      {kWmBusy, 0, 0, "Communicating to server ..."},
      {kWmProgress, 2, 39, "Sending SMS:2 SMS to go. Expanding(39)"},
      {kWmQuerying, 0, 0, "Querying status"},
      {kWmProgress, 7, 0, "Querying status: 7 SMS still to check!"},
  };
  MainBench bench;
  std::string begin = " busy:1:1 start:3:200";
  EXPECT_EQ(bench.After(kWmProgress, 1, 2), "") << "of no phase";
  for (const auto& c : cases) {
    EXPECT_EQ(bench.After(c.message, c.wparam, c.lparam),
              "outbox:" + c.text + " tip:" + c.text + std::exchange(begin, ""));
  }
  EXPECT_EQ(bench.AfterTimer(ShellTimer::kBusyBlink), "busy:1:0");
  EXPECT_EQ(bench.AfterTimer(ShellTimer::kBusyBlink), "busy:1:1");
  EXPECT_EQ(bench.After(kWmIdle), "outbox: stop:3 busy:0:1");
  EXPECT_EQ(bench.AfterTimer(ShellTimer::kBusyBlink), "") << "was on its way";
  EXPECT_EQ(bench.After(kWmProgress, 6, 0), "");
}

TEST(MainShellTest, ShowsHowTheProgramWorks) {
  MainBench bench;
  EXPECT_EQ(bench.After(kWmOffline), "icon:258 offline:1:1 start:4:1000 mode");
  EXPECT_EQ(bench.AfterTimer(ShellTimer::kOfflineBlink), "offline:1:0");
  bench.main.TaskbarCreated();
  EXPECT_EQ(bench.scene.Take(), "add:258:SMS") << "added again as it was";
  EXPECT_EQ(bench.After(kWmOffline), "icon:258 mode") << "keeps its rhythm";
  EXPECT_EQ(bench.After(kWmOnline), "icon:221 stop:4 offline:0:1 mode");
  EXPECT_EQ(bench.After(kWmBanner), "banner");
}

TEST(MainShellTest, AsksForTheBalanceAtMostEveryTenSeconds) {
  MainBench bench;
  EXPECT_EQ(bench.After(kWmBalance), "balance:1 start:2:500 start:1:10000");
  for (int i = 0; i < 4; ++i) {
    bench.clock.Advance(200);
    EXPECT_EQ(bench.After(kWmBalance), "");
  }
  EXPECT_EQ(bench.AfterTimer(ShellTimer::kBalanceBlink), "balance:0");
  const struct {
    std::int64_t after;
    const char* done;
    std::size_t queries;
  } cases[] = {
      {8'700, "start:1:500", 0},  // early
      {500, "stop:1 start:1:10000", 1},
      {10'000, "stop:1 stop:2 balance:1", 2},
      {10'000, "", 2},  // was on its way
  };
  for (const auto& c : cases) {
    bench.clock.Advance(c.after);
    bench.main.OnTimer(ShellTimer::kBalance);
    for (const auto& message : bench.posts.messages())
      bench.main.Handle(std::get<0>(message), 0, 0);
    bench.posts.Clear();
    EXPECT_EQ(bench.scene.Take(), c.done);
    ASSERT_EQ(bench.compose.messages().size(), c.queries);
  }
  EXPECT_EQ(std::get<0>(bench.compose.messages()[0]), kWmQueryBalance);
}

TEST(MainShellTest, RunsItsCommands) {
  const struct {
    std::int32_t tab;
    ShellCommand command;
    const char* done;
  } cases[] = {
      {1045, ShellCommand::kShowVersion, "version"},
      {1045, ShellCommand::kCheckForUpdates, "updates"},
      {1045, ShellCommand::kProxySettings, "proxy"},
      {1047, ShellCommand::kCloseApp, "hide commit"},
      {1044, ShellCommand{0xE122}, "compose:57634"},
      {1044, ShellCommand{32804}, "compose:32804"},
      {1046, ShellCommand::kCopy, ""},
      {1047, ShellCommand::kExit, "apply close"},
      {1046, ShellCommand::kExit, "close"},
  };
  for (const auto& c : cases) {
    MainBench bench(true);
    bench.After(kWmSwitchPage, 0, c.tab);
    bench.main.Run(c.command);
    EXPECT_EQ(bench.scene.Take(), c.done);
    bench.main.End();
    bench.scene.Take();
    bench.main.End();
    EXPECT_EQ(bench.After(kWmSwitchPage, 0, 1045), "") << "nothing moves after the end";
  }
  MainBench held(true);
  held.After(kWmSwitchPage, 0, 1047);
  held.scene.while_applying = [&held] { held.main.End(); };
  held.main.End();
  EXPECT_EQ(held.scene.Take(), "apply close") << "the second end closes what the first waits for";
  MainBench bench;
  bench.scene.store_refuses = true;
  bench.main.Run(ShellCommand::kCloseApp);
  EXPECT_EQ(bench.boxes.shown().at(0).text, "disk full");
}

TEST(MainShellTest, TheMenuOpensEachOfItsWindowsOnce) {
  MainBench bench;
  bench.scene.while_open = [&bench] {
    bench.main.TrayRightClick();
    bench.main.Run(ShellCommand::kProxySettings);
    bench.main.Run(ShellCommand::kShowVersion);
  };
  bench.main.Run(ShellCommand::kProxySettings);
  EXPECT_EQ(bench.scene.Take(), "proxy front menu:27:4 version");
  EXPECT_EQ(bench.main.Handle(kWmTrayMask, 0, 0), 31);
  bench.main.TrayLeftClick();
  EXPECT_EQ(bench.scene.Take(), "front");
  bench.scene.on_screen = false;  // behind its icon it stays there
  bench.main.TrayRightClick();
  EXPECT_EQ(bench.scene.Take(), "menu:31:4");
}

}  // namespace
}  // namespace orvalo
