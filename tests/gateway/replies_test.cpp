#include <gtest/gtest.h>

#include "gateway/account.h"
#include "gateway/batch_reply.h"
#include "gateway/gateway_ids.h"
#include "gateway/send_batch.h"
#include "gateway/status_reply.h"

namespace orvalo {
namespace {

std::string Shown(const std::vector<BatchEntry>& entries) {
  std::string shown;
  for (const auto& entry : entries) {
    shown += (entry.success ? "+" : "-") + entry.number + "[" + entry.text + "]";
  }
  return shown;
}

TEST(BatchReply, EntriesInEveryOrderAndCase) {
  const struct {
    const char* reply;
    const char* entries;
  } cases[] = {
      {"", ""},
      {"nothing to see here", ""},
      {"ID: abc To: 111\nERR: 208, refused by network To: 222\n",
       "+111[abc]-222[208, refused by network]"},
      {"id: abc to: 111 err: 5 To: 222", "+111[abc]-222[5]"},
      {"To: 111 ID: abc ID: def", "+111[abc]+111[def]"},  // a number is kept until the next one
      {"ID: abc To:", "+[abc]"},                          // breaks off
      {"ID: a  b \n\n c To: 1", "+1[a b c]"},
      {"IDx: abc To: 111", ""},
      {"ID: abc\tTo: 111", "+[abc\tTo: 111]"},  // a tab separates nothing
  };
  for (const auto& c : cases) EXPECT_EQ(Shown(ParseBatchReply(c.reply)), c.entries) << c.reply;
}

TEST(BatchReply, ALongReplyIsReadInLinearTime) {
  std::string reply = "ID: ";
  reply.append(8 << 20, 'x');
  ASSERT_EQ(ParseBatchReply(reply).size(), 1u);
  EXPECT_EQ(ParseBatchReply(std::string(4 << 20, '\n') + "ID: a To: 1").size(), 1u);
}

TEST(BatchReply, RecordsBelongToTheirChunkOnly) {
  std::vector<RecipientRecord> chunk(2);
  chunk[0].number = "111";
  chunk[0].entry = "A7";
  chunk[1].number = "222";
  chunk[1].entry = "222";
  SendOutcome outcome;
  const std::string reply =
      "ID: " + std::string(60, 'f') + " To: 111 ERR: 9 To: 222 ID: foreign To: 333";
  EXPECT_EQ(RecordChunkReply(reply, chunk, &outcome), 1);
  ASSERT_EQ(outcome.successes.size(), 1u);
  EXPECT_EQ(outcome.successes[0].entry.view(), "A7");
  EXPECT_EQ(outcome.successes[0].contact_id, kFromBatchReply);
  EXPECT_EQ(outcome.successes[0].gateway_id.view(), ",ID: " + std::string(33, 'f'));  // 38 in all
  ASSERT_EQ(outcome.failures.size(), 1u);
  EXPECT_EQ(outcome.failures[0].number.view(), "222");
}

TEST(StatusReply, NumberAndChargeWhereverTheyStand) {
  const struct {
    const char* reply;
    int status;  // -1: none
    const char* charge;
  } cases[] = {
      {"status: 004 charge: 0.8", 4, "0.8"},
      {"ID: X Status: 010 Charge:  1.25 rest", 10, "1.25"},
      {"STATUS:4", 0, "-"},       // the character after the colon is skipped
      {"charge:9.5 ", -1, ".5"},  // likewise
      {"status:", 0, "-"},
      {"charge: ", -1, ""},
      {"status: -3", -3, "-"},
      {"status: 99999999999999999999", 2147483647, "-"},
      {"", -1, "-"},
  };
  for (const auto& c : cases) {
    const StatusReply reply = ParseStatusReply(c.reply);
    EXPECT_EQ(reply.status.value_or(-1), c.status) << c.reply;
    EXPECT_EQ(reply.charge.value_or("-"), c.charge) << c.reply;
  }
}

TEST(StatusReply, GatewayNumbersBecomeStatuses) {
  const int expected[] = {-1, 11, 1, 8, 9, 13, 14, 15, -1, 16, 17, 7, -1};
  for (int number = 0; number <= 12; ++number) {
    const auto status = StatusOfGatewayNumber(number);
    EXPECT_EQ(status ? static_cast<int>(*status) : -1, expected[number]) << number;
  }
}

TEST(StatusReply, IntervalsWidenAndEnd) {
  std::vector<int> intervals;
  for (int interval = 60; interval != 0; interval = NextQueryInterval(interval))
    intervals.push_back(interval);
  EXPECT_EQ(intervals, (std::vector<int>{60, 300, 1800, 2700, 3600}));
  EXPECT_EQ(NextQueryInterval(1), 0);
}

TEST(GatewayIds, EntriesWithAndWithoutNumbers) {
  const std::string id(32, 'a');
  const auto entries = ParseGatewayIds(",ID: " + id + "|27821,ID: short|5,id: " + id +
                                       ",,ERR: 5,ID: " + id + "bbb|7");
  ASSERT_EQ(entries.size(), 3u);
  EXPECT_EQ(entries[0].id, id);
  EXPECT_EQ(entries[0].number, "27821");
  EXPECT_EQ(entries[1].id, "short|5");  // a number follows a full id only
  EXPECT_EQ(entries[2].id, id);
  EXPECT_EQ(entries[2].number, "");
  EXPECT_TRUE(ParseGatewayIds("").empty());
  EXPECT_TRUE(ParseGatewayIds(",").empty());
  EXPECT_EQ(RemoveGatewayId(",ID: x|1,ID: y|2,ID: x|1", {"x", "1"}), ",ID: y|2");
}

TEST(Balance, TenthsAreTruncated) {
  const struct {
    const char* text;
    int tenths;
    bool fraction;
  } cases[] = {{"12.57", 125, true}, {"7", 70, false},      {"7.", 70, true},
               {"0.09", 0, true},    {"garbage", 0, false}, {"99999999999", 2147483647, false},
               {"1.2.9", 19, true}};
  for (const auto& c : cases) {
    const BalanceValue value = ParseBalance(c.text);
    EXPECT_EQ(value.tenths, c.tenths) << c.text;
    EXPECT_EQ(value.with_fraction, c.fraction) << c.text;
  }
}

}  // namespace
}  // namespace orvalo
