#include "gateway/send_engine.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <future>

#include "engine_bench.h"

namespace orvalo {
namespace {

using test::FakeGateway;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;

class SendEngineTest : public ::testing::Test {
 protected:
  void Start() {
    ASSERT_TRUE(engine_.StartEngine());
    Settle();
  }
  // Returns when a burst of work has ended and no other is under way.
  void Settle() {
    EXPECT_TRUE(bench_.window.Await([](const auto& messages) {
      int open = 0;
      for (const auto& message : messages) {
        open += std::get<0>(message) == kWmBusy ? 1 : std::get<0>(message) == kWmIdle ? -1 : 0;
      }
      return open == 0 && !messages.empty();
    }));
  }
  void Minute() {
    bench_.window.Clear();
    ASSERT_TRUE(bench_.clock.AwaitWaiters(1));
    bench_.clock.Advance(60'000);
    Settle();
  }
  void Stop() {
    engine_.RequestStop(&last_act_);
    EXPECT_TRUE(engine_.WaitForEnd());
  }
  std::vector<std::uint32_t> Posted() {
    std::vector<std::uint32_t> numbers;
    for (const auto& message : bench_.window.messages()) numbers.push_back(std::get<0>(message));
    return numbers;
  }

  test::EngineBench bench_;
  test::RecordingMailbox last_act_;
  SendEngine engine_{bench_.parts(), bench_.settings, *bench_.account};
};

TEST_F(SendEngineTest, AQueuedMessageIsSentAtOnce) {
  Start();
  bench_.window.Clear();
  bench_.settings.SetText(TextSetting::kSenderId, "Me");
  const std::int32_t id = engine_.QueueMessage({.to = ",111", .text = "Hello"});
  Settle();
  EXPECT_EQ(bench_.StatusOf(id), SmsStatus::kUnknown);
  EXPECT_EQ(bench_.database.GetSms(id)->sender_id, "Me");
  EXPECT_EQ(bench_.database.GetSms(id)->charge, "?");
  EXPECT_THAT(Posted(), ElementsAre(kWmBusy, kWmSending, kWmProgress, kWmBalance, kWmIdle));
  Stop();
  EXPECT_THAT(last_act_.messages(), ElementsAre(std::tuple(platform::kWmQuit, 0, 0)));
  EXPECT_FALSE(engine_.IsRunning());
}

TEST_F(SendEngineTest, ScheduledAndOfflineMessagesWait) {
  Start();
  bench_.window.Clear();
  const std::int32_t scheduled =
      engine_.QueueMessage({.status = SmsStatus::kScheduled, .to = ",1", .text = "a"});
  bench_.settings.SetFlag(FlagSetting::kWorkingOnLine, false);
  const std::int32_t offline = engine_.QueueMessage({.to = ",2", .text = "b"});
  engine_.RequestSend({false, {kEveryMessage}});
  engine_.RequestQuery({false, {kEveryMessage}});
  Stop();
  EXPECT_THAT(Posted(), IsEmpty());
  EXPECT_EQ(bench_.StatusOf(scheduled), SmsStatus::kScheduled);
  EXPECT_EQ(bench_.StatusOf(offline), SmsStatus::kPending);
}

TEST_F(SendEngineTest, EveryMinutePromotesSendsAndQueries) {
  Start();
  const auto now = static_cast<std::int32_t>(bench_.clock.Now());
  const auto scheduled = [&](SmsStatus status, std::int32_t time, std::int32_t delay) {
    NewSms sms;
    sms.status = status;
    sms.time = time;
    sms.delay = delay;
    sms.to = ",111";
    return bench_.database.AddSms(sms);
  };
  const std::int32_t due = scheduled(SmsStatus::kScheduled, now + 60, 0);
  const std::int32_t not_due = scheduled(SmsStatus::kScheduled, now + 61, 0);
  const std::int32_t two_days =
      scheduled(SmsStatus::kDelayScheduled, now + 60 + 2 * 86400, 2 * 86400);
  const std::int32_t too_early = scheduled(SmsStatus::kDelayScheduled, now + 61 + 86400, 86400);
  const std::int32_t eight_days = scheduled(SmsStatus::kDelayScheduled, now, 8 * 86400);
  Minute();
  EXPECT_EQ(bench_.StatusOf(due), SmsStatus::kUnknown);
  EXPECT_EQ(bench_.StatusOf(not_due), SmsStatus::kScheduled);
  EXPECT_EQ(bench_.StatusOf(two_days), SmsStatus::kScheduledOnServer);
  EXPECT_EQ(bench_.StatusOf(too_early), SmsStatus::kDelayScheduled);
  EXPECT_EQ(bench_.StatusOf(eight_days), SmsStatus::kDelayScheduled);
  EXPECT_THAT(Posted(), ElementsAre(kWmBusy, kWmPromoting, kWmSending, kWmProgress, kWmBalance,
                                    kWmProgress, kWmBalance, kWmQuerying, kWmIdle));
  Stop();
}

TEST_F(SendEngineTest, AClockSetBackStallsNothing) {
  Start();
  bench_.window.Clear();
  bench_.clock.SetWallClock(bench_.clock.Now() - 3600);
  const std::int32_t id = bench_.Add(",1", "x", MessageType::kText, SmsStatus::kScheduled);
  engine_.RequestSend({false, {kEveryMessage}});  // the wait begins anew
  Settle();
  Minute();
  EXPECT_EQ(bench_.StatusOf(id), SmsStatus::kUnknown);
  Stop();
}

TEST_F(SendEngineTest, PromotionRunsOffline) {
  bench_.settings.SetFlag(FlagSetting::kWorkingOnLine, false);
  ASSERT_TRUE(engine_.StartEngine());
  const std::int32_t id = bench_.Add(",1", "x", MessageType::kText, SmsStatus::kScheduled);
  Minute();
  EXPECT_EQ(bench_.StatusOf(id), SmsStatus::kPending);
  EXPECT_THAT(bench_.fake.Calls(), IsEmpty());
  Stop();
}

TEST_F(SendEngineTest, TheFourthMinuteKeepsTheLoginAlive) {
  Start();
  for (int minute = 1; minute <= 3; ++minute) Minute();
  EXPECT_THAT(bench_.fake.Calls("Ping"), IsEmpty());
  bench_.fake.On("Ping", "", 111);
  Minute();
  EXPECT_EQ(bench_.fake.Calls("Ping").size(), 1u);
  EXPECT_EQ(bench_.fake.Calls("AuthenticateClient").size(), 1u);
  EXPECT_TRUE(bench_.settings.Flag(FlagSetting::kWorkingOnLine));

  // Nobody there: nothing to log in to, no reason to go offline, and no box that the worker waits
  // in.
  bench_.fake.On("Ping", "", 99);
  for (int minute = 5; minute <= 8; ++minute) Minute();
  EXPECT_EQ(bench_.fake.Calls("AuthenticateClient").size(), 1u);
  bench_.fake.On("Ping", "", 111);
  bench_.fake.On("AuthenticateClient", "", 503);
  for (int minute = 9; minute <= 12; ++minute) Minute();
  EXPECT_TRUE(bench_.settings.Flag(FlagSetting::kWorkingOnLine));
  EXPECT_THAT(bench_.boxes.shown(), IsEmpty());

  bench_.fake.On("AuthenticateClient", "", 110);
  for (int minute = 13; minute <= 16; ++minute) Minute();
  EXPECT_FALSE(bench_.settings.Flag(FlagSetting::kWorkingOnLine));
  EXPECT_THAT(Posted(), Contains(kWmOffline));
  EXPECT_THAT(bench_.options.messages(), ElementsAre(std::tuple(kWmGoOffline, 0, 0)));
  Stop();
}

TEST_F(SendEngineTest, ListsAreWorkedInTheirOrderAndTheProgramGoesOfflineAgain) {
  bench_.settings.SetFlag(FlagSetting::kWorkingOnLine, false);
  ASSERT_TRUE(engine_.StartEngine());
  const std::int32_t first = bench_.Add(",1", "first");
  const std::int32_t second = bench_.Add(",2", "second");
  bench_.settings.SetFlag(FlagSetting::kWorkingOnLine, true);
  engine_.RequestSend({true, {first, second}});
  Settle();
  std::vector<std::string> texts;
  for (const auto& call : bench_.fake.Calls("SendMsg")) texts.push_back(call.Argument(1));
  EXPECT_THAT(texts, ElementsAre("first", "second"));
  EXPECT_EQ(bench_.options.messages().size(), 1u);
  Stop();
}

TEST_F(SendEngineTest, WhatAnOperatorsQuestionWasNotToldIsSaid) {
  const auto sent = [&](char id) {
    const std::int32_t row = bench_.Add(",111");
    bench_.database.SetOutcome(
        row, SmsStatus::kPending,
        {SmsStatus::kUnknown, ",ID: " + std::string(32, id), 60, std::int32_t{2'000'000'000}});
    return row;
  };
  const std::int32_t first = sent('a'), second = sent('b');
  Start();
  const struct {
    std::vector<std::int32_t> ids;
    std::int32_t error;
    const char* told;
    std::size_t questions;
  } cases[] = {
      {{first, second}, 0, "", 2},
      {{first}, 208, "The gateway did not tell the status of one message; ", 1},
      {{first, second}, 208, "The gateway did not tell the status of 2 messages; ", 2},
      {{first, second}, 99, "The gateway could not be asked for the status of all messages; ", 1},
      {{first, second}, 0, "", 2},
  };
  for (const auto& c : cases) {
    bench_.fake.On("GetMsgCharge", "status: 001 charge: 1", c.error);
    bench_.fake.ClearCalls();
    bench_.window.Clear();
    engine_.RequestQuery({false, c.ids});
    Settle();
    EXPECT_THAT(bench_.notices.TakeQueryProblem(), ::testing::StartsWith(c.told));
    EXPECT_EQ(bench_.fake.Calls("GetMsgCharge").size(), c.questions) << c.told;
    EXPECT_EQ(std::ranges::count(Posted(), kWmQueryFailed), *c.told == '\0' ? 0 : 1);
  }
  EXPECT_EQ(bench_.notices.TakeQueryProblem(), "");
  Stop();
}

TEST_F(SendEngineTest, AStopInTheMiddleFinishesTheRowInHandAndPostsNoMoreProgress) {
  const std::int32_t older = bench_.Add(",1", "older");
  const std::int32_t newer = bench_.Add(",2,3", "newer", MessageType::kFlash);
  std::promise<void> sending, stopped;
  std::atomic<bool> first = true;
  bench_.fake.On("SendMsg", [&](const FakeGateway::Call&) {
    if (first.exchange(false)) {
      sending.set_value();
      stopped.get_future().wait();
    }
    return FakeGateway::Answer{"ID: x"};
  });
  ASSERT_TRUE(engine_.StartEngine());
  sending.get_future().wait();
  bench_.window.Clear();
  engine_.RequestStop(&last_act_);
  stopped.set_value();
  EXPECT_TRUE(engine_.WaitForEnd());
  EXPECT_EQ(bench_.StatusOf(newer), SmsStatus::kExpanded);
  EXPECT_EQ(bench_.ChildrenOf(newer).size(), 2u);
  EXPECT_EQ(bench_.StatusOf(older), SmsStatus::kPending);
  EXPECT_THAT(Posted(), IsEmpty());
  EXPECT_EQ(last_act_.messages().size(), 1u);
}

}  // namespace
}  // namespace orvalo
