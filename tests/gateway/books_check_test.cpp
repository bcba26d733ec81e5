#include "gateway/books_check.h"

#include <gmock/gmock.h>

#include "engine_bench.h"
#include "gateway/listed_messages.h"

namespace orvalo::test {
namespace {

using testing::ElementsAre;

constexpr std::int64_t kSince = 1'000'000;

std::string Id(char digit) { return std::string(32, digit); }

MessageRow Row(std::int32_t id, char gateway_id, SmsStatus status, const std::string& charge) {
  MessageRow row;
  row.id = id;
  row.time = static_cast<std::int32_t>(kSince);
  row.stat = static_cast<std::int32_t>(status);
  row.api_msg_id = gateway_id == 0 ? "" : ",ID: " + Id(gateway_id);
  row.number = "27820000001";
  row.charge = charge;
  return row;
}

ListedMessage Listed(char id, const std::string& charge, std::int32_t status) {
  return {Id(id), Id('k'), "27820000001", charge, status, kSince};
}

constexpr std::int32_t kQueuedThere = 2, kDeliveredThere = 4, kRoutingErrorThere = 9;

class BooksCheckTest : public testing::Test {
 protected:
  // What is found, in short: the kind's number, the row, what is here and there.
  std::vector<std::string> Found(const std::vector<MessageRow>& rows,
                                 const std::vector<ListedMessage>& listed,
                                 const std::vector<JournalEntry>& entries = {}) {
    std::vector<std::string> found;
    BooksCheck check(kSince, [&](const BooksDifference& difference) {
      found.push_back(std::to_string(static_cast<int>(difference.kind)) + ":" +
                      std::to_string(difference.row) + ":" + difference.here + ":" +
                      difference.there);
      last_ = difference;
    });
    for (const MessageRow& row : rows) check.AddRow(row);
    for (const JournalEntry& entry : entries) check.AddUnanswered(entry);
    for (const ListedMessage& message : listed) check.AddListed(message);
    check.End();
    totals_ = check.totals();
    return found;
  }

  BooksDifference last_{};
  BooksTotals totals_;
};

TEST_F(BooksCheckTest, FindsWhatDiffersAndNothingElse) {
  EXPECT_THAT(Found({Row(1, 'a', SmsStatus::kDelivered, "0.8"),
                     Row(2, 'b', SmsStatus::kUnknown, "0.80"), Row(3, 'c', SmsStatus::kSent, "1")},
                    {Listed('c', "1.0", kQueuedThere), Listed('a', "0.8", kDeliveredThere),
                     Listed('b', "0.8", kQueuedThere)}),
              ElementsAre());
  EXPECT_EQ(totals_.matched, 3);
  EXPECT_EQ(totals_.charges.Text(), "2.6");

  EXPECT_THAT(
      Found({Row(1, 'a', SmsStatus::kDelivered, "0.9")}, {Listed('a', "0.8", kRoutingErrorThere)}),
      ElementsAre("3:1:0.9:0.8", "4:1::"));
  EXPECT_EQ(last_.status_there, SmsStatus::kRoutingError);
  EXPECT_THAT(Found({Row(1, 'a', SmsStatus::kUnknown, "0.8")}, {}), ElementsAre("1:1:0.8:"));
  EXPECT_THAT(Found({}, {Listed('a', "0.8", kDeliveredThere)}), ElementsAre("0:0::0.8"));
  EXPECT_THAT(Found({Row(7, 0, SmsStatus::kFailed, "?")}, {Listed('a', "0.8", kDeliveredThere)}),
              ElementsAre("0:7::0.8"))
      << "perhaps it is that one";
}

TEST_F(BooksCheckTest, WhatTheNextQuestionBringsIsNews) {
  MessageRow row = Row(1, 'a', SmsStatus::kUnknown, "?");
  row.query_time = 60;
  EXPECT_THAT(Found({row}, {Listed('a', "0.8", kDeliveredThere)}), ElementsAre());
  EXPECT_EQ(totals_.news, 1);
  row.query_time = 0;
  EXPECT_THAT(Found({row}, {Listed('a', "0.8", kDeliveredThere)}),
              ElementsAre("3:1:?:0.8", "4:1::"));
}

TEST_F(BooksCheckTest, NumbersAreTheSameInEveryForm) {
  const std::pair<const char*, bool> cases[] = {{"27820000001", true},
                                                {"+27820000001", true},
                                                {"0027820000001", true},
                                                {"0820000001", true},
                                                {"", true},
                                                {"27820000002", false},
                                                {"820000001", false},
                                                {"0820000002", false}};
  for (const auto& [number, same] : cases) {
    MessageRow row = Row(1, 'a', SmsStatus::kDelivered, "0.8");
    row.number = number;
    EXPECT_EQ(Found({row}, {Listed('a', "0.8", kDeliveredThere)}).empty(), same) << number;
  }
}

TEST_F(BooksCheckTest, LooksBackNoFurtherThanAsked) {
  MessageRow row = Row(1, 'a', SmsStatus::kDelivered, "9");
  row.time = kSince - 1;
  ListedMessage old = Listed('b', "0.8", kDeliveredThere);
  old.accepted = kSince - 1;
  EXPECT_THAT(Found({row}, {old}), ElementsAre());
  EXPECT_EQ(totals_.listed, 0);
  row.time = kSince;  // handed over before, for a later time
  old.id = Id('a');
  EXPECT_THAT(Found({row}, {old}), ElementsAre());
}

// Rows of two ids have the values of one of them; one that goes out again those of the last time.
TEST_F(BooksCheckTest, ComparesNoValuesOfAnotherSending) {
  MessageRow two = Row(1, 'a', SmsStatus::kDelivered, "0.8");
  two.api_msg_id += ",ID: " + Id('b');
  EXPECT_THAT(Found({two, Row(2, 'c', SmsStatus::kPending, "5")},
                    {Listed('a', "0.8", kDeliveredThere), Listed('b', "1.6", kRoutingErrorThere),
                     Listed('c', "0.8", kDeliveredThere)}),
              ElementsAre());
}

TEST_F(BooksCheckTest, WhatWaitsInTheJournalIsNotMissing) {
  JournalEntry entry;
  entry.id = 5;
  entry.key = std::string(kJournalKeyWidth, 'd');
  entry.recipients.resize(4);
  entry.answers = {{0, 0, "", "ID: " + Id('a') + " To: 1\nERR: 208, no To: 2\n"}};
  ListedMessage listed = Listed('a', "0.8", kQueuedThere);
  listed.key = entry.key + "00000000";
  EXPECT_THAT(Found({}, {listed}, {entry}), ElementsAre("5:5::"));
  EXPECT_EQ(last_.answered, 2);
  EXPECT_EQ(last_.recipients, 4);
  EXPECT_EQ(last_.accepted, 1);
}

TEST_F(BooksCheckTest, CreditsLessChargesAreTheBalance) {
  const struct {
    std::int64_t since;
    const char* balance;
    bool agrees;
  } cases[] = {{0, "9.2", true},          {0, "9.1", false},           {0, "9.3", false},
               {kSince, "9.20", true},    {kSince, "9.1", true},       {kSince, "9.3", false},
               {kSince + 1, "9.3", true}, {kSince + 1, "10.1", false}, {0, "much", true}};
  for (const auto& [since, balance, agrees] : cases) {
    int found = 0;
    BooksCheck check(since, [&](const BooksDifference& difference) {
      if (difference.kind == BooksDifference::Kind::kOtherSum) ++found;
    });
    check.AddListed(Listed('a', "0.8", kDeliveredThere));
    check.CheckFunds({balance, "10.0"});
    EXPECT_EQ(found == 0, agrees) << since << ' ' << balance;
  }
}

TEST(MoneyTest, AddsWhatIsTold) {
  Money sum;
  for (const char* text : {"0.8", "1.6", "0.05", "12", "0.000000001"}) sum.Add(*Money::Of(text));
  EXPECT_EQ(sum.Text(), "14.450000001");
  EXPECT_EQ(Money().Text(), "0.0");
  for (const char* text : {"", "?", "-1", "1.", ".5", "1,5", "1e3", " 1"})
    EXPECT_FALSE(Money::Of(text)) << text;
}

TEST(ListedMessagesTest, ReadsPageByPageAndTriesAgain) {
  const std::string message =
      R"({"id":"i","key":"k","to":"1","charge":"0.8","status":4,"accepted":7})";
  const auto page = [&](const std::string& next) {
    return R"({"messages":[)" + message + "]" + (next.empty() ? "" : R"(,"next":")" + next + "\"") +
           "}";
  };
  using Answer = FakeGateway::Answer;
  const struct {
    std::vector<Answer> answers;
    std::int32_t code;
    int visited;
    std::size_t asked;
  } cases[] = {
      {{{page("2")}, {"ERR: 113", 113}, {page("3")}, {page("")}}, 0, 3, 4},
      {{{page("2")}, {page("2")}}, kNotUnderstood, 2, 2},
      {{{page("2")}, {"[]"}}, kNotUnderstood, 1, 2},
      {{{R"({"messages":[{"id":7}]})"}}, kNotUnderstood, 0, 1},
      {{{page("2")}, {"ERR: 99", 99}}, kGatewayUnreachable, 1, 6},
      {{{"ERR: 102", 102}}, kGatewayCannot, 0, 1},
  };
  for (const auto& [script, code, visited, asked] : cases) {
    const auto& answers = script;
    FakeGateway fake;
    fake.TellMessages();
    std::size_t next = 0;
    fake.On("ListMessages", [&](const FakeGateway::Call&) {
      return answers[std::min(next++, answers.size() - 1)];
    });
    platform::ClassRegistry registry;
    fake.Register(registry);
    GatewayClient gateway(registry);
    FakeClock clock;
    int found = 0;
    const auto failure = ForEachListed(
        gateway, clock, 0, [&](const ListedMessage&) { ++found; }, [] {});
    EXPECT_EQ(failure.code, code);
    EXPECT_EQ(found, visited);
    EXPECT_EQ(fake.Calls("ListMessages").size(), asked);
  }
  EngineBench without;
  EXPECT_EQ(ForEachListed(*without.gateway, without.clock, 0, {}, {}).code, kGatewayCannot);
}

}  // namespace
}  // namespace orvalo::test
