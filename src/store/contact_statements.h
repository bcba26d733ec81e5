#pragma once
#include "store/connection.h"

namespace orvalo {

// Statements that several files of this room run.
inline constexpr Sql kInsertContact(
    "INSERT INTO CONTACTS(CID, Name, Surname, Title, Custom, Mobile) VALUES(?, ?, ?, ?, ?, ?)");
inline constexpr Sql kInsertMembership("INSERT INTO CONTACT_GROUP_MAP(CID, GID) VALUES(?, ?)");

}  // namespace orvalo
