#include "service/part_fate.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "service/kannel_request.h"

namespace orvalo::test {
namespace {

using service::EngineAnswer;
using service::PartEvent;
using service::PartState;
using service::Siblings;

constexpr auto kWaiting = PartState::kWaiting, kAsked = PartState::kAsked,
               kInDoubt = PartState::kInDoubt, kTaken = PartState::kTaken,
               kAtNetwork = PartState::kAtNetwork;

using States = std::set<PartState>;

States AllStates() {
  States all;
  for (int i = 0; i <= static_cast<int>(PartState::kWrittenOff); ++i) {
    all.insert(static_cast<PartState>(i));
  }
  return all;
}

States Without(States states, PartState one) {
  states.erase(one);
  return states;
}

struct Rule {
  PartEvent event;
  States from;
  PartState to;
};

// What happens, in sentences; from all other states nothing does.
std::vector<Rule> Rules() {
  const auto all = AllStates();
  const auto unless_delivered = Without(all, PartState::kDelivered);
  // No network and no engine has had the last word.
  const States unsettled{kWaiting,
                         kAsked,
                         kInDoubt,
                         kTaken,
                         kAtNetwork,
                         PartState::kOutdated,
                         PartState::kWithdrawn,
                         PartState::kWrittenOff};
  return {
      {PartEvent::kAsk, {kWaiting}, kAsked},
      {PartEvent::kRestart, {kAsked}, kInDoubt},
      {PartEvent::kOldLedger, {kWaiting}, kInDoubt},
      {PartEvent::kAnswerTaken, {kAsked}, kTaken},
      {PartEvent::kAnswerNotSent, {kAsked}, kWaiting},
      {PartEvent::kAnswerNoWay, {kAsked}, PartState::kUnroutable},
      {PartEvent::kAnswerMalformed, {kAsked}, PartState::kBadMessage},
      {PartEvent::kAnswerUnclear, {kAsked}, kInDoubt},
      {PartEvent::kReportAtNetwork, unsettled, kAtNetwork},
      {PartEvent::kReportDelivered, all, PartState::kDelivered},
      {PartEvent::kReportUndelivered, unless_delivered, PartState::kUndelivered},
      {PartEvent::kReportExpired, unless_delivered, PartState::kExpired},
      {PartEvent::kReportDeleted, unless_delivered, PartState::kDeleted},
      {PartEvent::kReportRefused, unsettled, PartState::kRefused},
      {PartEvent::kReportNoNumber, unsettled, PartState::kUnroutable},
      {PartEvent::kReportNoRoute, Without(unsettled, kWaiting), PartState::kUnroutable},
      {PartEvent::kReportNoLink, {kAsked, kInDoubt, kTaken}, kWaiting},
      {PartEvent::kReportNoLink, {kAtNetwork}, PartState::kUnroutable},
      {PartEvent::kReportOutdated, unsettled, PartState::kOutdated},
      {PartEvent::kValidityPassed, {kWaiting}, PartState::kOutdated},
      {PartEvent::kEngineLost, {kTaken}, kInDoubt},
      {PartEvent::kNetworkSilent, {kAtNetwork}, PartState::kExpired},
      {PartEvent::kDecidedSent, {kInDoubt}, kAtNetwork},
      {PartEvent::kDecidedNotSent, {kInDoubt}, PartState::kWrittenOff},
      {PartEvent::kDecidedAgain, {kInDoubt}, kWaiting},
      {PartEvent::kSiblingFailed, {kWaiting}, PartState::kWithdrawn},
  };
}

TEST(PartFate, IsKnownForEveryStateAndEvent) {
  const States free{PartState::kRefused,  PartState::kUnroutable, PartState::kBadMessage,
                    PartState::kOutdated, PartState::kWithdrawn,  PartState::kWrittenOff};
  const auto rules = Rules();
  for (std::size_t i = 0; i < service::kPartEvents; ++i) {
    const auto event = static_cast<PartEvent>(i);
    for (const auto state : AllStates()) {
      SCOPED_TRACE(std::string(NameOf(event)) + " of " + NameOf(state));
      const auto rule = std::find_if(rules.begin(), rules.end(), [&](const Rule& one) {
        return one.event == event && one.from.contains(state);
      });
      const auto next = rule == rules.end() ? state : rule->to;
      const auto fate = service::FateOf(state, false, event), again = FateOf(state, true, event);
      ASSERT_EQ(fate.state, next);
      ASSERT_EQ(again.state, next) << "money decides nothing";
      EXPECT_FALSE(again.refund) << "a price goes back once";
      EXPECT_EQ(fate.refund, next != state && free.contains(next));
      const bool is_told = event == PartEvent::kSiblingFailed;
      EXPECT_EQ(fate.siblings, next == state                     ? Siblings::kLeave
                               : next == kWaiting                ? Siblings::kJoin
                               : free.contains(next) && !is_told ? Siblings::kWithdraw
                                                                 : Siblings::kLeave);
      EXPECT_EQ(IsFree(state), free.contains(state));
    }
  }
}

TEST(PartFate, FollowsReportsByWhatTheyMean) {
  const struct {
    int bits;
    const char* detail;
    PartEvent event;
  } cases[] = {
      {8, "", PartEvent::kReportAtNetwork},
      {4, "", PartEvent::kReportAtNetwork},
      {1, "", PartEvent::kReportDelivered},
      {9, "", PartEvent::kReportDelivered},  // bits, not numbers
      {2, "stat:UNDELIV", PartEvent::kReportUndelivered},
      {2, "", PartEvent::kReportUndelivered},
      {32, "", PartEvent::kReportExpired},
      {34, "stat:EXPIRED", PartEvent::kReportExpired},
      {2, "id:1 stat:EXPIRED err:000 text:x", PartEvent::kReportExpired},
      {2, "stat:DELETED", PartEvent::kReportDeleted},
      {2, "id:1 stat:UNDELIV err:000 text:stat:DELETED", PartEvent::kReportUndelivered},
      {16, "NACK/validity expired", PartEvent::kReportOutdated},
      {16, "NACK/0x0000000b/Invalid Destination Address", PartEvent::kReportNoNumber},
      {16, "NACK/no SMSC", PartEvent::kReportNoRoute},
      {16, "NACK/0x00000045/Submit failed", PartEvent::kReportRefused},
  };
  for (const auto& one : cases) {
    EXPECT_EQ(service::EventOfReport(one.bits, one.detail), one.event) << one.bits << one.detail;
  }
}

// The engine answers for all receivers of a request as soon as it knows of one.
TEST(PartFate, FollowsTheEngineByWhatItsAnswerMeansToEachReceiver) {
  const struct {
    EngineAnswer answer;
    PartEvent to_one, to_several;
  } cases[] = {
      {EngineAnswer::kTaken, PartEvent::kAnswerTaken, PartEvent::kAnswerTaken},
      {EngineAnswer::kTakenSlowly, PartEvent::kAnswerTaken, PartEvent::kAnswerTaken},
      {EngineAnswer::kUnroutable, PartEvent::kAnswerNoWay, PartEvent::kAnswerTaken},
      {EngineAnswer::kNoLink, PartEvent::kAnswerNotSent, PartEvent::kAnswerTaken},
      {EngineAnswer::kDenied, PartEvent::kAnswerNoWay, PartEvent::kAnswerNoWay},
      {EngineAnswer::kBadMessage, PartEvent::kAnswerMalformed, PartEvent::kAnswerMalformed},
      {EngineAnswer::kBusy, PartEvent::kAnswerNotSent, PartEvent::kAnswerUnclear},
      {EngineAnswer::kWrongLogin, PartEvent::kAnswerNotSent, PartEvent::kAnswerNotSent},
      {EngineAnswer::kNotAsked, PartEvent::kAnswerNotSent, PartEvent::kAnswerNotSent},
      {EngineAnswer::kUnclear, PartEvent::kAnswerUnclear, PartEvent::kAnswerUnclear},
  };
  for (const auto& one : cases) {
    EXPECT_EQ(EventOf(one.answer, 1), one.to_one) << NameOf(one.answer);
    EXPECT_EQ(EventOf(one.answer, 2), one.to_several) << NameOf(one.answer);
  }
}

}  // namespace
}  // namespace orvalo::test
