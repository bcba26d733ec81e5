#include "messages/compose_page.h"

#include <cstdint>

#include "messages/compose_services.h"
#include "messages/message_texts.h"
#include "messages/outbox_caption.h"
#include "messages/recipient_fixture.h"
#include "platform/code_page.h"
#include "store/store_error.h"

namespace orvalo::test {
namespace {

// Queues as the engine does, without one.
struct StoringServices : ComposeServices {
  explicit StoringServices(SmsDatabase& to) : database(to) {}
  std::int32_t QueueMessage(const QueuedMessage& message) override {
    if (refusals > 0 && --refusals == 0) throw StoreError("disk full");
    return database.AddSms({message.status, message.time, message.type, message.ref_id, message.to,
                            message.text, "sender", message.delay, "?"});
  }
  void QueryBalance() override { balance = "Balance: 8.7"; }
  std::string BalanceText() const override { return balance; }
  std::string BalanceHint() const override { return {}; }

  SmsDatabase& database;
  int refusals = 0;  // the call that fails, counted from 1
  std::string balance = "Balance: 0.0?";
};

struct CountingCaption : OutboxCaption {
  void UpdateCaption() override { ++updates; }
  int updates = 0;
};

// A window that behaves as fields do: it tells the page what changed in the text.
struct FakeComposeView : ComposeView {
  void SetTypes(const std::vector<std::string>& names) override { types = names; }
  void ChooseType(std::optional<std::size_t> entry) override { type = entry; }
  void ShowInputs(std::uint32_t shown) override { mask = shown; }
  void ShowText(const std::string& shown) override { text = shown; }
  void InsertText(std::size_t position, const std::string& inserted) override {
    text.insert(platform::FirstCharacters(text, position).size(), inserted);
    page->TextChanged(text);
  }
  void LimitTextTo(std::optional<std::size_t> characters) override { limit = characters; }
  void SetCaret(std::size_t position) override { caret = position; }
  void FocusText() override { page->TextFocusGained(); }
  void ShowCounter(const std::string& shown) override { counter = shown; }
  void LimitPathTo(std::size_t characters) override { path_limit = characters; }
  void ShowPath(const std::string& shown) override { path = shown; }
  void PreviewPicture(const std::string& shown) override { preview = "<" + shown + ">"; }
  void NameSendButton(const std::string& name) override { send_button = name; }
  void EnableSend(bool enabled) override { send = enabled; }
  void EnableSchedule(bool enabled) override { schedule_enabled = enabled; }
  void ShowBalance(const std::string& line, const std::string&) override { balance = line; }
  std::optional<std::string> PickFile(const std::string& pattern, const std::string&) override {
    picked_pattern = pattern;
    return picked;
  }
  std::optional<Schedule> AskSchedule() override {
    ++asked;
    return schedule;
  }
  UpdateTiming AskUpdateTiming(const std::string& time) override {
    asked_about += time + ";";
    return timing;
  }
  Focus FocusedInput() const override { return focus; }
  std::optional<std::size_t> SelectedNumber() const override { return selected; }
  void RunEditCommand(Focus input, EditCommand command) override {
    ran +=
        std::to_string(static_cast<int>(input)) + std::to_string(static_cast<int>(command)) + ";";
  }
  std::string ClipboardText() const override { return clipboard; }
  void SetClipboardText(const std::string& shown) override { clipboard = shown; }

  ComposePage* page = nullptr;
  std::vector<std::string> types;
  std::optional<std::size_t> type, limit, selected;
  std::uint32_t mask = 0;
  std::size_t caret = 0, path_limit = 0;
  std::string text, counter, path, preview, send_button, balance, picked_pattern, ran, clipboard;
  bool send = true, schedule_enabled = true;
  std::optional<std::string> picked;
  std::optional<Schedule> schedule;
  int asked = 0;
  std::string asked_about;
  UpdateTiming timing = UpdateTiming::kGoBack;
  Focus focus = Focus::kElsewhere;
};

class ComposeTest : public RecipientTest {
 protected:
  ComposeTest() {
    window_.page = &page_;
    page_.SetUp();
  }
  void Write(const std::string& text) {
    window_.text = text;
    page_.TextChanged(text);
  }
  // Status, time, type, whose copy, recipients, text, delay and charge of every row.
  std::string Rows() {
    std::string rows;
    for (const MessageRow& row : db_.AllSms()) {
      rows += std::to_string(row.stat) + " " + std::to_string(row.time) + " " +
              std::to_string(row.type) + " " + std::to_string(row.ref_id) + " " + row.to + " " +
              row.msg + " " + std::to_string(row.delay) + "\n";
    }
    return rows;
  }
  std::int32_t Stored(SmsStatus status, std::int32_t type = 0, std::string text = "stored") {
    return db_.AddSms({status, 500, type, 0, ",111", std::move(text), "", 7, "?"});
  }
  std::int32_t StatusOf(std::int32_t id) { return db_.GetSms(id).value().stat; }
  std::string FileWith(const std::string& bytes) {
    Spill(folder_.File("card"), bytes);
    return folder_.File("card");
  }
  void ExpectEmptyForm() {
    EXPECT_EQ(window_.text + window_.path, "");
    EXPECT_EQ(window_.counter, "0 (1)");
    EXPECT_EQ(window_.send_button, "Send >>");
    EXPECT_FALSE(window_.send || window_.schedule_enabled || page_.IsEditing());
    EXPECT_EQ(view_.count, 0u);
  }

  StoringServices services_{db_};
  CountingCaption caption_;
  FakeComposeView window_;
  MessageTypeNames names_;
  ComposePage page_{
      {db_, settings_, texts_, names_, boxes_, services_, caption_, selection_, window_, clock_}};
};

TEST_F(ComposeTest, StartsEmpty) {
  EXPECT_THAT(window_.types,
              testing::ElementsAre("Text", "Flash", "Unicode", "Nokia vCard", "Nokia vCal"));
  EXPECT_EQ(window_.type, 0u);
  EXPECT_EQ(window_.mask, 63u);
  EXPECT_EQ(window_.limit, 2048u);
  EXPECT_EQ(window_.path_limit, 260u);
  EXPECT_EQ(window_.balance, "Balance: 0.0?");
  EXPECT_FALSE(view_.search_enabled);
  ExpectEmptyForm();
  page_.RefreshBalance();
  EXPECT_EQ(window_.balance, "Balance: 8.7");
  EXPECT_EQ(caption_.updates, 1);
}

TEST_F(ComposeTest, SendQueuesOneRow) {
  page_.Send();  // no text: nothing happens
  EXPECT_TRUE(boxes_.shown().empty());
  Write("Hello");
  page_.TypeChosen(2);
  EXPECT_TRUE(window_.send && window_.schedule_enabled);
  EXPECT_EQ(window_.counter, "5 (1)");

  page_.Send();
  ASSERT_EQ(boxes_.shown().size(), 1u);
  EXPECT_EQ(boxes_.shown()[0].text, "No destination mobile numbers selected");
  EXPECT_EQ(boxes_.shown()[0].caption, "Not enough info to send SMS");
  EXPECT_EQ(boxes_.shown()[0].icon, platform::BoxIcon::kNone);
  EXPECT_EQ(window_.text + Rows(), "Hello");

  Type("111");
  services_.refusals = 1;
  EXPECT_THROW(page_.Send(), StoreError);
  EXPECT_EQ(window_.text + Numbers(), "Hello111;;");
  EXPECT_EQ(caption_.updates, 0);
  page_.Send();
  EXPECT_EQ(Rows(), "0 1000000000 2 1 ,111 Hello 0\n");
  EXPECT_EQ(caption_.updates, 1);
  EXPECT_EQ(page_.Type(), 2);
  ExpectEmptyForm();
}

TEST_F(ComposeTest, ScheduleQueuesEveryOccurrence) {
  window_.schedule = Schedule{{{100}, {200}, {300}}, 2};
  page_.ScheduleMessage();
  Write("Later");
  page_.ScheduleMessage();
  EXPECT_EQ(boxes_.shown().size(), 1u);
  EXPECT_EQ(window_.asked, 0);

  Type("111");
  services_.refusals = 2;
  EXPECT_THROW(page_.ScheduleMessage(), StoreError);
  EXPECT_EQ(Rows(), "");  // all or none
  page_.ScheduleMessage();
  EXPECT_EQ(Rows().substr(0, Rows().find('\n')), "6 100 0 1 ,111 Later 172800");
  EXPECT_THAT(Rows(), testing::HasSubstr("\n6 200 0 1 ,111 Later 172800\n6 300 0 1 ,111 "));
  EXPECT_EQ(caption_.updates, 1);
  ExpectEmptyForm();

  Write("Held");
  Type("222");
  window_.schedule = Schedule{{{400}}, 0};
  page_.ScheduleMessage();
  EXPECT_THAT(Rows(), testing::EndsWith("\n4 400 0 4 ,222 Held 0\n"));

  for (const auto& nothing : {std::optional<Schedule>(), std::optional(Schedule{})}) {
    window_.schedule = nothing;
    Write("Kept");
    Type("333");
    page_.ScheduleMessage();
    EXPECT_EQ(window_.text, "Kept");
    EXPECT_EQ(db_.CountSms(), 4);
  }
  EXPECT_THAT(RecentNumbers(), testing::StartsWith("Direct (333);"));
}

TEST_F(ComposeTest, UpdateChangesTheEditedRow) {
  struct Case {
    SmsStatus before, after;
  };
  for (const Case& one : {Case{SmsStatus::kFailed, SmsStatus::kPending},
                          {SmsStatus::kDelayScheduled, SmsStatus::kDelayScheduled},
                          {SmsStatus::kScheduledOnServer, SmsStatus::kDelayScheduled}}) {
    const std::int32_t id = Stored(one.before);
    page_.LoadMessage(id, true);
    EXPECT_EQ(StatusOf(id), 5);
    EXPECT_EQ(window_.send_button, "Update >>");
    EXPECT_TRUE(window_.send && page_.IsEditing());
    EXPECT_FALSE(window_.schedule_enabled);
    EXPECT_EQ(Numbers(), "111;;");
    page_.ScheduleMessage();
    EXPECT_EQ(window_.asked, 0);
    Write("changed");
    Type("222");
    page_.TypeChosen(1);
    page_.Send();
    const MessageRow row = db_.GetSms(id).value();
    EXPECT_EQ(row.stat, static_cast<std::int32_t>(one.after));
    EXPECT_EQ(row.to + row.to_info + row.msg, ",111,222111,222changed");
    EXPECT_EQ(std::vector({row.type, row.time, row.delay}), std::vector({1, 500, 7}));
    ExpectEmptyForm();
  }
  EXPECT_EQ(db_.CountSms(), 3);
  EXPECT_EQ(caption_.updates, 3);
}

TEST_F(ComposeTest, AScheduledMessageIsNotSentBeforeItsTimeUnasked) {
  const auto scheduled = [&](std::int32_t time) {
    return db_.AddSms({SmsStatus::kScheduled, time, 0, 0, ",111", "stored", "", 0, "?"});
  };
  const auto update = [&](std::int32_t id, UpdateTiming timing) {
    page_.LoadMessage(id, true);
    window_.asked_about.clear();
    window_.timing = timing;
    Write("changed");
    page_.Send();
    return StatusOf(id);
  };
  const auto now = static_cast<std::int32_t>(clock_.Now());
  const std::int32_t later = scheduled(now + 86'400);
  EXPECT_EQ(update(later, UpdateTiming::kGoBack), 5) << "the edit goes on";
  EXPECT_EQ(window_.asked_about, TimeText(texts_, clock_, now + 86'400) + ";");
  EXPECT_EQ(window_.text, "changed");
  EXPECT_EQ(update(later, UpdateTiming::kAtItsTime), 4);
  EXPECT_EQ(db_.GetSms(later)->msg, "changed");
  EXPECT_EQ(db_.GetSms(later)->time, now + 86'400);
  EXPECT_EQ(update(later, UpdateTiming::kNow), 0);
  EXPECT_EQ(update(scheduled(now), UpdateTiming::kGoBack), 0);
  EXPECT_EQ(window_.asked_about, "") << "due already";
}

TEST_F(ComposeTest, LeavingEditingGivesTheStatusBack) {
  const std::int32_t failed = Stored(SmsStatus::kFailed), sent = Stored(SmsStatus::kSent);
  page_.LoadMessage(failed, true);
  page_.LoadMessage(sent, true);
  EXPECT_EQ(StatusOf(failed), 2);
  EXPECT_EQ(StatusOf(sent), 5);
  page_.ClearForm();
  EXPECT_EQ(StatusOf(sent), 3);
  ExpectEmptyForm();
  page_.LoadMessage(sent, false);
  EXPECT_EQ(StatusOf(sent), 3);
  EXPECT_EQ(window_.send_button + window_.text, "Send >>stored");
  page_.Send();
  EXPECT_EQ(db_.CountSms(), 3);
  EXPECT_FALSE(page_.LoadMessage(99, true));
  ExpectEmptyForm();
  db_.SetSmsStatus(sent, SmsStatus::kProcessing);
  EXPECT_FALSE(page_.LoadMessage(sent, true)) << "it would be sent twice";
  ExpectEmptyForm();
  EXPECT_EQ(StatusOf(sent), 10);
}

TEST_F(ComposeTest, AMessageDeletedWhileEditedIsNotLost) {
  const std::int32_t id = Stored(SmsStatus::kFailed);
  page_.LoadMessage(id, true);
  Write("changed");
  db_.DeleteSms(id);
  page_.Send();
  EXPECT_EQ(window_.text + window_.send_button, "changedSend >>");
  ASSERT_EQ(boxes_.shown().size(), 1u);
  EXPECT_THAT(boxes_.shown()[0].text, testing::HasSubstr("Press \"Send >>\" to send"));
  EXPECT_EQ(Rows(), "");
  page_.Send();
  EXPECT_THAT(Rows(), testing::HasSubstr(" ,111 changed "));
}

TEST_F(ComposeTest, InsertsFollowOneAnotherAtTheSavedCaret) {
  settings_.SetFlag(FlagSetting::kSpanSms, true);
  settings_.SetText(TextSetting::kSignature, "\xC3\xA9!");
  Write("\xC3\xA9t\xC3\xA9 go");
  page_.TextFocusLost(3);
  for (const auto button :
       {kNameButton, kTitleButton, kSurnameButton, kCustomButton, kSignatureButton}) {
    page_.InsertField(button);
  }
  const std::string fields = "<<FIRSTNAME>><<TITLE>><<SURNAME>><<CUSTOM>>\xC3\xA9!";
  EXPECT_EQ(window_.text, "\xC3\xA9t\xC3\xA9" + fields + " go");
  EXPECT_EQ(window_.caret, 3 + platform::CountCharacters(fields));
  EXPECT_EQ(window_.counter, std::to_string(platform::CountCharacters(window_.text)) + " (1)");
  page_.TypeChosen(3);
  const std::string before = window_.text;
  page_.InsertField(kNameButton);
  EXPECT_EQ(window_.text, before);
  page_.ClearForm();
  page_.TypeChosen(0);
  page_.TextFocusLost(50);  // beyond the text
  page_.InsertField(kTitleButton);
  EXPECT_EQ(window_.text, "<<TITLE>>");
}

TEST_F(ComposeTest, FocusAppliesTheLengthLimit) {
  const std::string text(200, 'x');
  page_.LoadMessage(Stored(SmsStatus::kSent, 0, text), false);
  EXPECT_EQ(window_.text, text);
  page_.TextFocusLost(180);
  settings_.SetFlag(FlagSetting::kSpanSms, true);
  page_.TextFocusGained();
  EXPECT_EQ(window_.text, text);
  EXPECT_EQ(window_.limit, std::nullopt);
  EXPECT_EQ(window_.caret, 180u);
  settings_.SetFlag(FlagSetting::kSpanSms, false);
  page_.TextFocusGained();
  EXPECT_EQ(window_.limit, 160u);
  EXPECT_EQ(window_.counter, "160 (1)");
  EXPECT_EQ(window_.caret, 160u);
  for (const std::int32_t type : {6, 8}) {  // their text field is hidden
    page_.LoadMessage(Stored(SmsStatus::kSent, type, text), false);
    page_.TextFocusGained();
    EXPECT_EQ(window_.text + window_.counter, text + "200 (2)");
  }
}

TEST_F(ComposeTest, FilesBecomeTheMessage) {
  page_.TypeChosen(3);
  EXPECT_EQ(window_.mask, 192u);
  EXPECT_EQ(page_.Type(), 6);
  page_.Browse();  // cancelled
  EXPECT_EQ(window_.picked_pattern, "*.txt");
  window_.picked = FileWith({'\0', '\xAB', '\x7F'});
  page_.Browse();
  EXPECT_EQ(window_.text + window_.path, "00AB7F" + *window_.picked);
  EXPECT_EQ(window_.preview, "<>");

  const std::string good = *window_.picked, missing = folder_.File("missing");
  window_.picked = missing;
  page_.Browse();
  EXPECT_EQ(window_.text + window_.path, "00AB7F");
  ASSERT_EQ(boxes_.shown().size(), 1u);
  EXPECT_EQ(boxes_.shown()[0].text,
            "Failed to import and convert the data into hex.\nFilename: " + missing +
                "\nError:Failed to determine the file length.  Either the file does not exist or "
                "it can't be accessed!");
  EXPECT_EQ(boxes_.shown()[0].caption, "Import failed");
  EXPECT_EQ(boxes_.shown()[0].icon, platform::BoxIcon::kStop);
  window_.path = "typed";
  page_.PathEntered("");
  EXPECT_EQ(boxes_.shown().size(), 2u);
  EXPECT_EQ(window_.path, "typed");  // the field keeps what was typed

  page_.LoadMessage(Stored(SmsStatus::kSent, 4), false);
  EXPECT_EQ(window_.type, std::nullopt);
  EXPECT_EQ(window_.mask, 448u);
  window_.picked = good;
  page_.Browse();
  EXPECT_EQ(window_.preview, "<" + good + ">");
  window_.picked = missing;
  page_.Browse();
  EXPECT_EQ(window_.preview, "<>");
  page_.Send();
  EXPECT_THAT(Rows(), testing::HasSubstr(" 4 2 ,111 00AB7F 0"));

  page_.TypeChosen(0);
  page_.PathEntered(good);
  EXPECT_EQ(window_.text, "");
}

TEST_F(ComposeTest, LoadedTypesChooseTheirInputs) {
  struct Case {
    std::int32_t type;
    std::optional<std::size_t> entry;
    std::uint32_t mask;
  };
  for (const Case& one : {Case{6, 3, 192},
                          {1, 1, 63},
                          {3, std::nullopt, 192},
                          {8, std::nullopt, 0},
                          {42, std::nullopt, 0}}) {
    page_.LoadMessage(Stored(SmsStatus::kSent, one.type), false);
    EXPECT_EQ(window_.type, one.entry) << one.type;
    EXPECT_EQ(window_.mask, one.mask) << one.type;
    EXPECT_EQ(page_.Type(), one.type);
  }
}

TEST_F(ComposeTest, EditCommandsGoWhereTheFocusIs) {
  using Focus = ComposeView::Focus;
  for (const auto focus : {Focus::kElsewhere, Focus::kText, Focus::kSearch, Focus::kNumberEditor}) {
    window_.focus = focus;
    page_.Edit(EditCommand::kCopy);
  }
  EXPECT_EQ(window_.ran, "11;21;41;");

  window_.focus = Focus::kNumbers;
  Type("111");
  Type("222");
  page_.Edit(EditCommand::kCopy);  // none selected: the empty last row
  EXPECT_EQ(window_.clipboard, "");
  window_.selected = 0;
  page_.Edit(EditCommand::kSelectAll);
  page_.Edit(EditCommand::kCopy);
  EXPECT_EQ(window_.clipboard + Numbers(), "111111;222;;");
  window_.selected = 1;
  page_.Edit(EditCommand::kCut);
  EXPECT_EQ(window_.clipboard + Numbers(), "222111;;");
  EXPECT_EQ(view_.count, 1u);
  page_.Edit(EditCommand::kPaste);
  EXPECT_EQ(view_.edit, "1:222");
}

}  // namespace
}  // namespace orvalo::test
