#include "store/message_rows.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <limits>

#include "platform/code_page.h"

namespace orvalo {
namespace {

constexpr std::size_t kDisplayTextWidth = 127;
constexpr int kDisplayedRecipients = 3;

constexpr Sql kSelectMessage(
    "SELECT ID, Time, Stat, Type, RefID, SMS.\"To\", ToInfo, Msg, ApiMsgID, SavedStat, SenderID, "
    "Delay, QueryTime, StatQryTm, Charge, Number, Reason FROM SMS WHERE ID = ?");
constexpr Sql kSelectMessageOfSchema1(
    "SELECT ID, Time, Stat, Type, RefID, SMS.\"To\", ToInfo, Msg, ApiMsgID, SavedStat, SenderID, "
    "Delay, QueryTime, StatQryTm, Charge, '', '' FROM SMS WHERE ID = ?");
constexpr Sql kSelectContactNames("SELECT Name, Surname FROM CONTACTS WHERE CID = ?");

// The number at the front of a text; 0 (no contact's id) when there is none or it is too large.
std::int32_t LeadingNumber(std::string_view text) {
  const std::string digits(text.substr(0, 24));
  errno = 0;
  const long long number = std::strtoll(digits.c_str(), nullptr, 10);
  using Limits = std::numeric_limits<std::int32_t>;
  if (errno != 0 || number < Limits::min() || number > Limits::max()) return 0;
  return static_cast<std::int32_t>(number);
}

void AppendRecipient(Connection& connection, std::string_view item, std::string& text) {
  if (item.empty() || item.front() != 'A') {
    text += item;
    return;
  }
  Query names(connection, kSelectContactNames, LeadingNumber(item.substr(1)));
  if (!names.Step()) return;
  text += names.Text(0);
  text += ' ';
  text += names.Text(1);
}

}  // namespace

void InsertMessage(Query& insert, const MessageRow& row) {
  insert
      .Again(row.id, row.time, row.stat, row.type, row.ref_id, row.to, row.to_info, row.msg,
             row.api_msg_id, row.saved_stat, row.sender_id, row.delay, row.query_time,
             row.stat_qry_tm, row.charge, row.number, row.reason)
      .Execute();
}

void ReadMessage(const Query& query, MessageRow& row) {
  row.id = query.Int(0);
  row.time = query.Int(1);
  row.stat = query.Int(2);
  row.type = query.Int(3);
  row.ref_id = query.Int(4);
  row.to = query.Text(5);
  row.to_info = query.Text(6);
  row.msg = query.Text(7);
  row.api_msg_id = query.Text(8);
  row.saved_stat = query.Int(9);
  row.sender_id = query.Text(10);
  row.delay = query.Int(11);
  row.query_time = query.Int(12);
  row.stat_qry_tm = query.Int(13);
  row.charge = query.Text(14);
  row.number = query.Text(15);
  row.reason = query.Text(16);
}

std::int32_t TimeForRow(const platform::Clock& clock) {
  return static_cast<std::int32_t>(
      std::clamp<std::int64_t>(clock.Now(), 0, std::numeric_limits<std::int32_t>::max()));
}

bool FindMessage(Connection& connection, std::int32_t id, MessageRow& row, int schema) {
  Query query(connection, schema == 1 ? kSelectMessageOfSchema1 : kSelectMessage, id);
  if (!query.Step()) return false;
  ReadMessage(query, row);
  return true;
}

std::string DisplayTextOf(Connection& connection, std::string_view to) {
  if (to.starts_with(',')) to.remove_prefix(1);
  std::string text;
  for (int items = 0; !to.empty(); ++items) {
    if (items == kDisplayedRecipients) {
      text += " ...";
      break;
    }
    if (items > 0) text += ',';
    const std::size_t end = to.find(',');
    AppendRecipient(connection, to.substr(0, end), text);
    to.remove_prefix(end == std::string_view::npos ? to.size() : end + 1);
  }
  if (text.size() > kDisplayTextWidth) {
    text.resize(platform::FirstCharacters(text, kDisplayTextWidth).size());
  }
  return text;
}

}  // namespace orvalo
