#pragma once
#include <cstdint>
#include <string>
#include <string_view>

#include "platform/clock.h"
#include "store/connection.h"
#include "store/records.h"
#include "store/schema.h"

namespace orvalo {

// Rows of the table SMS on their way in and out, for the operations of this room.

// Parameters: the columns in the order of MessageRow.
inline constexpr Sql kInsertMessage(
    "INSERT INTO SMS(ID, Time, Stat, Type, RefID, \"To\", ToInfo, Msg, ApiMsgID, SavedStat, "
    "SenderID, Delay, QueryTime, StatQryTm, Charge, Number, Reason) VALUES(?, ?, ?, ?, ?, ?, ?, ?, "
    "?, ?, ?, ?, ?, ?, ?, ?, ?)");
void InsertMessage(Query& insert, const MessageRow& row);

// Fills `row` (whose texts keep their room) from a query that gives the columns in that order.
void ReadMessage(const Query& query, MessageRow& row);

std::int32_t TimeForRow(const platform::Clock& clock);  // now, clipped to the column

// `schema`: of the file, which is an older one where a program looks on.
bool FindMessage(Connection& connection, std::int32_t id, MessageRow& row,
                 int schema = kSchemaNumber);

// See SmsDatabase::RecipientDisplayText.
std::string DisplayTextOf(Connection& connection, std::string_view to);

}  // namespace orvalo
