#include <map>

#include "store/message_type.h"
#include "store/sms_status.h"
#include "store_fixture.h"

namespace orvalo::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class MessageTest : public StoreTest {};

TEST_F(MessageTest, AddedMessagesAndTheirCopies) {
  const auto ann = "A" + std::to_string(AddPerson("Ann"));
  db().AddSms({SmsStatus::kScheduled, 123, 2, 77, ",A9,+27821", "Grüße", "Shop", -5, "1.5"});
  EXPECT_EQ(LineOf(1), "1|123|4|2|77|,A9,+27821|,+27821|Grüße||0|Shop|-5|0|0|1.5");
  const auto id = db().AddSms({SmsStatus::kPending, 0, 1, 0, ",+1,+2", "text", "Me", 9, "?"});
  EXPECT_EQ(LineOf(id), "2|1000000000|0|1|2|,+1,+2|+1,+2|text||0|Me|9|0|0|?");
  EXPECT_EQ(db().GetSms(99), std::nullopt);

  clock_.Advance(5000);
  EXPECT_TRUE(db().SetOutcome(id, SmsStatus::kPending, {SmsStatus::kDelivered, ",ID: x", 60, 90}));
  EXPECT_EQ(LineOf(id), "2|1000000000|9|1|2|,+1,+2|+1,+2|text|,ID: x|0|Me|9|60|90|?");
  // A copy is new, unsent, and keeps the reference.
  const auto same = db().DuplicateSms(id, std::nullopt);
  EXPECT_EQ(LineOf(same), "3|1000000005|9|1|2|,+1,+2|+1,+2|text||0|Me|9|0|0|?");
  const auto other = db().DuplicateSms(same, SmsStatus::kFailed);
  EXPECT_EQ(LineOf(other), "4|1000000005|2|1|2|,+1,+2|+1,+2|text||0|Me|9|0|0|?");
  const auto single = db().CopySmsTo(id, SmsStatus::kPending, ann);
  EXPECT_EQ(LineOf(single), "5|1000000005|0|1|2|A1|Ann Doe|text||0|Me|9|0|0|?");
  const std::vector<SmsDatabase::ChildSms> children = {
      {ann, {SmsStatus::kUnknown, ",ID: a", 60, 1060, "+5"}},
      {"+2", {SmsStatus::kFailed, "", 0, 0, "+2", "301: none"}}};
  EXPECT_TRUE(db().AddChildren(id, children));
  EXPECT_TRUE(db().AddChildren(id, {}));
  EXPECT_EQ(LineOf(6), "6|1000000005|11|1|2|A1|Ann Doe|text|,ID: a|0|Me|9|60|1060|?|+5");
  EXPECT_EQ(LineOf(7), "7|1000000005|2|1|2|+2|+2|text||0|Me|9|0|0|?|+2|301: none");
  EXPECT_EQ(Add("+1"), 8);
  EXPECT_EQ(db().CountSms(), 8);
}

TEST_F(MessageTest, EditingLeavesForTheStatusThatTheSavedOneAsksFor) {
  const std::map<int, int> after_editing = {{0, 0}, {4, 0}, {6, 6}, {7, 6}, {9, 0}};
  for (const auto& [saved, expected] : after_editing) {
    SCOPED_TRACE(saved);
    const auto id = Add("+1", static_cast<SmsStatus>(saved));
    db().BeginEditSms(id);
    db().BeginEditSms(id);  // once more does not forget the status
    const auto number = std::to_string(id);
    EXPECT_EQ(LineOf(id), number + "|1000000000|5|0|" + number + "|+1|+1|Hello||" +
                              std::to_string(saved) + "||0|0|0|");
    db().UpdateEditedSms(id, 1, ",+2,+3", "new");
    EXPECT_EQ(LineOf(id), number + "|1000000000|" + std::to_string(expected) + "|1|" + number +
                              "|,+2,+3|+2,+3|new||" + std::to_string(saved) + "||0|0|0|");
  }
  const auto left = Add("+1", SmsStatus::kSent);
  const auto untouched = Add("+1", SmsStatus::kScheduledOnServer);
  db().BeginEditSms(left);
  Reopen();
  EXPECT_EQ(StatusOf(left), SmsStatus::kSent);
  EXPECT_EQ(StatusOf(untouched), SmsStatus::kScheduledOnServer);
}

TEST_F(MessageTest, AStatusChangesOnlyFromTheOneExpected) {
  const auto id = Add("+1", SmsStatus::kProcessing);
  EXPECT_FALSE(db().BeginEditSms(id)) << "it would be sent again";
  EXPECT_FALSE(db().UpdateEditedSms(id, 0, "+2", "new"));
  db().SetSmsStatus(id, SmsStatus::kUnknown);
  ASSERT_TRUE(db().BeginEditSms(id));
  const std::string editing = LineOf(id);
  const auto unknown = SmsStatus::kUnknown;
  EXPECT_FALSE(db().ChangeStatus(id, unknown, SmsStatus::kPending));
  EXPECT_FALSE(db().SetOutcome(id, unknown, {SmsStatus::kSent, ",ID: x", 1, 1, "+1", "x"}));
  EXPECT_FALSE(db().SetExpanded(id, unknown, "+1"));
  EXPECT_FALSE(db().SetQueryAnswer(id, unknown, {std::nullopt, "7"}));
  EXPECT_FALSE(db().SetQueryAnswer(id, unknown, {SmsStatus::kDelivered, "7"}));
  EXPECT_FALSE(db().SetQueryAnswer(id, unknown, {std::nullopt, "7"}, 1, 1));
  EXPECT_FALSE(db().SetQueryAnswer(id, unknown, {SmsStatus::kDelivered, "7"}, 1, 1));
  EXPECT_EQ(LineOf(id), editing);
  EXPECT_TRUE(db().UpdateEditedSms(id, 0, "+2", "new"));
  EXPECT_TRUE(db().ChangeStatus(id, SmsStatus::kPending, SmsStatus::kProcessing));
}

TEST_F(MessageTest, MissingRowsAreToldAndChangeNothing) {
  const auto id = Add("+1");
  db().DeleteSms(id);
  db().DeleteSms(id);
  db().BeginEditSms(id);
  db().UpdateEditedSms(id, 0, "+1", "x");
  EXPECT_FALSE(db().SetSmsStatus(id, SmsStatus::kSent));
  EXPECT_FALSE(db().ChangeStatus(id, SmsStatus::kPending, SmsStatus::kSent));
  EXPECT_FALSE(db().SetOutcome(id, SmsStatus::kPending, {SmsStatus::kSent}));
  EXPECT_FALSE(db().SetExpanded(id, SmsStatus::kPending, "+1"));
  EXPECT_FALSE(db().SetQuerySchedule(id, 1, 1));
  EXPECT_FALSE(db().SetApiMsgId(id, "x"));
  EXPECT_FALSE(db().SetQueryAnswer(id, SmsStatus::kPending, {SmsStatus::kSent, "1"}));
  EXPECT_FALSE(db().SetQueryAnswer(id, SmsStatus::kPending, {std::nullopt, "1"}, 60, 60));
  EXPECT_EQ(db().DuplicateSms(id, std::nullopt), -1);
  EXPECT_EQ(db().CopySmsTo(id, SmsStatus::kPending, "+1"), -1);
  const SmsDatabase::ChildSms child{"+1", {SmsStatus::kPending}};
  EXPECT_FALSE(db().AddChildren(id, {&child, 1}));
  EXPECT_EQ(db().CountSms(), 0);
  EXPECT_EQ(Add("+1"), id + 1);  // the id is not used again, and none was wasted
}

TEST_F(MessageTest, LogLines) {
  RecordingLog log;
  Add("+0");  // before the log is attached
  db().AttachLog(&log);
  const auto id = Add("+1");
  db().SetSmsStatus(99, SmsStatus::kSent);
  db().SetSmsStatus(id, SmsStatus::kSent);
  db().BeginEditSms(id);
  db().UpdateEditedSms(id, 0, "+2", "new");
  db().UpdateEditedSms(99, 0, "+2", "new");
  const SmsDatabase::ChildSms child{"+3", {SmsStatus::kPending}};
  db().AddChildren(id, {&child, 1});
  log.enabled = false;
  Add("+4");
  db().SetSmsStatus(99, SmsStatus::kSent);
  db().AttachLog(nullptr);
  EXPECT_THAT(log.lines, ElementsAre("Added SMS: SMS_ID (2) Mobile:+1 Msg:Hello\n",
                                     "FAILED:Can't change SMS status SMS_ID (99) Status:3",
                                     "Updated SMS: SMS_ID (2) Mobile:+2 Msg:new",
                                     "Added SMS: SMS_ID (3) Mobile:+3 Msg:new\n"));
}

TEST_F(MessageTest, RecipientDisplayText) {
  const std::string ann = "A" + std::to_string(AddPerson("Ann"));
  const std::string ben = "A" + std::to_string(AddPerson("Ben"));
  std::string long_name;
  for (int i = 0; i < 40; ++i) long_name += "ä";
  const std::string wide = "A" + std::to_string(AddPerson(long_name));
  const std::string long_to = "," + std::string(126, '1') + "äöü";
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"", ""},
      {",", ""},
      {"+27", "+27"},
      {",+27", "+27"},
      {",+27,", "+27"},
      {",,+27", ",+27"},
      {"," + ann + ",+27," + ben + "," + ann, "Ann Doe,+27,Ben Doe ..."},
      {"+1,+2,+3,", "+1,+2,+3"},
      {"+1,+2,+3,,", "+1,+2,+3 ..."},
      {"A999,A,Ax,1", ",, ..."},
      {"A99999999999999999999999999", ""},
      {ann + "junk", "Ann Doe"},
      {long_to, long_to.substr(1, 126) + "ä"},
      {wide, long_name.substr(0, 64) + " Doe"},
  };
  for (const auto& [to, expected] : cases) EXPECT_EQ(db().RecipientDisplayText(to), expected) << to;
}

TEST_F(MessageTest, CountsWhatWaitsAndFailsWhatWasInterrupted) {
  for (int status = 0; status < kSmsStatusCount; ++status)
    Add("+1", static_cast<SmsStatus>(status));
  const auto second = Add("+1", SmsStatus::kProcessing);
  EXPECT_EQ(db().CountWaitingSms(), 3);
  const auto interrupted = db().TakeUpInterruptedSms();
  EXPECT_THAT(interrupted.failed, ElementsAre(11, second));
  EXPECT_THAT(interrupted.going_on, IsEmpty());
  EXPECT_EQ(StatusOf(11), SmsStatus::kFailed);
  EXPECT_EQ(StatusOf(second), SmsStatus::kFailed);
  EXPECT_EQ(StatusOf(12), SmsStatus::kUnknown);
  EXPECT_THAT(db().TakeUpInterruptedSms().failed, IsEmpty());
}

TEST_F(MessageTest, SelectionsOfTheSendEngine) {
  const auto add = [this](SmsStatus status, std::int32_t time, std::int32_t delay) {
    return db().AddSms({status, time, 0, 0, "+1", "x", "", delay, ""});
  };
  const auto pending1 = add(SmsStatus::kPending, 5, 0);
  const auto due = add(SmsStatus::kScheduled, 100, 7);
  add(SmsStatus::kScheduled, 101, 7);
  add(SmsStatus::kScheduled, -1, 7);
  add(SmsStatus::kScheduled, 100, 8);
  const auto sent = add(SmsStatus::kSent, 50, 7);
  const auto pending2 = add(SmsStatus::kPending, 5, 0);
  EXPECT_THAT(db().PendingSms(-1), ElementsAre(pending1, pending2));
  EXPECT_THAT(db().PendingSms(pending2), ElementsAre(pending2));
  EXPECT_THAT(db().PendingSms(due), IsEmpty());
  EXPECT_THAT(db().DueSms(SmsStatus::kScheduled, 7, 100), ElementsAre(due));
  EXPECT_THAT(db().DueSms(SmsStatus::kSent, 7, 100), ElementsAre(sent));  // outside the index

  db().SetOutcome(pending2, SmsStatus::kPending, {SmsStatus::kUnknown, ",ID: b", 60, 40});
  db().SetOutcome(pending1, SmsStatus::kPending, {SmsStatus::kUnknown, ",ID: a", 300, 50});
  const auto ids = [](const std::vector<SmsDatabase::FollowedSms>& rows) {
    std::string text;
    for (const auto& row : rows) {
      text += std::to_string(row.id) + row.api_msg_id + "/" + std::to_string(row.query_time) + " ";
    }
    return text;
  };
  EXPECT_EQ(ids(db().FollowedRows(SmsStatus::kUnknown, -1, 50)), "1,ID: a/300 7,ID: b/60 ");
  EXPECT_EQ(ids(db().FollowedRows(SmsStatus::kUnknown, -1, 49)), "7,ID: b/60 ");
  EXPECT_EQ(ids(db().FollowedRows(SmsStatus::kUnknown, pending1, 0)), "1,ID: a/300 ");
  EXPECT_EQ(ids(db().FollowedRows(SmsStatus::kQueued, pending1, 99)), "");
  db().SetQuerySchedule(pending1, 0, 0);
  EXPECT_EQ(ids(db().FollowedRows(SmsStatus::kUnknown, pending1, 99)), "");
  db().SetQueryAnswer(pending2, SmsStatus::kUnknown, {std::nullopt, "0.5"});
  EXPECT_EQ(db().GetSms(pending2)->charge, "0.5");
  EXPECT_EQ(StatusOf(pending2), SmsStatus::kUnknown);
  db().SetQueryAnswer(pending2, SmsStatus::kUnknown, {SmsStatus::kDelivered, "1"});
  db().SetApiMsgId(pending2, "");
  EXPECT_EQ(ids(db().FollowedRows(SmsStatus::kDelivered, -1, 99)), "");  // at its end
  db().SetQueryAnswer(pending2, SmsStatus::kDelivered, {SmsStatus::kScheduledOnServer, "1"});
  EXPECT_EQ(ids(db().FollowedRows(SmsStatus::kScheduledOnServer, -1, 99)), "7/60 ");
}

TEST(StatusAndTypeNames, AreBuiltInAndTakenFromTheTexts) {
  SmsStatusNames statuses;
  MessageTypeNames types;
  EXPECT_EQ(statuses.Name(8), "Delivered to Gateway");
  EXPECT_EQ(statuses.Name(17), "Message expired");
  EXPECT_EQ(types.Name(8), "Binary");
  for (const int outside : {-1, 18, INT32_MAX, INT32_MIN}) {
    EXPECT_EQ(statuses.Name(outside), "?");
    EXPECT_EQ(types.Name(outside), "?");
  }
  const Texts texts;
  statuses.LoadFrom(texts);
  types.LoadFrom(texts);
  for (int i = 0; i < kSmsStatusCount; ++i) EXPECT_EQ(statuses.Name(i), texts.Load(1216 + i));
  for (int i = 0; i < kMessageTypeCount; ++i) EXPECT_EQ(types.Name(i), texts.Load(1312 + i));

  const std::int32_t codes[] = {0, 1, 0, 6, 5, 3, 8, 9, 0, 0};
  for (int type = 0; type < 10; ++type) EXPECT_EQ(GatewayTypeCode(type), codes[type]) << type;
  EXPECT_EQ(GatewayTypeCode(-1), 0);
}

}  // namespace
}  // namespace orvalo::test
