#pragma once

namespace orvalo {

class Connection;

// The tables of "SMS.db" and the number that tells their version.
inline constexpr int kSchemaNumber = 1;
inline constexpr int kApplicationId = 0x4f72766c;  // tells our file from another program's

// Creates the tables in an empty file. Throws StoreError, changing nothing, when the file is no
// database, another program's, from a newer version, or lacks tables or columns. An empty file is
// refused as well when `create` is off.
void PrepareSchema(Connection& connection, bool create);

// The indices of contacts and memberships that are not in order of contact ids. Adding a great many
// contacts is faster without them: drop them, add, and make them again within one transaction.
void DropContactIndices(Connection& connection);
void MakeContactIndices(Connection& connection);

}  // namespace orvalo
