#include <map>

#include "store/message_type.h"
#include "store/sms_status.h"
#include "store_fixture.h"

namespace orvalo::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class MessageTest : public StoreTest {};

TEST_F(MessageTest, AnAddedMessageIsReadBackWhole) {
  const NewSms sms{SmsStatus::kScheduled, 123, 2, 77, ",A9,+27821", "Grüße\0x", "Shop", -5, "1.5"};
  const auto id = db().AddSms(sms);
  clock_.Advance(5000);
  const auto plain = Add("+2782");

  const auto row = db().GetSms(id).value();
  EXPECT_EQ(row.time, 123);
  EXPECT_EQ(row.stat, 4);
  EXPECT_EQ(row.type, 2);
  EXPECT_EQ(row.ref_id, 77);
  EXPECT_EQ(row.to, ",A9,+27821");
  EXPECT_EQ(row.to_info, ",+27821");  // no contact 9
  EXPECT_EQ(row.msg, sms.msg);
  EXPECT_EQ(row.sender_id, "Shop");
  EXPECT_EQ(row.delay, -5);
  EXPECT_EQ(row.charge, "1.5");
  EXPECT_EQ(row.api_msg_id, "");
  EXPECT_EQ(row.saved_stat + row.query_time + row.stat_qry_tm, 0);

  EXPECT_EQ(db().GetSms(plain)->time, 1'000'000'005);  // 0 stands for now
  EXPECT_EQ(db().GetSms(plain)->ref_id, plain);        // 0 stands for itself
  EXPECT_EQ(db().GetSms(99), std::nullopt);
}

TEST_F(MessageTest, CopiesKeepTheReferenceAndTakeTheTime) {
  NewSms sms{SmsStatus::kUnknown, 5, 1, 0, ",A1,+1", "text", "Me", 60, "2"};
  const auto id = db().AddSms(sms);
  db().SetSent(id, SmsStatus::kDelivered, ",ID: x", 60, 90);
  const auto same = db().GetSms(db().DuplicateSms(id, std::nullopt)).value();
  const auto other = db().GetSms(db().DuplicateSms(same.id, SmsStatus::kFailed)).value();
  const auto single = db().GetSms(db().CopySmsTo(id, SmsStatus::kPending, "+49")).value();
  EXPECT_EQ(same.stat, 9);
  EXPECT_EQ(other.stat, 2);
  EXPECT_EQ(single.stat, 0);
  EXPECT_EQ(same.to, ",A1,+1");
  EXPECT_EQ(single.to, "+49");
  EXPECT_EQ(single.to_info, "+49");
  for (const MessageRow& copy : {same, other, single}) {
    EXPECT_EQ(copy.ref_id, id);
    EXPECT_EQ(copy.time, 1'000'000'000);
    EXPECT_EQ(copy.msg + copy.sender_id + copy.charge, "textMe2");
    EXPECT_EQ(copy.type, 1);
    EXPECT_EQ(copy.delay, 60);
    EXPECT_EQ(copy.api_msg_id, "");
    EXPECT_EQ(copy.query_time + copy.stat_qry_tm, 0);
  }
  EXPECT_EQ(db().DuplicateSms(99, std::nullopt), -1);
  EXPECT_EQ(db().CopySmsTo(99, SmsStatus::kPending, "+1"), -1);
  EXPECT_EQ(db().CountSms(), 4);
}

TEST_F(MessageTest, EditingLeavesForTheStatusThatTheSavedOneAsksFor) {
  const std::map<int, int> after_editing = {{0, 0}, {4, 0}, {6, 6}, {7, 6}, {9, 0}};
  for (const auto& [saved, expected] : after_editing) {
    SCOPED_TRACE(saved);
    const auto id = Add("+1", static_cast<SmsStatus>(saved));
    db().BeginEditSms(id);
    db().BeginEditSms(id);  // once more does not forget the status
    EXPECT_EQ(StatusOf(id), SmsStatus::kEditing);
    EXPECT_EQ(db().GetSms(id)->saved_stat, saved);
    db().UpdateEditedSms(id, 1, ",+2,+3", "new");
    const auto row = db().GetSms(id).value();
    EXPECT_EQ(row.stat, expected);
    EXPECT_EQ(row.type, 1);
    EXPECT_EQ(row.to + row.to_info + row.msg, ",+2,+3+2,+3new");
  }
  const auto left = Add("+1", SmsStatus::kSent);
  const auto untouched = Add("+1", SmsStatus::kScheduledOnServer);
  db().BeginEditSms(left);
  Reopen();
  EXPECT_EQ(StatusOf(left), SmsStatus::kSent);
  EXPECT_EQ(StatusOf(untouched), SmsStatus::kScheduledOnServer);
}

TEST_F(MessageTest, MissingRowsAreToldAndChangeNothing) {
  const auto id = Add("+1");
  db().DeleteSms(id);
  db().DeleteSms(id);
  db().BeginEditSms(id);
  db().UpdateEditedSms(id, 0, "+1", "x");
  EXPECT_FALSE(db().SetSmsStatus(id, SmsStatus::kSent));
  EXPECT_FALSE(db().SetSent(id, SmsStatus::kSent, "", 0, 0));
  EXPECT_FALSE(db().SetQuerySchedule(id, 1, 1));
  EXPECT_FALSE(db().SetApiMsgId(id, "x"));
  EXPECT_FALSE(db().SetStatusAndCharge(id, SmsStatus::kSent, "1"));
  EXPECT_FALSE(db().SetStatusAndCharge(id, std::nullopt, "1"));
  const SmsDatabase::ChildSms child{SmsStatus::kPending, "+1", "", 0, 0};
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
  db().UpdateEditedSms(id, 0, "+2", "new");
  db().UpdateEditedSms(99, 0, "+2", "new");
  const SmsDatabase::ChildSms child{SmsStatus::kPending, "+3", "", 0, 0};
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
  EXPECT_THAT(db().FailInterruptedSms(), ElementsAre(11, second));
  EXPECT_EQ(StatusOf(11), SmsStatus::kFailed);
  EXPECT_EQ(StatusOf(second), SmsStatus::kFailed);
  EXPECT_EQ(StatusOf(12), SmsStatus::kUnknown);
  EXPECT_THAT(db().FailInterruptedSms(), IsEmpty());
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

  db().SetSent(pending2, SmsStatus::kUnknown, ",ID: b", 60, 40);
  db().SetSent(pending1, SmsStatus::kUnknown, ",ID: a", 300, 50);
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
  db().SetStatusAndCharge(pending2, std::nullopt, "0.5");
  EXPECT_EQ(db().GetSms(pending2)->charge, "0.5");
  EXPECT_EQ(StatusOf(pending2), SmsStatus::kUnknown);
  db().SetStatusAndCharge(pending2, SmsStatus::kDelivered, "1");
  db().SetApiMsgId(pending2, "");
  EXPECT_EQ(ids(db().FollowedRows(SmsStatus::kDelivered, -1, 99)), "7/60 ");
}

TEST_F(MessageTest, ChildrenAreCopiesWithConsecutiveIds) {
  const auto ann = "A" + std::to_string(AddPerson("Ann"));
  const auto parent = db().AddSms({SmsStatus::kExpanded, 5, 1, 0, ",+1,+2", "text", "Me", 9, "?"});
  db().SetSent(parent, SmsStatus::kExpanded, ",ID: p", 60, 60);
  const std::vector<SmsDatabase::ChildSms> children = {
      {SmsStatus::kUnknown, ann, ",ID: a", 60, 1060}, {SmsStatus::kFailed, "+2", "", 0, 0}};
  ASSERT_TRUE(db().AddChildren(parent, children));
  ASSERT_TRUE(db().AddChildren(parent, {}));
  const auto first = db().GetSms(parent + 1).value();
  const auto second = db().GetSms(parent + 2).value();
  EXPECT_EQ(first.to_info + first.api_msg_id, "Ann Doe,ID: a");
  EXPECT_EQ(first.stat, 11);
  EXPECT_EQ(first.query_time, 60);
  EXPECT_EQ(first.stat_qry_tm, 1060);
  EXPECT_EQ(second.to + second.api_msg_id, "+2");
  EXPECT_EQ(second.stat, 2);
  EXPECT_EQ(second.query_time + second.stat_qry_tm, 0);
  for (const auto& child : {first, second}) {
    EXPECT_EQ(child.ref_id, parent);
    EXPECT_EQ(child.time, 1'000'000'000);
    EXPECT_EQ(child.msg + child.sender_id + child.charge, "textMe?");
    EXPECT_EQ(child.type * 10 + child.delay, 19);
  }
  EXPECT_EQ(Add("+1"), parent + 3);
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
