#include "gateway/send_pass.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>

#include "engine_bench.h"
#include "gateway/engine_requests.h"

namespace {
std::atomic<int> flushes = 0;
}

// In the place of the C library's: SQLite's flushes of the disk are counted.
extern "C" int fdatasync(int descriptor) {
  ++flushes;
  return static_cast<int>(syscall(SYS_fdatasync, descriptor));
}
extern "C" int fsync(int descriptor) {
  ++flushes;
  return static_cast<int>(syscall(SYS_fsync, descriptor));
}

namespace orvalo {
namespace {

using test::FakeGateway;
using ::testing::Contains;
using ::testing::ElementsAre;

const std::string kAddress = "http://sms.example";

class SendPassTest : public ::testing::Test {
 protected:
  SendPassTest() { bench_.settings.SetText(TextSetting::kComBaseUrl, kAddress); }
  void Send(std::int32_t id = kEveryMessage) { pass_.SendQueuedSMSs(id); }
  // Answers every number of a chunk with an id, but those in `refused` with an error and those in
  // `silent` not at all.
  void AnswerBatches(const std::string& refused = "", const std::string& silent = "") {
    bench_.fake.On("QuickBatchSend", [=, this](const FakeGateway::Call& call) {
      std::string reply, number;
      std::istringstream numbers(call.Argument(0));
      while (std::getline(numbers, number, ',')) {
        if (number == silent) continue;
        reply += (number == refused ? "ERR: 208, refused" : "ID: " + bench_.NextId()) +
                 " To: " + number + "\n";
      }
      return FakeGateway::Answer{reply};
    });
  }
  std::vector<std::string> Outcome(std::int32_t id) {
    std::vector<std::string> rows;
    for (const MessageRow& row : bench_.ChildrenOf(id)) {
      rows.push_back(row.to + ":" + std::to_string(row.stat) +
                     (row.api_msg_id.empty() ? "" : ":id"));
    }
    return rows;
  }

  // The numbers and reasons of the rows made from a message; of its own when there are none.
  std::vector<std::string> Reasons(std::int32_t id) {
    auto rows = bench_.ChildrenOf(id);
    if (rows.empty()) rows.push_back(bench_.database.GetSms(id).value());
    std::vector<std::string> reasons;
    for (const MessageRow& row : rows) reasons.push_back(row.number + "|" + row.reason);
    return reasons;
  }

  test::EngineBench bench_{true};
  std::mutex pass_lock_;
  SendPass pass_{bench_.parts(), pass_lock_};
};

TEST_F(SendPassTest, OneRecipientGetsItsIdOnTheRowItself) {
  const auto now = static_cast<std::int32_t>(bench_.clock.Now());
  const std::int32_t id = bench_.Add(",111");
  bench_.settings.SetFlag(FlagSetting::kSpanSms, true);
  Send();
  const MessageRow row = *bench_.database.GetSms(id);
  EXPECT_EQ(row.stat, 11);
  EXPECT_EQ(row.api_msg_id, ",ID: 00000000000000000000000000000001");
  EXPECT_EQ(row.query_time, 60);
  EXPECT_EQ(row.stat_qry_tm, now + 60);
  EXPECT_EQ(bench_.fake.Property("smsCONCAT"), "3");
  EXPECT_EQ(bench_.fake.Property("smsFROM"), "Orvalo");
  EXPECT_EQ(bench_.fake.Property("smsDELIVERY_TIME"), "0");
  EXPECT_THAT(
      bench_.log.Lines(),
      ElementsAre("SMS sent ok: Mobile:111 Msg:Hello API_ID:ID: 00000000000000000000000000000001"));
  EXPECT_THAT(bench_.outbox.ids(), ElementsAre(id, 0));
  EXPECT_THAT(bench_.window.messages(),
              ElementsAre(std::tuple(kWmSending, 0, 0), std::tuple(kWmProgress, 1, 1),
                          std::tuple(kWmBalance, 0, 0)));
}

TEST_F(SendPassTest, ALaterDeliveryIsScheduledOnTheServer) {
  NewSms sms;
  sms.to = ",111";
  sms.msg = "later";
  sms.delay = 86400;
  sms.time = static_cast<std::int32_t>(bench_.clock.Now()) + 3599;
  const std::int32_t id = bench_.database.AddSms(sms);
  Send();
  EXPECT_EQ(bench_.StatusOf(id), SmsStatus::kScheduledOnServer);
  EXPECT_EQ(bench_.fake.Property("smsDELIVERY_TIME"), "59");
}

TEST_F(SendPassTest, NewestFirstAndOnlyWhatIsPending) {
  bench_.Add(",111", "first");
  const std::int32_t editing = bench_.Add(",222", "second");
  bench_.Add(",333", "third");
  bench_.fake.On("SendMsg", [&](const FakeGateway::Call&) {
    bench_.database.BeginEditSms(editing);  // opened while the pass runs
    return FakeGateway::Answer{"ID: x"};
  });
  Send();
  std::vector<std::string> texts;
  for (const auto& call : bench_.fake.Calls("SendMsg")) texts.push_back(call.Argument(1));
  EXPECT_THAT(texts, ElementsAre("third", "first"));
  EXPECT_EQ(bench_.StatusOf(editing), SmsStatus::kEditing);
}

TEST_F(SendPassTest, OfflineNothingMoves) {
  const std::int32_t id = bench_.Add(",111");
  bench_.settings.SetFlag(FlagSetting::kWorkingOnLine, false);
  Send();
  EXPECT_EQ(bench_.StatusOf(id), SmsStatus::kPending);
  EXPECT_TRUE(bench_.fake.Calls().empty());
}

TEST_F(SendPassTest, WithoutASessionNothingFails) {
  const struct {
    const char* member;
    const char* to;
    MessageType type;
  } cases[] = {
      {"SendMsg", ",111", MessageType::kText},
      {"SendMsg", ",111,222", MessageType::kFlash},
      {"StartBatch", ",111,222", MessageType::kText},
      {"QuickBatchSend", ",111,222", MessageType::kText},
  };
  for (const auto& c : cases) {
    test::EngineBench bench;
    SendPass pass(bench.parts(), pass_lock_);
    const std::int32_t other = bench.Add(",333");
    const std::int32_t id = bench.Add(c.to, "Hello", c.type);
    bench.fake.On(c.member, "Not logged in", 111);
    pass.SendQueuedSMSs(kEveryMessage);
    EXPECT_EQ(bench.StatusOf(id), SmsStatus::kPending) << c.member;
    EXPECT_EQ(bench.StatusOf(other), SmsStatus::kPending);
    EXPECT_TRUE(bench.ChildrenOf(id).empty());
    EXPECT_EQ(bench.fake.Calls(c.member).size(), 1u) << "no other is tried";
  }
  // It ends in the middle of a message: what has gone out has gone out.
  bench_.fake.On("SendMsg", [](const FakeGateway::Call& call) {
    return call.Argument(2) == "111" ? FakeGateway::Answer{"ID: x"} : FakeGateway::Answer{"", 111};
  });
  const std::int32_t id = bench_.Add(",111,222,333", "x", MessageType::kFlash);
  Send();
  EXPECT_THAT(Outcome(id), ElementsAre("111:11:id", "222:0", "333:0"));
}

// A power cut takes what is not flushed: the message would go out again.
TEST_F(SendPassTest, AMessageIsMarkedOnTheDiskBeforeItsFirstRequestAndOnce) {
  std::string many;
  for (int i = 0; i < 200; ++i) many += "," + std::to_string(27821110000 + i);
  AnswerBatches();
  int before = 0, marked = -1;
  bench_.fake.On("StartBatch", [&](const FakeGateway::Call&) {
    marked = flushes - before;
    return FakeGateway::Answer{};
  });
  bench_.Add(many);
  before = flushes;
  Send();
  EXPECT_GE(marked, 1);
  EXPECT_EQ(flushes - before, marked) << "and never for a recipient";
}

// With keys, one flush is for all that a pass finds, and it comes before the first of them goes
// out.
TEST_F(SendPassTest, APassIsInTheJournalOnTheDiskBeforeItsFirstRequest) {
  test::EngineBench bench(true, true);
  SendPass pass(bench.parts(), pass_lock_);
  for (int i = 0; i < 50; ++i) bench.Add("," + std::to_string(27821110000 + i));
  int before = flushes, marked = -1;
  bench.fake.On("SendMsg", [&](const FakeGateway::Call&) {
    if (marked < 0) marked = flushes - before;
    return FakeGateway::Answer{"ID: x"};
  });
  pass.SendQueuedSMSs(kEveryMessage);
  EXPECT_GE(marked, 1);
  EXPECT_EQ(flushes - before, marked) << "and never for a message";
  EXPECT_EQ(bench.fake.Calls("SendMsg").size(), 50u);
}

TEST_F(SendPassTest, ARowKeepsTheNumbersItWentTo) {
  bench_.settings.SetText(TextSetting::kPrefix, "27");
  const std::int32_t ann = bench_.AddContact("Ann", "0821110001");
  const std::string to = ",A" + std::to_string(ann);
  AnswerBatches("2782");
  const std::int32_t one = bench_.Add(to), several = bench_.Add(to + ",082"),
                     refused = bench_.Add(",A99"), editing = bench_.Add(to);
  Send();
  bench_.database.DeleteContact(ann, true, 0);
  EXPECT_EQ(bench_.database.GetSms(one)->number, "27821110001");
  EXPECT_EQ(bench_.database.GetSms(several)->number, "27821110001,2782");
  const auto children = bench_.ChildrenOf(several);
  ASSERT_EQ(children.size(), 2u);
  EXPECT_EQ(children[0].number + " " + children[1].number, "27821110001 2782");
  EXPECT_EQ(bench_.database.GetSms(refused)->number, "");
  bench_.database.BeginEditSms(editing);
  bench_.database.UpdateEditedSms(editing, 0, ",5", "new");
  EXPECT_EQ(bench_.database.GetSms(editing)->number, "") << "until it goes out again";
}

TEST_F(SendPassTest, NoRecipientIsFailed) {
  const std::int32_t id = bench_.Add(",A99");
  Send();
  EXPECT_EQ(bench_.StatusOf(id), SmsStatus::kFailed);
  EXPECT_THAT(Reasons(id), ElementsAre(testing::StartsWith("|No recipient is left")));
}

TEST_F(SendPassTest, PersonalisedTextsGoOutOneByOne) {
  bench_.settings.SetText(TextSetting::kPrefix, "27");
  const std::int32_t ann = bench_.AddContact("Ann", "0821110001");
  const std::int32_t id = bench_.Add(",000," + std::string("A") + std::to_string(ann),
                                     "<<FIRSTNAME>> <<FIRSTNAME>> <<TITLE>> <<firstname>>");
  Send();
  const auto calls = bench_.fake.Calls("SendMsg");
  ASSERT_EQ(calls.size(), 2u);
  EXPECT_EQ(calls[0].Argument(1), "<<FIRSTNAME>> <<FIRSTNAME>> <<TITLE>> <<firstname>>");
  EXPECT_EQ(calls[0].Argument(2), "27");
  EXPECT_EQ(calls[1].Argument(1), "Ann Ann Dr <<firstname>>");
  EXPECT_EQ(calls[1].Argument(2), "27821110001");
  EXPECT_EQ(bench_.StatusOf(id), SmsStatus::kExpanded);
  EXPECT_THAT(Outcome(id), ElementsAre("000:11:id", "A" + std::to_string(ann) + ":11:id"));
  EXPECT_THAT(bench_.log.Lines(),
              Contains("ComplexSMS sent ok: Mobile:27821110001 Msg:Ann Ann Dr <<firstname>> "
                       "API_ID:ID: 00000000000000000000000000000002"));
}

TEST_F(SendPassTest, FlashNeverGoesByBatchAndUnicodeIsEncoded) {
  bench_.Add(",1,2,3", "flash", MessageType::kFlash);
  Send();
  EXPECT_EQ(bench_.fake.Calls("SendMsg").size(), 3u);
  EXPECT_EQ(bench_.fake.Property("smsMSG_TYPE"), "1");

  bench_.fake.On("EncodeToUnicode", "0041");
  bench_.Add(",1,2", "A", MessageType::kUnicode);
  Send();
  EXPECT_EQ(bench_.fake.Calls("StartBatch").at(0).Argument(0), "0041");
  EXPECT_EQ(bench_.fake.Property("smsUNICODE"), "-1");
  EXPECT_EQ(bench_.fake.Property("smsMSG_TYPE"), "0");
}

TEST_F(SendPassTest, ABatchAccountsForEveryRecipient) {
  AnswerBatches("222", "333");
  // 111 is given twice and answered twice; 333 is given twice and never answered.
  const std::int32_t id = bench_.Add(",111,222,333,111,333");
  Send();
  EXPECT_EQ(bench_.StatusOf(id), SmsStatus::kExpanded);
  EXPECT_THAT(Outcome(id), ElementsAre("111:11:id", "111:11:id", "222:2", "333:2", "333:2"));
  EXPECT_THAT(Reasons(id),
              ElementsAre("111|", "111|", "222|208: refused",
                          "333|98: What answers at " + kAddress +
                              " cannot be understood: it may not be the gateway.  Check the "
                              "address.",
                          testing::StartsWith("333|98: ")));
  EXPECT_EQ(bench_.fake.Calls("EndBatch").size(), 1u);
  EXPECT_THAT(bench_.log.Lines(),
              Contains("QuickBatchSend SMS sent ok: Mobile:,111,222,333,111,333"));
}

TEST_F(SendPassTest, AnOutcomeThatAnotherProgramsLockKeepsOutIsRecordedByTheNextPass) {
  const std::int32_t waiting = bench_.Add(",444");
  const std::int32_t id = bench_.Add(",111,222");
  sqlite3* other = nullptr;
  ASSERT_EQ(sqlite3_open(bench_.database.Path().c_str(), &other), SQLITE_OK);
  AnswerBatches();
  bench_.fake.On("EndBatch", [&](const FakeGateway::Call&) {
    EXPECT_EQ(sqlite3_exec(other, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr), SQLITE_OK);
    return FakeGateway::Answer{};
  });
  Send();
  EXPECT_EQ(bench_.StatusOf(id), SmsStatus::kProcessing);
  EXPECT_EQ(bench_.StatusOf(waiting), SmsStatus::kPending);
  EXPECT_THAT(bench_.log.Lines(), Contains("CRITICAL ERROR: Catch in SendQueuedSMSs"));
  EXPECT_EQ(sqlite3_exec(other, "ROLLBACK", nullptr, nullptr, nullptr), SQLITE_OK);
  sqlite3_close(other);
  bench_.settings.SetFlag(FlagSetting::kWorkingOnLine, false);
  Send();  // sends nothing, but knows what was sent
  EXPECT_EQ(bench_.StatusOf(id), SmsStatus::kExpanded);
  EXPECT_THAT(Outcome(id), ElementsAre("111:11:id", "222:11:id"));
  EXPECT_EQ(bench_.StatusOf(waiting), SmsStatus::kPending);
  bench_.settings.SetFlag(FlagSetting::kWorkingOnLine, true);
  Send();
  EXPECT_EQ(bench_.StatusOf(waiting), SmsStatus::kUnknown);
  EXPECT_EQ(bench_.fake.Calls("QuickBatchSend").size(), 1u);
  EXPECT_EQ(Outcome(id).size(), 2u);
}

TEST_F(SendPassTest, ABatchThatCannotStartFailsEveryRecipient) {
  bench_.fake.On("StartBatch", "down", 99);
  const std::int32_t id = bench_.Add(",111,222");
  Send();
  EXPECT_EQ(bench_.StatusOf(id), SmsStatus::kExpanded);
  EXPECT_THAT(Outcome(id), ElementsAre("111:2", "222:2"));
  EXPECT_THAT(Reasons(id), ElementsAre("111|99: The gateway at " + kAddress + " cannot be reached.",
                                       testing::StartsWith("222|99: ")));
  ASSERT_EQ(bench_.boxes.shown().size(), 1u);
  EXPECT_EQ(bench_.boxes.shown()[0].caption, "Login failed ...");
  EXPECT_TRUE(bench_.fake.Calls("QuickBatchSend").empty());
  EXPECT_TRUE(bench_.fake.Calls("EndBatch").empty());

  bench_.fake.On("StartBatch", [](const auto&) {
    return FakeGateway::Answer{"no credit", 202, "Not enough credit"};
  });
  const std::int32_t again = bench_.Add(",111,222", "again");
  Send();
  EXPECT_THAT(Reasons(again),
              ElementsAre("111|202: Not enough credit", "222|202: Not enough credit"));
  EXPECT_THAT(bench_.log.Lines(), Contains("SMS Batch start failed: Error:no credit Msg:again"));
}

TEST_F(SendPassTest, ChunksReach512CharactersAndAStopKeepsTheRestPending) {
  std::string to;
  for (int i = 0; i < 100; ++i)
    to += "," + std::to_string(27821110000 + i);  // 12 characters each: 43 reach 516
  AnswerBatches();
  const std::int32_t id = bench_.Add(to);
  bench_.fake.On("EndBatch", "");
  Send();
  const auto chunks = bench_.fake.Calls("QuickBatchSend");
  ASSERT_EQ(chunks.size(), 3u);
  EXPECT_EQ(chunks[0].Argument(0).size(), 515u);
  EXPECT_TRUE(chunks[0].Argument(0).starts_with("27821110000,"));
  EXPECT_EQ(bench_.ChildrenOf(id).size(), 100u);
  EXPECT_THAT(bench_.window.messages(), Contains(std::tuple(kWmProgress, 1, 100 - 42)));

  bench_.fake.ClearCalls();
  bench_.fake.On("QuickBatchSend", [&](const FakeGateway::Call&) {
    bench_.notices.RequestStop();  // in the middle of the batch
    return FakeGateway::Answer{"ID: x To: 27821110000"};
  });
  const std::int32_t stopped = bench_.Add(to);
  const std::int32_t untouched = bench_.Add(",1");
  Send(stopped);
  EXPECT_EQ(bench_.fake.Calls("QuickBatchSend").size(), 1u);
  std::map<int, int> statuses;
  for (const MessageRow& row : bench_.ChildrenOf(stopped)) ++statuses[row.stat];
  EXPECT_EQ(statuses, (std::map<int, int>{{0, 57}, {2, 42}, {11, 1}}));
  EXPECT_EQ(bench_.StatusOf(untouched), SmsStatus::kPending);
}

TEST_F(SendPassTest, AFailedSendSaysSoOncePerRecipient) {
  bench_.fake.On("SendMsg", [](const FakeGateway::Call& call) {
    return call.Argument(2) == "222" ? FakeGateway::Answer{"unreachable", 99}
                                     : FakeGateway::Answer{"ID: x", 0};
  });
  const std::int32_t id = bench_.Add(",111,222,333", "x", MessageType::kFlash);
  Send();
  EXPECT_THAT(Outcome(id), ElementsAre("111:11:id", "333:11:id", "222:2"));
  EXPECT_EQ(bench_.boxes.shown().size(), 1u);
  EXPECT_THAT(bench_.log.Lines(),
              Contains("ComplexSMS failed: Error:unreachable Mobile:222 Msg:x"));
  // A chunk that nothing answered has one reason, whatever its lines say.
  bench_.fake.On("QuickBatchSend", [](const auto&) {
    return FakeGateway::Answer{"ERR: 99, cut off To: 111\nERR: 99, cut off To: 222", 99, "cut off",
                               static_cast<int>(platform::HttpObstacle::kCutOff)};
  });
  const std::int32_t cut = bench_.Add(",111,222");
  Send();
  EXPECT_THAT(Reasons(cut), testing::Each(testing::HasSubstr("it ends the connection without")));
  bench_.fake.On("SendMsg", [](const auto&) {
    return FakeGateway::Answer{"ERR: 208, refused", 208, "refused"};
  });
  const std::int32_t single = bench_.Add(",111");
  Send();
  EXPECT_THAT(Reasons(single), ElementsAre("111|208: refused"));
}

}  // namespace
}  // namespace orvalo
