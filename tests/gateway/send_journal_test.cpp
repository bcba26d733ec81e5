// Sending under keys: whatever dies, is lost or stays silent on the way, the gateway takes each
// recipient once, and nobody is told "Failed" who was accepted.
#include "store/send_journal.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <optional>

#include "gateway/engine_requests.h"
#include "gateway/send_pass.h"
#include "keyed_gateway.h"

namespace orvalo {
namespace {

using Fate = test::KeyedGateway::Fate;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

class SendJournalTest : public ::testing::Test {
 protected:
  SendJournalTest() { Restart(); }

  // One pass; false when the process died in it.
  bool Send(std::int32_t id = kEveryMessage) {
    try {
      pass_->SendQueuedSMSs(id);
      return true;
    } catch (const test::ProcessDies&) {
      return false;
    }
  }
  void Restart() {
    pass_.emplace(bench_.parts(), pass_lock_);
    bench_.database.TakeUpInterruptedSms();
  }
  // Passes, restarts where the process dies, until nothing is left to do.
  void RunToTheEnd() {
    for (int runs = 0; runs < 20; ++runs) {
      if (!Send()) {
        Restart();
      } else if (bench_.database.PendingSms(-1).empty() && journal_.Unfinished().empty()) {
        return;
      }
      pass_->TryAgain();
    }
    FAIL() << "it never ends";
  }
  // The fates of the first submissions; all others are answered.
  void Meet(std::vector<Fate> fates) {
    gateway_.fate = [fates = std::move(fates), next = std::size_t{0}]() mutable {
      return next < fates.size() ? fates[next++] : Fate::kAnswered;
    };
  }
  std::vector<MessageRow> RowsOf(std::int32_t id) {
    auto rows = bench_.ChildrenOf(id);
    if (rows.empty()) rows.push_back(*bench_.database.GetSms(id));
    return rows;
  }
  // The first run dies; the second is to stop while it repeats the first submission.
  void StopAtTheSecondTry(MessageType type) {
    std::string numbers;
    for (int i = 0; i < 300; ++i) numbers += "," + std::to_string(60'000 + i);
    const std::int32_t id = bench_.Add(numbers, "x", type);
    Meet({Fate::kAnswered, Fate::kAnswered, Fate::kDiesAfter});
    EXPECT_FALSE(Send());
    Restart();
    gateway_.fate = [this] {
      bench_.notices.RequestStop();
      return Fate::kAnswered;
    };
    EXPECT_TRUE(Send());
    EXPECT_THAT(journal_.Unfinished(), ElementsAre(id));
    EXPECT_THAT(bench_.ChildrenOf(id), IsEmpty());
  }
  // Everybody once, and every row has the id that the gateway gave for its number.
  void ExpectOnce(std::int32_t id, std::size_t recipients) {
    EXPECT_EQ(gateway_.accepted.size(), recipients);
    for (const auto& [number, times] : gateway_.accepted) EXPECT_EQ(times, 1) << number;
    const auto rows = RowsOf(id);
    EXPECT_EQ(rows.size(), recipients);
    for (const MessageRow& row : rows) {
      EXPECT_EQ(row.stat, static_cast<int>(SmsStatus::kUnknown)) << row.number << ' ' << row.reason;
      EXPECT_EQ(row.api_msg_id, ",ID: " + gateway_.ids[row.number]);
    }
    EXPECT_FALSE(journal_.Find(id));
  }

  test::EngineBench bench_{true, true};
  test::KeyedGateway gateway_{bench_};
  SendJournal journal_{bench_.database};
  std::mutex pass_lock_;
  std::optional<SendPass> pass_;
};

// Every way in which the first submissions of a message to three can go, the address book changed
// whenever the process has died.
TEST_F(SendJournalTest, EveryWayLeadsToOnce) {
  constexpr Fate kFates[] = {Fate::kAnswered, Fate::kNotReached, Fate::kReplyLost,
                             Fate::kDiesBefore, Fate::kDiesAfter};
  const struct {
    MessageType type;
    const char* text;
  } cases[] = {{MessageType::kText, "batch"}, {MessageType::kText, "<<FIRSTNAME>>"}};
  int number = 27820000;
  for (const auto& c : cases) {
    for (int way = 0; way < 125; ++way) {
      SCOPED_TRACE(std::string(c.text) + " " + std::to_string(way));
      gateway_.accepted.clear();
      Meet({kFates[way % 5], kFates[way / 5 % 5], kFates[way / 25]});
      std::string to;
      std::int32_t contact = 0;
      for (int i = 0; i < 3; ++i) {
        contact = bench_.AddContact("Ann", std::to_string(++number));
        to += ",A" + std::to_string(contact);
      }
      const std::int32_t id = bench_.Add(to, c.text, c.type);
      if (!Send()) {
        bench_.database.UpdateContact(contact,
                                      {"Eve", "", "", "", "1" + std::to_string(number), {}});
        Restart();
      }
      RunToTheEnd();
      ExpectOnce(id, 3);
      if (HasFailure()) return;
    }
  }
}

TEST_F(SendJournalTest, WhatWasAnsweredIsNotAskedAgain) {
  std::string to;
  for (int i = 0; i < 100; ++i) to += "," + std::to_string(27821110000 + i);  // chunks of 43
  const std::int32_t batch = bench_.Add(to);
  Meet({Fate::kAnswered, Fate::kAnswered, Fate::kAnswered, Fate::kDiesAfter});
  EXPECT_FALSE(Send());
  const auto asked = bench_.fake.Calls("QuickBatchSend").size();
  EXPECT_EQ(asked, 3u);
  EXPECT_EQ(bench_.StatusOf(batch), SmsStatus::kProcessing);
  Restart();
  RunToTheEnd();
  EXPECT_EQ(bench_.fake.Calls("QuickBatchSend").size(), asked + 1);
  ExpectOnce(batch, 100);

  gateway_.accepted.clear();
  const std::int32_t flash = bench_.Add(to, "x", MessageType::kFlash);
  std::vector<Fate> fates(50, Fate::kAnswered);
  fates.push_back(Fate::kDiesBefore);
  Meet(fates);
  EXPECT_FALSE(Send());
  Restart();
  RunToTheEnd();
  EXPECT_LE(bench_.fake.Calls("SendMsg").size(), 51u + 50 + 16) << "a few are repeated, not all";
  ExpectOnce(flash, 100);
}

// The mark of the row is not flushed, its journal is.
TEST_F(SendJournalTest, APowerCutMayTakeTheMark) {
  const std::int32_t id = bench_.Add(",111");
  Meet({Fate::kDiesAfter});
  EXPECT_FALSE(Send());
  bench_.database.SetSmsStatus(id, SmsStatus::kPending);
  pass_.emplace(bench_.parts(), pass_lock_);
  const auto interrupted = bench_.database.TakeUpInterruptedSms();
  EXPECT_THAT(interrupted.going_on, ElementsAre(id));
  EXPECT_FALSE(bench_.database.BeginEditSms(id)) << "it may have gone out";
  RunToTheEnd();
  ExpectOnce(id, 1);

  // A row that is deleted or edited before it is taken has no entry any more.
  const std::int32_t edited = bench_.Add(",222"), deleted = bench_.Add(",333");
  const std::int32_t first = bench_.Add(",444");
  bench_.fake.On("SendMsg", [&](const test::FakeGateway::Call&) {
    bench_.database.BeginEditSms(edited);
    bench_.database.DeleteSms(deleted);
    return test::FakeGateway::Answer{"ID: x"};
  });
  EXPECT_TRUE(Send());
  EXPECT_EQ(bench_.StatusOf(first), SmsStatus::kUnknown);
  EXPECT_EQ(bench_.StatusOf(edited), SmsStatus::kEditing);
  EXPECT_FALSE(journal_.Find(edited));
  EXPECT_FALSE(journal_.Find(deleted));
}

TEST_F(SendJournalTest, NoAnswerIsNoRefusal) {
  const std::int32_t untouched = bench_.Add(",111");
  const std::int32_t id = bench_.Add(",222,333", "x", MessageType::kFlash);
  bool silent = true;
  gateway_.fate = [&] { return silent ? Fate::kReplyLost : Fate::kAnswered; };
  EXPECT_TRUE(Send());
  EXPECT_EQ(bench_.fake.Calls("SendMsg").size(), 6u) << "tried for half a minute, one of the two";
  EXPECT_EQ(bench_.StatusOf(id), SmsStatus::kProcessing);
  EXPECT_EQ(bench_.StatusOf(untouched), SmsStatus::kPending);
  EXPECT_THAT(bench_.boxes.shown(), IsEmpty()) << "the worker waits for nobody";
  EXPECT_THAT(bench_.notices.TakeWaitingReason(), HasSubstr("cannot be reached"));
  EXPECT_THAT(bench_.window.messages(), Contains(std::tuple(kWmSendingWaits, 0, 0)));
  EXPECT_THAT(bench_.log.Lines(), Contains(StartsWith("ComplexSMS not answered: Error:")));

  const auto asked = bench_.fake.Calls("SendMsg").size();
  EXPECT_TRUE(Send());
  EXPECT_EQ(bench_.fake.Calls("SendMsg").size(), asked) << "too early";
  bench_.clock.Advance(60'000);
  EXPECT_TRUE(Send());
  EXPECT_GT(bench_.fake.Calls("SendMsg").size(), asked);
  EXPECT_THAT(bench_.notices.TakeWaitingReason(), IsEmpty()) << "told once for an outage";
  silent = false;
  pass_->TryAgain();
  EXPECT_TRUE(Send());
  EXPECT_EQ(bench_.StatusOf(untouched), SmsStatus::kUnknown);
  gateway_.accepted.erase("111");
  ExpectOnce(id, 2);
}

// One message that is never answered in a way to be understood does not keep the others.
TEST_F(SendJournalTest, OneSilenceDoesNotStopTheRest) {
  const std::int32_t fine = bench_.Add(",111");
  const std::int32_t odd = bench_.Add(",222");
  bench_.fake.On("SendMsg", [](const test::FakeGateway::Call& call) {
    return call.Argument(2) == "222" ? test::FakeGateway::Answer{"<html>", 98}
                                     : test::FakeGateway::Answer{"ID: x"};
  });
  EXPECT_TRUE(Send());
  EXPECT_EQ(bench_.StatusOf(odd), SmsStatus::kProcessing);
  EXPECT_EQ(bench_.StatusOf(fine), SmsStatus::kUnknown);
  const std::int32_t later = bench_.Add(",333");
  EXPECT_TRUE(Send());
  EXPECT_EQ(bench_.StatusOf(later), SmsStatus::kUnknown);

  // Nor do two of them, neither new messages nor older ones that wait.
  const std::int32_t old = bench_.Add(",444");
  const auto answers = [](const test::FakeGateway::Call& call) {
    const std::string to = call.Argument(2);
    const bool silent = to == "222" || to == "555" || to == "777";
    return silent ? test::FakeGateway::Answer{"<html>", 98} : test::FakeGateway::Answer{"ID: x"};
  };
  bench_.fake.On("SendMsg", [](const test::FakeGateway::Call&) -> test::FakeGateway::Answer {
    throw test::ProcessDies();
  });
  EXPECT_FALSE(Send());
  bench_.fake.On("SendMsg", answers);
  const std::int32_t second = bench_.Add(",555");
  bench_.Add(",777");
  Restart();
  for (int passes = 0; passes < 3; ++passes) {
    EXPECT_TRUE(Send());
    bench_.clock.Advance(20 * 60'000);
  }
  EXPECT_EQ(bench_.StatusOf(second), SmsStatus::kProcessing);
  EXPECT_EQ(bench_.StatusOf(old), SmsStatus::kUnknown);
  const std::int32_t last = bench_.Add(",666");
  EXPECT_TRUE(Send());
  EXPECT_TRUE(Send());
  EXPECT_EQ(bench_.StatusOf(last), SmsStatus::kUnknown);
}

TEST_F(SendJournalTest, NotLoggedInWaitsUnderItsKey) {
  const std::int32_t untouched = bench_.Add(",333");
  const std::int32_t id = bench_.Add(",111,222");
  bench_.fake.On("StartBatch", "Not logged in", 111);
  EXPECT_TRUE(Send());
  EXPECT_EQ(bench_.StatusOf(id), SmsStatus::kProcessing);
  EXPECT_EQ(bench_.StatusOf(untouched), SmsStatus::kPending);
  EXPECT_EQ(bench_.fake.Calls("StartBatch").size(), 1u) << "trying again is of no use";
  bench_.fake.On("StartBatch", "OK");
  pass_->TryAgain();
  EXPECT_TRUE(Send());
  gateway_.accepted.erase("333");
  ExpectOnce(id, 2);
}

TEST_F(SendJournalTest, WhatIsBeingSentIsNotDeleted) {
  const std::int32_t id = bench_.Add(",111,222", "x", MessageType::kFlash);
  bool deleted = true;
  gateway_.fate = [&] {
    deleted = bench_.database.DeleteSms(id);
    return Fate::kAnswered;
  };
  EXPECT_TRUE(Send());
  EXPECT_FALSE(deleted);
  ExpectOnce(id, 2);
  EXPECT_TRUE(bench_.database.DeleteSms(id));
}

// The component takes as encoded only what it has encoded last.
TEST_F(SendJournalTest, EveryUnicodeTextIsEncodedAnew) {
  const std::int32_t ann = bench_.AddContact("Ann", "111");
  std::string last;
  bench_.fake.On("EncodeToUnicode", [&](const test::FakeGateway::Call& call) {
    return test::FakeGateway::Answer{last = "<" + call.Argument(0) + ">"};
  });
  gateway_.fate = [&] {
    EXPECT_EQ(bench_.fake.Calls("SendMsg").back().Argument(1), last);
    return Fate::kAnswered;
  };
  bench_.Add(",A" + std::to_string(ann) + ",222", "<<FIRSTNAME>>", MessageType::kUnicode);
  EXPECT_TRUE(Send());
  EXPECT_EQ(gateway_.texts["111"], "<Ann>");
  EXPECT_EQ(gateway_.texts["222"], "<<<FIRSTNAME>>>");
}

// What goes out again is worded otherwise (a delivery time comes nearer): the gateway says that the
// key is taken, and is asked what became of it.
TEST_F(SendJournalTest, AKeyThatIsTakenIsAskedFor) {
  NewSms sms;
  sms.to = ",111";
  sms.msg = "later";
  const std::int32_t id = bench_.database.AddSms(sms);
  Meet({Fate::kDiesAfter});
  EXPECT_FALSE(Send());
  sqlite3* other = nullptr;
  ASSERT_EQ(sqlite3_open(bench_.database.Path().c_str(), &other), SQLITE_OK);
  EXPECT_EQ(sqlite3_exec(other, "UPDATE SMS SET Msg = 'otherwise'", nullptr, nullptr, nullptr),
            SQLITE_OK);
  sqlite3_close(other);
  Restart();
  EXPECT_TRUE(Send());
  ExpectOnce(id, 1);
  EXPECT_EQ(gateway_.texts["111"], "later");
}

// A gateway that knows the key but cannot tell what became of it.
TEST_F(SendJournalTest, ATakenKeyWithoutAnAnswerIsInDoubt) {
  bench_.fake.On("QuerySubmission", "no such path", 102);
  for (const char* member : {"SendMsg", "StartBatch", "QuickBatchSend"}) {
    const bool single = std::string(member) == "SendMsg";
    const std::int32_t id = bench_.Add(single ? ",111" : ",111,222");
    bench_.database.SetApiMsgId(id, ",ID: of an earlier time");
    bench_.database.SetQuerySchedule(id, 60, 1);
    bench_.fake.On(member, "ERR: 206, reused", 206);
    EXPECT_TRUE(Send()) << member;
    bench_.fake.On(member, "OK");
    for (const MessageRow& row : RowsOf(id)) {
      EXPECT_EQ(row.stat, static_cast<int>(SmsStatus::kUnknown)) << member;
      EXPECT_EQ(row.query_time, 0) << "nobody asks under another message's id";
      EXPECT_THAT(row.reason, StartsWith("In doubt: ")) << member;
    }
  }
}

TEST_F(SendJournalTest, AfterADayItIsOnlyAskedFor) {
  const std::int32_t arrived = bench_.Add(",111,222", "x", MessageType::kFlash);
  Meet({Fate::kAnswered, Fate::kDiesAfter});
  EXPECT_FALSE(Send());
  Restart();
  const std::int32_t not_arrived = bench_.Add(",333");
  Meet({Fate::kDiesBefore});
  EXPECT_FALSE(Send());
  bench_.clock.Advance(86'401'000);
  Restart();
  const auto asked = bench_.fake.Calls("SendMsg").size();
  EXPECT_TRUE(Send());
  EXPECT_EQ(bench_.fake.Calls("SendMsg").size(), asked);
  ExpectOnce(arrived, 2);
  const MessageRow row = *bench_.database.GetSms(not_arrived);
  EXPECT_EQ(row.stat, static_cast<int>(SmsStatus::kFailed));
  EXPECT_THAT(row.reason, StartsWith("Not sent: "));

  const std::int32_t doubtful = bench_.Add(",444");
  Meet({Fate::kDiesBefore});
  EXPECT_FALSE(Send());
  bench_.clock.Advance(86'401'000);
  bench_.fake.On("QuerySubmission", "no such path", 102);
  Restart();
  EXPECT_TRUE(Send());
  const MessageRow doubt = *bench_.database.GetSms(doubtful);
  EXPECT_EQ(doubt.stat, static_cast<int>(SmsStatus::kUnknown));
  EXPECT_EQ(doubt.query_time, 0);
  EXPECT_THAT(doubt.reason, StartsWith("In doubt: "));
}

TEST_F(SendJournalTest, WhatTheOperatorStopsIsOnlyAskedFor) {
  const std::int32_t personal = bench_.Add(",111,222,333", "x", MessageType::kFlash);
  Meet({Fate::kAnswered, Fate::kDiesAfter});
  EXPECT_FALSE(Send());
  Restart();
  std::string numbers;
  for (int i = 0; i < 150; ++i) numbers += "," + std::to_string(40'000 + i);
  const std::int32_t batch = bench_.Add(numbers);
  Meet({Fate::kAnswered, Fate::kAnswered, Fate::kDiesBefore});
  EXPECT_FALSE(Send());
  Restart();
  const std::int32_t single = bench_.Add(",555");
  EXPECT_FALSE(journal_.Stop(single)) << "nothing of it has gone out";
  Meet({Fate::kDiesBefore});
  EXPECT_FALSE(Send());
  Restart();
  for (const std::int32_t id : {personal, batch, single}) EXPECT_TRUE(journal_.Stop(id));

  const auto accepted = gateway_.accepted;
  Meet({Fate::kDiesBefore});
  EXPECT_TRUE(Send()) << "no submission";
  EXPECT_EQ(gateway_.accepted, accepted);
  std::map<int, std::size_t> statuses;
  for (const std::int32_t id : {personal, batch, single}) {
    for (const MessageRow& row : RowsOf(id)) {
      ++statuses[row.stat];
      const bool stopped = row.stat == static_cast<int>(SmsStatus::kCancelled);
      EXPECT_EQ(row.reason, stopped ? "Not sent: stopped by the operator." : "");
      EXPECT_EQ(stopped, accepted.count(row.number) == 0) << row.number;
    }
    EXPECT_FALSE(journal_.Find(id));
  }
  EXPECT_EQ(statuses[static_cast<int>(SmsStatus::kUnknown)], accepted.size());
  EXPECT_EQ(statuses[static_cast<int>(SmsStatus::kCancelled)], 154 - accepted.size());
  EXPECT_EQ(statuses.size(), 2u);
}

// What an earlier run has submitted without learning of it must not go out under another key.
TEST_F(SendJournalTest, AStopLeavesSinglesThatMayHaveGoneOutUnderTheirKeys) {
  StopAtTheSecondTry(MessageType::kFlash);
}

TEST_F(SendJournalTest, AStopLeavesChunksThatMayHaveGoneOutUnderTheirKeys) {
  StopAtTheSecondTry(MessageType::kText);
}

TEST_F(SendJournalTest, AStopLeavesTheRestOfAPersonalMessagePending) {
  const std::int32_t id = bench_.Add(",111,222,333", "x", MessageType::kFlash);
  gateway_.fate = [&] {
    bench_.notices.RequestStop();
    return Fate::kAnswered;
  };
  EXPECT_TRUE(Send());
  const auto rows = bench_.ChildrenOf(id);
  ASSERT_EQ(rows.size(), 3u);
  EXPECT_EQ(rows[0].stat, static_cast<int>(SmsStatus::kUnknown));
  EXPECT_EQ(rows[1].stat, static_cast<int>(SmsStatus::kPending));
  EXPECT_EQ(rows[2].stat, static_cast<int>(SmsStatus::kPending));
  EXPECT_FALSE(journal_.Find(id));
}

}  // namespace
}  // namespace orvalo
