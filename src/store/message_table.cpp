#include "app/log_file.h"
#include "store/connection.h"
#include "store/id_counters.h"
#include "store/message_rows.h"
#include "store/send_journal.h"
#include "store/sms_database.h"

namespace orvalo {
namespace {

constexpr Sql kSetStatus("UPDATE SMS SET Stat = ?2 WHERE ID = ?1");
constexpr Sql kChangeStatus("UPDATE SMS SET Stat = ?3 WHERE ID = ?1 AND +Stat = ?2");
constexpr Sql kBeginEdit(
    "UPDATE SMS SET SavedStat = iif(Stat = 5, SavedStat, Stat), Stat = 5 WHERE ID = ? AND "
    "+Stat <> 10");
constexpr Sql kUpdateEdited(
    "UPDATE SMS SET Stat = iif(SavedStat IN (6, 7), 6, iif(?6, 4, 0)), Type = ?2, \"To\" = ?3, "
    "ToInfo = ?4, "
    "Msg = ?5, Number = '', Reason = '' WHERE ID = ?1 AND +Stat = 5");
constexpr Sql kRestoreEdited(
    "UPDATE SMS SET Stat = SavedStat WHERE Stat = 5 AND (Stat = 0 OR Stat BETWEEN 4 AND 6 OR Stat "
    "= 10)");
constexpr Sql kDeleteMessage("DELETE FROM SMS WHERE ID = ? AND +Stat <> 10");
constexpr Sql kCountWaiting(
    "SELECT count(*) FROM SMS WHERE Stat IN (0, 4, 6) AND (Stat = 0 OR Stat BETWEEN 4 AND 6 OR "
    "Stat = 10)");
constexpr Sql kCountMessages("SELECT count(*) FROM SMS");
constexpr Sql kSelectMessages(
    "SELECT ID, Time, Stat, Type, RefID, SMS.\"To\", ToInfo, Msg, ApiMsgID, SavedStat, SenderID, "
    "Delay, QueryTime, StatQryTm, Charge, Number, Reason FROM SMS ORDER BY ID");
constexpr Sql kSelectMessagesOfSchema1(
    "SELECT ID, Time, Stat, Type, RefID, SMS.\"To\", ToInfo, Msg, ApiMsgID, SavedStat, SenderID, "
    "Delay, QueryTime, StatQryTm, Charge, '', '' FROM SMS ORDER BY ID");
// In the order of SmsDatabase::KeyText.
constexpr Sql kSelectKeys[] = {
    Sql("SELECT ID, Time, Stat, '' FROM SMS ORDER BY ID"),
    Sql("SELECT ID, Time, Stat, ToInfo FROM SMS ORDER BY ID"),
    Sql("SELECT ID, Time, Stat, Msg FROM SMS ORDER BY ID"),
    Sql("SELECT ID, Time, Stat, Charge FROM SMS ORDER BY ID"),
};
constexpr Sql kSelectInterrupted(
    "SELECT ID, EXISTS(SELECT 1 FROM SENDING WHERE SENDING.ID = SMS.ID) FROM SMS "
    "WHERE Stat = 10 AND (Stat = 0 OR Stat BETWEEN 4 AND 6 OR Stat = 10) ORDER BY ID");
// The mark of a row may be gone where its journal entry, which is flushed, is not.
constexpr Sql kMarkInterrupted(
    "UPDATE SMS SET Stat = 10 WHERE ID IN (SELECT ID FROM SENDING) AND +Stat = 0");

std::int32_t CountRows(Connection* connection, const Sql& sql) {
  if (connection == nullptr) return 0;
  Query query(*connection, sql);
  return query.Step() ? query.Int(0) : 0;
}

NewSms CopyOf(MessageRow&& row, SmsStatus status) {
  NewSms copy;
  copy.status = status;
  copy.type = row.type;
  copy.ref_id = row.ref_id;
  copy.to = std::move(row.to);
  copy.msg = std::move(row.msg);
  copy.sender_id = std::move(row.sender_id);
  copy.delay = row.delay;
  copy.charge = std::move(row.charge);
  copy.number = std::move(row.number);
  return copy;
}

}  // namespace

void SmsDatabase::LogAdded(std::int32_t id, const std::string& to, const std::string& msg) {
  if (Log* log = EnabledLog()) {
    log->Write("Added SMS: SMS_ID (%d) Mobile:%s Msg:%s\n", id, to.c_str(), msg.c_str());
  }
}

std::int32_t SmsDatabase::AddSms(const NewSms& sms) {
  Connection* connection = Here();
  if (connection == nullptr) return -1;
  MessageRow row;
  {
    Transaction transaction(*this);
    row.id = NextId(*connection, kMessageIds);
    row.ref_id = sms.ref_id != 0 ? sms.ref_id : row.id;
    row.time = sms.time != 0 ? sms.time : TimeForRow(clock_);
    row.stat = static_cast<std::int32_t>(sms.status);
    const std::string to_info = DisplayTextOf(*connection, sms.to);
    Run(*connection, kInsertMessage, row.id, row.time, row.stat, sms.type, row.ref_id, sms.to,
        to_info, sms.msg, row.api_msg_id, 0, sms.sender_id, sms.delay, 0, 0, sms.charge, sms.number,
        "");
    transaction.Commit();
  }
  LogAdded(row.id, sms.to, sms.msg);
  return row.id;
}

bool SmsDatabase::ChangeStatus(std::int32_t id, SmsStatus expected, SmsStatus status) {
  Connection* connection = Here();
  return connection != nullptr && Run(*connection, kChangeStatus, id, expected, status) > 0;
}

bool SmsDatabase::SetSmsStatus(std::int32_t id, SmsStatus status) {
  Connection* connection = Here();
  if (connection != nullptr && Run(*connection, kSetStatus, id, status) > 0) return true;
  if (Log* log = EnabledLog()) {
    log->Write("FAILED:Can't change SMS status SMS_ID (%d) Status:%d", id,
               static_cast<int>(status));
  }
  return false;
}

bool SmsDatabase::BeginEditSms(std::int32_t id) {
  Connection* connection = Here();
  if (connection == nullptr) return false;
  Transaction transaction(*this);
  const bool found = Run(*connection, kBeginEdit, id) > 0;
  if (found) EndJournalEntry(*connection, id);
  transaction.Commit();
  return found;
}

bool SmsDatabase::UpdateEditedSms(std::int32_t id, std::int32_t type, std::string_view to,
                                  std::string_view msg, bool keep_time) {
  Connection* connection = Here();
  if (connection == nullptr) return false;
  const std::string to_info = DisplayTextOf(*connection, to);
  if (Run(*connection, kUpdateEdited, id, type, to, to_info, msg, keep_time ? 1 : 0) == 0)
    return false;
  if (Log* log = EnabledLog()) {
    log->Write("Updated SMS: SMS_ID (%d) Mobile:%s Msg:%s", id, std::string(to).c_str(),
               std::string(msg).c_str());
  }
  return true;
}

void SmsDatabase::RestoreEditedSms() {
  if (Connection* connection = Here()) Run(*connection, kRestoreEdited);
}

std::int32_t SmsDatabase::DuplicateSms(std::int32_t id, std::optional<SmsStatus> status) {
  Connection* connection = Here();
  MessageRow row;
  if (connection == nullptr || !FindMessage(*connection, id, row)) return -1;
  const auto own_status = static_cast<SmsStatus>(row.stat);
  return AddSms(CopyOf(std::move(row), status.value_or(own_status)));
}

std::int32_t SmsDatabase::CopySmsTo(std::int32_t id, SmsStatus status, std::string_view recipient) {
  Connection* connection = Here();
  MessageRow row;
  if (connection == nullptr || !FindMessage(*connection, id, row)) return -1;
  row.to = recipient;
  row.number.clear();
  return AddSms(CopyOf(std::move(row), status));
}

bool SmsDatabase::DeleteSms(std::int32_t id) {
  Connection* connection = Here();
  if (connection == nullptr) return false;
  Transaction transaction(*this);
  CatchUp(*connection, kMessageIds);
  const bool deleted = Run(*connection, kDeleteMessage, id) > 0;
  if (deleted) EndJournalEntry(*connection, id);
  transaction.Commit();
  return deleted;
}

std::int32_t SmsDatabase::CountWaitingSms() { return CountRows(Here(), kCountWaiting); }
std::int32_t SmsDatabase::CountSms() { return CountRows(Here(), kCountMessages); }

std::optional<MessageRow> SmsDatabase::GetSms(std::int32_t id) {
  Connection* connection = Here();
  std::optional<MessageRow> row(std::in_place);
  if (connection == nullptr || !FindMessage(*connection, id, *row, schema_)) row.reset();
  return row;
}

std::vector<MessageRow> SmsDatabase::AllSms() {
  std::vector<MessageRow> rows;
  ForEachSms([&rows](const MessageRow& row) {
    rows.push_back(row);
    return true;
  });
  return rows;
}

void SmsDatabase::ForEachSms(const std::function<bool(const MessageRow&)>& visit) {
  Connection* connection = Here();
  if (connection == nullptr) return;
  Query query(*connection, schema_ == 1 ? kSelectMessagesOfSchema1 : kSelectMessages);
  MessageRow row;
  while (query.Step()) {
    ReadMessage(query, row);
    if (!visit(row)) return;
  }
}

void SmsDatabase::ForEachSmsKey(KeyText text, const std::function<void(const SmsKey&)>& visit) {
  Connection* connection = Here();
  if (connection == nullptr) return;
  Query query(*connection, kSelectKeys[static_cast<std::size_t>(text)]);
  while (query.Step()) visit({query.Int(0), query.Int(1), query.Int(2), query.Text(3)});
}

std::string SmsDatabase::RecipientDisplayText(std::string_view to) {
  Connection* connection = Here();
  return connection == nullptr ? std::string() : DisplayTextOf(*connection, to);
}

SmsDatabase::InterruptedSms SmsDatabase::TakeUpInterruptedSms() {
  InterruptedSms interrupted;
  Connection* connection = Here();
  if (connection == nullptr) return interrupted;
  Transaction transaction(*this);
  Run(*connection, kMarkInterrupted);
  {
    Query query(*connection, kSelectInterrupted);
    while (query.Step()) {
      (query.Int(1) != 0 ? interrupted.going_on : interrupted.failed).push_back(query.Int(0));
    }
  }
  for (const std::int32_t id : interrupted.failed)
    Run(*connection, kSetStatus, id, SmsStatus::kFailed);
  transaction.Commit();
  return interrupted;
}

}  // namespace orvalo
