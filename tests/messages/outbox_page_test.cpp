#include "messages/outbox_page.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <functional>
#include <string>
#include <thread>
#include <tuple>
#include <utility>
#include <vector>

#include "gateway/engine_requests.h"
#include "messages/message_loader.h"
#include "messages/outbox_bench.h"
#include "messages/outbox_copy.h"
#include "platform/clipboard.h"
#include "support/recording_mailbox.h"

namespace orvalo {
namespace {

class FakeWindow : public OutboxWindow {
 public:
  bool IsOnShow() const override { return on_show; }
  void SetRowCount(std::size_t count) override { rows = count; }
  void SetUnreadable(bool now) override { unreadable = now; }
  void Redraw() override { ++redraws; }
  void ShowSelection() override {}
  void ScrollToTop() override { ++scrolls; }
  void SetTabCaption(const std::string& text) override { caption = text; }
  void SetStatusLine(const std::string& text) override { status = text; }
  void OpenExport(std::vector<std::int32_t> selected) override { exports.push_back(selected); }

  bool on_show = true, unreadable = false;
  std::size_t rows = 99;
  int redraws = 0, scrolls = 0;
  std::string caption, status;
  std::vector<std::vector<std::int32_t>> exports;
};

// Keeps every request as text: what, the go-offline flag, the ids.
class FakeEngine : public EngineCommands {
 public:
  void RequestSend(IdList list) override { Note("send", list); }
  void RequestQuery(IdList list) override { Note("query", list); }
  std::vector<std::string> requests;

 private:
  void Note(std::string what, const IdList& list) {
    what += list.go_offline ? " 1:" : " 0:";
    for (const auto id : list.ids) what += " " + std::to_string(id);
    requests.push_back(what);
  }
};

class FakeLoader : public MessageLoader {
 public:
  bool LoadMessage(std::int32_t id, bool edit) override {
    loads.emplace_back(id, edit);
    return loads_it();
  }
  std::function<bool()> loads_it = [] { return true; };
  std::vector<std::pair<std::int32_t, bool>> loads;
};

class KeptClipboard : public platform::Clipboard {
 public:
  bool SetText(const std::string& text) override {
    held = text;
    return true;
  }
  std::string held;
};

struct PageBench : test::OutboxBench {
  FakeWindow window;
  test::RecordingMailbox main_window, own;
  FakeEngine engine;
  FakeLoader loader;
  KeptClipboard clipboard;
  OutboxCopy copy{database, fields, texts, clipboard};
  bool login_works = true;
  std::string logins;
  OutboxPage page{{database, settings, texts, fields, boxes, main_window, own, engine, copy,
                   [this](std::string_view user, std::string_view password) {
                     logins += std::string(user) + "/" + std::string(password) + " ";
                     return login_works;
                   },
                   [] { return std::string("Nobody answers"); }},
                  window};

  // One row for each status.
  explicit PageBench(std::vector<SmsStatus> statuses = {}) {
    settings.SetFlag(FlagSetting::kWorkingOnLine, true);
    std::int32_t time = 0;
    for (const SmsStatus status : statuses) Add(++time, ",1", "x", status);
    page.SetMessageLoader(&loader);
    page.SetUp();
  }
  void Select(std::vector<std::size_t> positions) {
    for (const auto position : positions) page.RowSelected(position, true);
  }
  std::string Selected() {
    std::string text;
    for (std::size_t i = 0; i < page.RowCount(); ++i) text += page.IsSelected(i) ? 'x' : '.';
    return text;
  }
  std::string Statuses() {
    std::string text;
    for (std::size_t i = 0; i < page.RowCount(); ++i) text += page.LineAt(i).texts[2] + " ";
    return text;
  }
};

constexpr auto kPending = SmsStatus::kPending;
constexpr auto kSent = SmsStatus::kSent;

TEST(OutboxPageTest, DrawsLinesFromTheStore) {
  PageBench bench({SmsStatus::kRoutingError});
  bench.Add(1'104'581'100, ",0821", "Hello");
  bench.page.BroughtToFront();
  EXPECT_EQ(bench.window.rows, 2u);
  const OutboxLine line = bench.page.LineAt(1);
  const std::array<std::string, kOutboxColumnCount> texts{"01/01/2005 12:05", "0821", "Pending",
                                                          "?", "Hello"};
  EXPECT_EQ(line.texts, texts);
  EXPECT_EQ(line.icon, 0);
  EXPECT_EQ(bench.page.LineAt(0).icon, 16);
  bench.database.DeleteSms(2);
  bench.database.SetSmsStatus(1, static_cast<SmsStatus>(18));
  EXPECT_EQ(bench.page.LineAt(1).texts, OutboxLine({{"?", "?", "?", "?", "?"}, 10}).texts);
  for (const std::size_t position : {0u, 1u, 2u}) EXPECT_EQ(bench.page.LineAt(position).icon, 10);
}

TEST(OutboxPageTest, CountsTheWaitingInItsCaption) {
  PageBench bench({kPending, SmsStatus::kScheduled, SmsStatus::kDelayScheduled, kSent,
                   SmsStatus::kFailed, SmsStatus::kDelivered});
  EXPECT_EQ(bench.window.caption, "Outbox (3)");
  {
    SmsDatabase::Transaction transaction(bench.database);
    for (int i = 0; i < 996; ++i) bench.Add(1, ",1", "x");
    transaction.Commit();
  }
  bench.page.UpdateCaption();
  EXPECT_EQ(bench.window.caption, "Outbox (999)");
  bench.Add(1, ",1", "x");
  bench.page.UpdateCaption();
  EXPECT_EQ(bench.window.caption, "Outbox (>999)");
}

TEST(OutboxPageTest, HeadersSortAndReverseWithTheSelection) {
  PageBench bench({kSent, kPending, SmsStatus::kFailed});
  bench.Select({0});
  const struct {
    OutboxColumn click;
    const char* statuses;
    const char* selected;
  } cases[] = {
      {OutboxColumn::kTime, "Failed Pending Sent ", "..x"},
      {OutboxColumn::kTime, "Sent Pending Failed ", "x.."},
      {OutboxColumn::kStatus, "Pending Failed Sent ", "..x"},
      {OutboxColumn::kStatus, "Sent Failed Pending ", "x.."},
  };
  for (const auto& c : cases) {
    bench.page.HeaderClicked(c.click);
    EXPECT_EQ(bench.Statuses(), c.statuses);
    EXPECT_EQ(bench.Selected(), c.selected);
  }
  bench.page.BroughtToFront();
  EXPECT_EQ(bench.Statuses(), "Pending Failed Sent ") << "ascending again";
  EXPECT_EQ(bench.Selected(), "...");
}

TEST(OutboxPageTest, KeepsTheSelectionTheListReports) {
  PageBench bench({kSent, kSent, kSent, kSent});
  bench.page.RangeSelected(2, 1);
  bench.page.RowSelected(3, true);
  bench.page.RowSelected(2, false);
  bench.page.RowSelected(4, true);
  EXPECT_EQ(bench.Selected(), ".x.x");
  bench.page.ExportCsv();
  EXPECT_EQ(bench.window.exports.back(), (std::vector<std::int32_t>{2, 4}));
  bench.page.SelectionLost();
  EXPECT_EQ(bench.Selected(), "....");
  bench.page.RangeSelected(3, 90);
  EXPECT_EQ(bench.Selected(), "...x");
  bench.page.SelectAll();
  EXPECT_EQ(bench.Selected(), "xxxx");
  EXPECT_EQ(bench.window.scrolls, 1);
}

TEST(OutboxPageTest, EnablesTheMenuByTheRow) {
  const std::string all = "EcdNARr";
  const struct {
    std::int64_t row;
    std::string enabled;
  } cases[] = {
      {-1, "A"}, {0, all}, {1, "A"}, {2, "A"}, {3, "EcdNAR"}, {4, all}, {5, "A"},
  };
  PageBench bench({kPending, SmsStatus::kEditing, SmsStatus::kProcessing, SmsStatus::kExpanded,
                   SmsStatus::kMessageExpired});
  for (const auto& c : cases) {
    ASSERT_TRUE(bench.page.OpenMenu(c.row));
    std::string enabled;
    for (std::size_t i = 0; i < all.size(); ++i)
      if (bench.page.IsEnabled(static_cast<OutboxCommand>(i))) enabled += all[i];
    EXPECT_EQ(enabled, c.enabled) << c.row;
  }
  bench.page.OpenMenu(0);
  bench.database.SetSmsStatus(1, SmsStatus::kProcessing);
  bench.page.Run(OutboxCommand::kEdit);
  EXPECT_TRUE(bench.loader.loads.empty()) << "taken in hand while the menu was open";
  EXPECT_EQ(bench.boxes.shown().size(), 1u) << "and told";
  PageBench empty;
  EXPECT_FALSE(empty.page.OpenMenu(-1));
  empty.page.ExportCsv();
  EXPECT_EQ(empty.boxes.shown().at(0).text, "There is nothing to export");
  EXPECT_TRUE(empty.window.exports.empty());
}

TEST(OutboxPageTest, LoadsAndCopiesTheMessageClicked) {
  PageBench bench({kSent, kSent});
  bench.page.OpenMenu(0);
  bench.page.HeaderClicked(OutboxColumn::kTime);  // the message is now in the other place
  bench.page.Run(OutboxCommand::kEdit);
  bench.page.Run(OutboxCommand::kResend);
  EXPECT_EQ(bench.loader.loads,
            (std::vector<std::pair<std::int32_t, bool>>{{1, true}, {1, false}}));
  const test::RecordingMailbox::Message compose{kWmSwitchPage, 0, 1044};
  EXPECT_EQ(bench.main_window.messages(), std::vector(2, compose));
  bench.page.Run(OutboxCommand::kCopy);
  EXPECT_NE(bench.clipboard.held.find("00:00"), std::string::npos);
  bench.loader.loads_it = [&] {  // the engine is quicker
    return bench.database.SetSmsStatus(1, SmsStatus::kProcessing), false;
  };
  bench.page.Run(OutboxCommand::kEdit);
  EXPECT_EQ(bench.main_window.messages().size(), 2u) << "stays in the outbox";
  EXPECT_TRUE(bench.boxes.shown().at(0).text.starts_with("This message is being sent"));
}

TEST(OutboxPageTest, DeletesTheSelectedWhenConfirmed) {
  PageBench bench({kSent, kPending, kSent, kSent, kPending});
  bench.page.HeaderClicked(OutboxColumn::kTime);
  bench.Select({0, 1, 2, 4});
  bench.page.OpenMenu(0);
  bench.boxes.Answer(platform::BoxAnswer::kNo);
  bench.page.Run(OutboxCommand::kDelete);
  EXPECT_EQ(bench.boxes.shown().at(0).text, "Are you sure you want to delete 4 message(s)?");
  EXPECT_EQ(bench.boxes.shown().at(0).caption, "Confirm Message Delete");
  EXPECT_EQ(bench.database.CountSms(), 5);

  bench.boxes.Answer(platform::BoxAnswer::kYes);
  bench.page.Run(OutboxCommand::kDelete);
  ASSERT_EQ(bench.database.CountSms(), 1);
  EXPECT_EQ(bench.database.AllSms().at(0).id, 2);
  EXPECT_EQ(bench.window.rows, 1u);
  EXPECT_EQ(bench.window.caption, "Outbox (1)");
  EXPECT_EQ(bench.Selected(), ".");

  // What is on its way stays, and that is said.
  bench.database.SetSmsStatus(2, SmsStatus::kProcessing);
  bench.Add(1, ",1", "x");
  bench.page.BroughtToFront();
  bench.Select({0, 1});
  bench.page.OpenMenu(0);
  bench.page.Run(OutboxCommand::kDelete);
  ASSERT_EQ(bench.database.CountSms(), 1);
  EXPECT_EQ(bench.database.AllSms().at(0).id, 2);
  EXPECT_THAT(bench.boxes.shown().back().text, testing::StartsWith("This message is being sent"));
}

TEST(OutboxPageTest, TellsWhenTheStoreRefuses) {
  PageBench bench({kSent});
  sqlite3* other = nullptr;
  ASSERT_EQ(sqlite3_open(bench.database.Path().c_str(), &other), SQLITE_OK);
  ASSERT_EQ(sqlite3_exec(other, "DROP TABLE NextSMSID", nullptr, nullptr, nullptr), SQLITE_OK);
  sqlite3_close(other);
  bench.Select({0});
  bench.page.OpenMenu(0);
  bench.boxes.Answer(platform::BoxAnswer::kYes);
  bench.page.Run(OutboxCommand::kDelete);
  ASSERT_EQ(bench.boxes.shown().size(), 2u);
  EXPECT_NE(bench.boxes.shown().at(1).text.find("NextSMSID"), std::string::npos);
  EXPECT_EQ(bench.page.RowCount(), 1u);
}

TEST(OutboxPageTest, ADamagedTableIsToldOnceAndDoesNotLookEmpty) {
  PageBench bench({kSent, kSent});
  EXPECT_FALSE(bench.window.unreadable);
  sqlite3* other = nullptr;
  ASSERT_EQ(sqlite3_open(bench.database.Path().c_str(), &other), SQLITE_OK);
  ASSERT_EQ(sqlite3_exec(other, "ALTER TABLE SMS RENAME TO OLD", nullptr, nullptr, nullptr),
            SQLITE_OK);
  sqlite3_close(other);
  bench.page.LineAt(0);
  bench.page.BroughtToFront();
  bench.page.BroughtToFront();
  EXPECT_TRUE(bench.window.unreadable);
  EXPECT_EQ(bench.own.messages(),
            (std::vector<test::RecordingMailbox::Message>{{kWmOutboxUnreadable, 0, 0}}));
  bench.page.TellUnreadable();
  EXPECT_NE(bench.boxes.shown().at(0).text.find("cannot be read"), std::string::npos);
}

TEST(OutboxPageTest, GoesOnlineForACommand) {
  struct Case {
    OutboxCommand command;
    bool button;  // "Send Now" in place of the command
    const char* request;
    const char *text, *caption;
  };
  const Case cases[] = {
      {OutboxCommand::kSendNow, false, "send ?: 1 3",
       "Unable to go online and send the highlighted outbox items!", "Send Now failed"},
      {OutboxCommand::kRefreshStatus, false, "query ?: 1 3",
       "Unable to go online and query the status of the highlighted outbox items!", "Query failed"},
      {OutboxCommand::kSendNow, true, "send ?: -1",
       "Unable to go online and send the outbox items!", "Send Now failed"},
  };
  for (const Case& c : cases) {
    PageBench bench({kPending, kPending, kPending});
    bench.settings.SetText(TextSetting::kLogin, "me");
    bench.settings.SetText(TextSetting::kPassword, "secret");
    bench.Select({0, 2});
    bench.page.OpenMenu(0);
    const auto run = [&] { c.button ? bench.page.SendAllNow() : bench.page.Run(c.command); };
    const auto request = [&](char flag) {
      std::string text = c.request;
      text[text.find('?')] = flag;
      return text;
    };
    run();
    EXPECT_EQ(bench.engine.requests, std::vector{request('0')});
    EXPECT_TRUE(bench.logins.empty() && bench.main_window.messages().empty());

    bench.settings.SetFlag(FlagSetting::kWorkingOnLine, false);
    bench.login_works = false;
    run();
    EXPECT_EQ(bench.engine.requests.size(), 1u);
    EXPECT_EQ(bench.boxes.shown().at(0).text, std::string(c.text) + "\r\n\r\nNobody answers");
    EXPECT_EQ(bench.boxes.shown().at(0).caption, c.caption);
    EXPECT_EQ(bench.boxes.shown().at(0).icon, platform::BoxIcon::kStop);
    EXPECT_FALSE(bench.settings.Flag(FlagSetting::kWorkingOnLine));
    EXPECT_EQ(std::get<0>(bench.main_window.messages().back()), kWmOffline);

    bench.login_works = true;
    run();
    EXPECT_EQ(bench.engine.requests.back(), request('1'));
    EXPECT_TRUE(bench.settings.Flag(FlagSetting::kWorkingOnLine));
    EXPECT_EQ(std::get<0>(bench.main_window.messages().back()), kWmOnline);
    EXPECT_EQ(bench.logins, "me/secret me/secret ");
  }
}

TEST(OutboxPageTest, RefreshesOnItsOwnThread) {
  PageBench bench({kPending, kPending, kPending});
  bench.page.HeaderClicked(OutboxColumn::kStatus);
  const int redraws = bench.window.redraws;
  std::thread worker([&] {
    for (const std::int32_t id : {1, 2}) {
      bench.database.SetSmsStatus(id, SmsStatus::kProcessing);
      bench.page.MessageInHand(id);
    }
  });
  bench.page.LineAt(0);
  worker.join();
  EXPECT_EQ(bench.own.messages().size(), 1u) << "one until it is answered";
  EXPECT_EQ(bench.Statuses().find("Processing Processing"), 0u) << "not sorted yet";
  bench.Select({0});
  bench.page.RefreshRequested();
  EXPECT_EQ(bench.Statuses(), "Pending Processing Processing ");
  EXPECT_EQ(bench.Selected(), ".x.");

  bench.database.SetSmsStatus(2, kSent);  // the outcome of the one before
  bench.database.SetSmsStatus(3, SmsStatus::kProcessing);
  bench.page.MessageInHand(3);
  EXPECT_EQ(bench.own.messages().size(), 2u);
  bench.page.RefreshRequested();
  EXPECT_EQ(bench.Statuses(), "Sent Processing Processing ");
  EXPECT_EQ(bench.window.redraws, redraws + 2);

  bench.Add(9, ",1", "new");
  bench.page.MessageInHand(0);
  bench.window.on_show = false;
  bench.page.RefreshRequested();
  EXPECT_EQ(bench.window.redraws, redraws + 2);
  bench.window.on_show = true;
  bench.page.MessageInHand(0);
  bench.page.RefreshRequested();
  EXPECT_EQ(bench.Statuses(), "Pending Sent Processing Processing ");
  EXPECT_EQ(bench.Selected(), "....");
}

TEST(OutboxPageTest, DescribesTheStatuses) {
  PageBench bench;
  const auto descriptions = bench.page.StatusDescriptions();
  ASSERT_EQ(descriptions.size(), 18u);
  EXPECT_EQ(descriptions.front(), bench.texts.Load(1520));
  EXPECT_EQ(descriptions.back(), bench.texts.Load(1537));
}

}  // namespace
}  // namespace orvalo
