#include "gateway/status_pass.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "engine_bench.h"
#include "gateway/engine_requests.h"

namespace orvalo {
namespace {

using test::FakeGateway;
using ::testing::ElementsAre;

const std::string kIdA(32, 'a');
const std::string kIdB(32, 'b');

class StatusPassTest : public ::testing::Test {
 protected:
  std::int32_t Sent(const std::string& api_msg_id, std::int32_t query_time = 60,
                    std::int32_t due_in = 0, SmsStatus status = SmsStatus::kUnknown) {
    const std::int32_t id = bench_.Add(",111");
    bench_.database.SetOutcome(id, SmsStatus::kPending,
                               {status, api_msg_id, query_time, Now() + due_in});
    return id;
  }
  std::int32_t Now() { return static_cast<std::int32_t>(bench_.clock.Now()); }
  void Query(std::int32_t id = kEveryMessage) { pass_.QueryMessageStatus(id); }
  MessageRow Row(std::int32_t id) { return *bench_.database.GetSms(id); }

  test::EngineBench bench_;
  std::mutex pass_lock_;
  StatusPass pass_{bench_.parts(), pass_lock_};
};

TEST_F(StatusPassTest, DueRowsGetStatusChargeAndTheNextInterval) {
  bench_.fake.On("GetMsgCharge", "Status: 004 Charge: 0.8");
  const std::int32_t due = Sent(",ID: " + kIdA);
  const std::int32_t later = Sent(",ID: " + kIdB, 60, 1);
  const std::int32_t ended = Sent(",ID: " + kIdB, 0);
  Query();
  EXPECT_EQ(Row(due).stat, 9);
  EXPECT_EQ(Row(due).charge, "0.8");
  EXPECT_EQ(Row(due).query_time, 300);
  EXPECT_EQ(Row(due).stat_qry_tm, Now() + 300);
  EXPECT_EQ(Row(later).stat, 11);
  EXPECT_EQ(Row(ended).stat, 11);
  EXPECT_EQ(bench_.fake.Calls("GetMsgCharge").size(), 1u);
  EXPECT_EQ(bench_.fake.Calls("GetMsgCharge")[0].Argument(0), "1");
  EXPECT_EQ(bench_.fake.Calls("GetMsgCharge")[0].Argument(1), kIdA);
  EXPECT_THAT(bench_.window.messages(),
              ElementsAre(std::tuple(kWmQuerying, 0, 0), std::tuple(kWmProgress, 1, 0)));
  EXPECT_THAT(bench_.outbox.ids(), ElementsAre(0));
}

TEST_F(StatusPassTest, ARowThatMovesOnIsAskedOncePerIntervalOnly) {
  bench_.fake.On("GetMsgCharge",
                 "status: 002 charge: 0.8");  // Unknown → Queued, which is followed next
  const std::int32_t id = Sent(",ID: " + kIdA);
  Query();
  EXPECT_EQ(bench_.fake.Calls("GetMsgCharge").size(), 1u);
  EXPECT_EQ(Row(id).stat, 1);

  std::vector<int> intervals;
  for (int i = 0; i < 6; ++i) {
    intervals.push_back(Row(id).query_time);
    bench_.clock.Advance(4'000'000);
    Query();
  }
  EXPECT_THAT(intervals, ElementsAre(300, 1800, 2700, 3600, 0, 0));
  EXPECT_EQ(bench_.fake.Calls("GetMsgCharge").size(), 5u);
}

TEST_F(StatusPassTest, OnRequestTheScheduleStays) {
  bench_.fake.On("GetMsgCharge", "status: 003 charge: 0.8");
  const std::int32_t id = Sent(",ID: " + kIdA, 60, 1000);
  Query(id);
  EXPECT_EQ(Row(id).stat, 8);
  EXPECT_EQ(Row(id).query_time, 60);
  EXPECT_EQ(Row(id).stat_qry_tm, Now() + 1000);
}

TEST_F(StatusPassTest, AnErrorOrSilenceLeavesTheRowButNotItsSchedule) {
  const std::int32_t failed = Sent(",ID: " + kIdA);
  bench_.fake.On("GetMsgCharge", "status: 004 charge: 9.9", 99);
  Query();
  EXPECT_EQ(Row(failed).stat, 11);
  EXPECT_EQ(Row(failed).charge, "?");
  EXPECT_EQ(Row(failed).query_time, 300);
  EXPECT_EQ(pass_.unanswered().count, 1);
  EXPECT_EQ(pass_.unanswered().last.code, 99);

  bench_.clock.Advance(300'000);
  bench_.fake.On("GetMsgCharge", "status: 008 charge: 0.5");  // 8 changes nothing but the charge
  Query();
  EXPECT_EQ(Row(failed).stat, 11);
  EXPECT_EQ(Row(failed).charge, "0.5");

  bench_.clock.Advance(1'800'000);
  bench_.fake.On("GetMsgCharge", "<html>what?</html>");
  Query();
  EXPECT_EQ(Row(failed).stat, 11);
  EXPECT_EQ(Row(failed).charge, "");
}

// What the operator does while the gateway takes its time.
TEST_F(StatusPassTest, AnEditKeepsItsRowAndAnswersAreStoredBeforeTheNextQuestion) {
  const std::int32_t edited = Sent(",ID: " + kIdA + ",ID: " + kIdB);
  const std::int32_t updated = Sent(",ID: " + kIdA);
  const std::int32_t last = Sent(",ID: " + kIdA);
  int questions = 0;
  bench_.fake.On("GetMsgCharge", [&](const FakeGateway::Call&) {
    switch (++questions) {
      case 2:
        EXPECT_EQ(Row(last).stat, 9);
        bench_.database.BeginEditSms(updated);
        bench_.database.UpdateEditedSms(updated, 0, ",222", "new");
        break;
      case 4:  // between the two ids of one row
        EXPECT_EQ(Row(edited).stat, 9);
        bench_.database.BeginEditSms(edited);
        break;
    }
    return FakeGateway::Answer{"status: 004 charge: 0.8"};
  });
  Query();
  EXPECT_EQ(questions, 4);
  EXPECT_EQ(Row(updated).stat, 0);
  EXPECT_EQ(Row(updated).charge, "?");
  EXPECT_EQ(Row(edited).stat, 5);
  EXPECT_TRUE(bench_.ChildrenOf(edited).empty()) << "a copy in Editing would be sent";
}

TEST_F(StatusPassTest, ACopyForAFurtherIdHasTheRowsNewStatus) {
  int questions = 0;
  const std::int32_t id = Sent(",ID: " + kIdA + ",ID: " + kIdB);
  bench_.fake.On("GetMsgCharge", [&](const FakeGateway::Call&) {
    return FakeGateway::Answer{++questions == 1 ? "status: 004 charge: 0.8" : "charge: 0.9"};
  });
  Query();
  ASSERT_EQ(bench_.ChildrenOf(id).size(), 1u);
  EXPECT_EQ(bench_.ChildrenOf(id)[0].stat, 9);
  EXPECT_EQ(bench_.ChildrenOf(id)[0].charge, "0.9");
}

TEST_F(StatusPassTest, FurtherIdsOfARowMoveToACopy) {
  bench_.fake.On("GetMsgCharge", [](const FakeGateway::Call& call) {
    return FakeGateway::Answer{call.Argument(1) == kIdA ? "status: 004 charge: 0.8"
                                                        : "status: 009"};
  });
  const std::int32_t id = Sent(",ID: " + kIdA + "|111,ID: " + kIdB + "|222");
  Query();
  EXPECT_EQ(Row(id).stat, 9);
  EXPECT_EQ(Row(id).api_msg_id, ",ID: " + kIdA + "|111");
  const auto copies = bench_.ChildrenOf(id);
  ASSERT_EQ(copies.size(), 1u);
  EXPECT_EQ(copies[0].stat, 16);
  EXPECT_EQ(copies[0].charge, "0.8");  // carried over: the second reply names none
  EXPECT_EQ(copies[0].api_msg_id, "");
  EXPECT_EQ(copies[0].query_time, 0);
}

TEST_F(StatusPassTest, AStopEndsTheWalkAndKeepsTheAnswers) {
  std::vector<std::int32_t> ids;
  for (int i = 0; i < 3; ++i) ids.push_back(Sent(",ID: " + kIdA));
  bench_.fake.On("GetMsgCharge", [&](const FakeGateway::Call&) {
    bench_.notices.RequestStop();
    return FakeGateway::Answer{"status: 004 charge: 0.8"};
  });
  Query();
  EXPECT_EQ(Row(ids[2]).stat, 9);  // the last row is asked first
  EXPECT_EQ(Row(ids[1]).stat, 11);
  EXPECT_EQ(bench_.fake.Calls("GetMsgCharge").size(), 1u);
}

}  // namespace
}  // namespace orvalo
