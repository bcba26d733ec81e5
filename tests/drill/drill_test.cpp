// The drill in small: whatever dies or is cut off while messages go out, everybody gets his once
// and the outbox says so.

#include "drill/drill.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace orvalo::test {
namespace {

TEST(DrillTest, EverybodyGetsHisMessageOnce) {
  DrillPlan plan;
  plan.seed = 7;
  plan.kills = 7;
  plan.cuts = 4;
  plan.recipients = 2'000;
  plan.power_cut = POWER_CUT;
  const Verdict verdict = Drill(plan).Run();
  EXPECT_GE(verdict.recipients, plan.recipients);
  EXPECT_THAT(verdict.examples, testing::IsEmpty());
  EXPECT_TRUE(verdict.IsClean());
}

}  // namespace
}  // namespace orvalo::test
