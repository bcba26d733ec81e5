#pragma once
#include <cstdint>
#include <string>
#include <string_view>

#include "store/records.h"
#include "store/storage.h"

namespace orvalo {

// Rows of the table SMS on their way in and out, for the operations of this room.

// Parameters: the columns in the order of MessageRow.
inline constexpr Sql kInsertMessage(
    "INSERT INTO SMS(ID, Time, Stat, Type, RefID, \"To\", ToInfo, Msg, ApiMsgID, SavedStat, "
    "SenderID, Delay, QueryTime, StatQryTm, Charge) VALUES(?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, "
    "?, ?)");
void InsertMessage(Query& insert, const MessageRow& row);

// Fills `row` (whose texts keep their room) from a query that gives the columns in that order.
void ReadMessage(const Query& query, MessageRow& row);

bool FindMessage(Connection& connection, std::int32_t id, MessageRow& row);

// Takes `count` message ids; the first. Within a transaction, so that none is lost.
std::int32_t TakeMessageIds(Connection& connection, std::int64_t count);

// See SmsDatabase::RecipientDisplayText.
std::string DisplayTextOf(Connection& connection, std::string_view to);

}  // namespace orvalo
