// What the send engine selects and stores.
#include "store/connection.h"
#include "store/id_counters.h"
#include "store/message_rows.h"
#include "store/sms_database.h"

namespace orvalo {
namespace {

// The second condition is the index's own, word for word: with it the partial index may be used.
constexpr Sql kSelectPending(
    "SELECT ID FROM SMS WHERE Stat = 0 AND (Stat = 0 OR Stat BETWEEN 4 AND 6 OR Stat = 10) ORDER "
    "BY ID");
constexpr Sql kSelectPendingOne("SELECT ID FROM SMS WHERE ID = ? AND +Stat = 0");
constexpr Sql kSelectDue(
    "SELECT ID FROM SMS WHERE Stat = ?1 AND (Stat = 0 OR Stat BETWEEN 4 AND 6 OR Stat = 10) AND "
    "Delay = ?2 "
    "AND Time BETWEEN 0 AND ?3 ORDER BY ID");
constexpr Sql kSelectDueAny(
    "SELECT ID FROM SMS WHERE Stat = ?1 AND Delay = ?2 AND Time BETWEEN 0 AND ?3 ORDER BY ID");
constexpr Sql kSelectFollowed(
    "SELECT ID, QueryTime, ApiMsgID FROM SMS WHERE Stat = ? AND QueryTime >= 1 "
    "AND (Stat = 1 OR Stat = 3 OR Stat = 7 OR Stat = 8 OR Stat = 11) "
    "AND StatQryTm BETWEEN 0 AND ?");
constexpr Sql kSelectFollowedOne(
    "SELECT ID, QueryTime, ApiMsgID FROM SMS WHERE +Stat = ? AND +QueryTime >= 1 AND ID = ?");

constexpr Sql kSetOutcome(
    "UPDATE SMS SET Stat = ?3, ApiMsgID = iif(?4 = '', ApiMsgID, ?4), "
    "QueryTime = iif(?4 = '', iif(?3 = 11, 0, QueryTime), ?5), StatQryTm = iif(?4 = '', StatQryTm, "
    "?6), "
    "Number = ?7, Reason = ?8 WHERE ID = ?1 AND +Stat = ?2");
constexpr Sql kSetExpanded("UPDATE SMS SET Stat = 12, Number = ?3 WHERE ID = ?1 AND +Stat = ?2");
constexpr Sql kSetQuerySchedule("UPDATE SMS SET QueryTime = ?2, StatQryTm = ?3 WHERE ID = ?1");
constexpr Sql kSetApiMsgId("UPDATE SMS SET ApiMsgID = ?2 WHERE ID = ?1");
constexpr Sql kSetCharge("UPDATE SMS SET Charge = ?3 WHERE ID = ?1 AND +Stat = ?2");
constexpr Sql kSetStatusAndCharge(
    "UPDATE SMS SET Charge = ?3, Stat = ?4 WHERE ID = ?1 AND +Stat = ?2");
constexpr Sql kSetDueAnswer(
    "UPDATE SMS SET Charge = ?3, QueryTime = ?4, StatQryTm = ?5 WHERE ID = ?1 AND +Stat = ?2");
constexpr Sql kSetDueAnswerAndStatus(
    "UPDATE SMS SET Charge = ?3, QueryTime = ?4, StatQryTm = ?5, Stat = ?6 WHERE ID = ?1 AND "
    "+Stat = ?2");

std::vector<std::int32_t> ReadIds(Query&& query) {
  std::vector<std::int32_t> ids;
  while (query.Step()) ids.push_back(query.Int(0));
  return ids;
}

bool InUnfinishedIndex(SmsStatus status) {
  switch (status) {
    case SmsStatus::kPending:
    case SmsStatus::kScheduled:
    case SmsStatus::kEditing:
    case SmsStatus::kDelayScheduled:
    case SmsStatus::kProcessing:
      return true;
    default:
      return false;
  }
}

// Adds copies of `row`, with ids from `first` on.
void InsertChildren(Connection& connection, MessageRow row, std::int32_t first,
                    std::span<const SmsDatabase::ChildSms> children) {
  const bool own_reference = row.ref_id == 0;
  Query insert(connection, kInsertMessage);
  row.id = first;
  for (const SmsDatabase::ChildSms& child : children) {
    if (own_reference) row.ref_id = row.id;
    const SmsDatabase::SmsOutcome& outcome = child.outcome;
    row.stat = static_cast<std::int32_t>(outcome.status);
    row.to = child.recipient;
    row.to_info = DisplayTextOf(connection, child.recipient);
    row.api_msg_id = outcome.api_msg_id;
    row.query_time = outcome.query_time;
    row.stat_qry_tm = outcome.stat_qry_tm;
    row.number = outcome.number;
    row.reason = outcome.reason;
    InsertMessage(insert, row);
    ++row.id;
  }
}

}  // namespace

std::vector<std::int32_t> SmsDatabase::PendingSms(std::int32_t id) {
  Connection* connection = Here();
  if (connection == nullptr) return {};
  if (id == -1) return ReadIds(Query(*connection, kSelectPending));
  return ReadIds(Query(*connection, kSelectPendingOne, id));
}

std::vector<std::int32_t> SmsDatabase::DueSms(SmsStatus status, std::int32_t delay,
                                              std::int64_t until) {
  Connection* connection = Here();
  if (connection == nullptr) return {};
  const Sql& sql = InUnfinishedIndex(status) ? kSelectDue : kSelectDueAny;
  return ReadIds(Query(*connection, sql, status, delay, until));
}

std::vector<SmsDatabase::FollowedSms> SmsDatabase::FollowedRows(SmsStatus status, std::int32_t id,
                                                                std::int64_t now) {
  std::vector<FollowedSms> rows;
  Connection* connection = Here();
  if (connection == nullptr) return rows;
  const bool one = id != -1;
  Query query(*connection, one ? kSelectFollowedOne : kSelectFollowed, status,
              one ? std::int64_t{id} : now);
  while (query.Step()) rows.push_back({query.Int(0), query.Int(1), std::string(query.Text(2))});
  std::sort(rows.begin(), rows.end(),
            [](const FollowedSms& a, const FollowedSms& b) { return a.id < b.id; });
  return rows;
}

bool SmsDatabase::SetOutcome(std::int32_t id, SmsStatus expected, const SmsOutcome& outcome) {
  Connection* connection = Here();
  return connection != nullptr &&
         Run(*connection, kSetOutcome, id, expected, outcome.status, outcome.api_msg_id,
             outcome.query_time, outcome.stat_qry_tm, outcome.number, outcome.reason) > 0;
}

bool SmsDatabase::SetExpanded(std::int32_t id, SmsStatus expected, std::string_view numbers) {
  Connection* connection = Here();
  return connection != nullptr && Run(*connection, kSetExpanded, id, expected, numbers) > 0;
}

bool SmsDatabase::SetQuerySchedule(std::int32_t id, std::int32_t query_time,
                                   std::int32_t stat_qry_tm) {
  Connection* connection = Here();
  return connection != nullptr &&
         Run(*connection, kSetQuerySchedule, id, query_time, stat_qry_tm) > 0;
}

bool SmsDatabase::SetApiMsgId(std::int32_t id, std::string_view api_msg_id) {
  Connection* connection = Here();
  return connection != nullptr && Run(*connection, kSetApiMsgId, id, api_msg_id) > 0;
}

bool SmsDatabase::SetQueryAnswer(std::int32_t id, SmsStatus expected, const QueryAnswer& answer) {
  Connection* connection = Here();
  if (connection == nullptr) return false;
  if (!answer.status) return Run(*connection, kSetCharge, id, expected, answer.charge) > 0;
  return Run(*connection, kSetStatusAndCharge, id, expected, answer.charge, *answer.status) > 0;
}

bool SmsDatabase::SetQueryAnswer(std::int32_t id, SmsStatus expected, const QueryAnswer& answer,
                                 std::int32_t query_time, std::int32_t stat_qry_tm) {
  Connection* connection = Here();
  if (connection == nullptr) return false;
  if (!answer.status) {
    return Run(*connection, kSetDueAnswer, id, expected, answer.charge, query_time, stat_qry_tm) >
           0;
  }
  return Run(*connection, kSetDueAnswerAndStatus, id, expected, answer.charge, query_time,
             stat_qry_tm, *answer.status) > 0;
}

bool SmsDatabase::AddChildren(std::int32_t id, std::span<const ChildSms> children) {
  Connection* connection = Here();
  if (connection == nullptr) return false;
  Transaction transaction(*this);
  MessageRow row;
  const bool found = FindMessage(*connection, id, row);
  const std::int32_t first = NextId(*connection, kMessageIds);
  if (found) {
    row.time = TimeForRow(clock_);
    row.saved_stat = 0;
    InsertChildren(*connection, row, first, children);
  }
  transaction.Commit();
  if (found && EnabledLog() != nullptr) {
    row.id = first;
    for (const ChildSms& child : children) {
      LogAdded(row.id++, std::string(child.recipient), row.msg);
    }
  }
  return found;
}

}  // namespace orvalo
