#pragma once

namespace orvalo {

class Connection;

// The tables of "SMS.db" and the number that tells their version.
inline constexpr int kSchemaNumber = 3;
inline constexpr int kApplicationId = 0x4f72766c;  // tells our file from another program's

// Creates the tables in an empty file, and brings an older file up to this version. Throws
// StoreError, changing nothing, when the file is no database, another program's, from a newer
// version, or lacks tables or columns. With `create` off nothing is written: an empty file is
// refused as well, an older one stays as it is. The number of the schema that the file has now.
int PrepareSchema(Connection& connection, bool create);

// The indices of contacts and memberships that are not in order of contact ids. Adding a great many
// contacts is faster without them: drop them, add, and make them again within one transaction.
void DropContactIndices(Connection& connection);
void MakeContactIndices(Connection& connection);

}  // namespace orvalo
