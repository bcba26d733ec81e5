#pragma once
#include <cstdint>

namespace orvalo {

class Connection;
struct IdCounter;

// The three counters of "SMS.db" and the ids of new rows. The next id is the greater of the
// counter's value and one above the highest id in the table; so adding a row need not write the
// counter. It catches up before a row is removed and whenever the database is committed, and no id
// is ever used again.
extern const IdCounter kMessageIds;
extern const IdCounter kGroupIds;
extern const IdCounter kContactIds;

// The id that a row added now is to have. Within the transaction that adds it.
std::int32_t NextId(Connection& connection, const IdCounter& counter);
// The same, and takes it: nobody is given it again, even if no row is added.
std::int32_t TakeId(Connection& connection, const IdCounter& counter);
// Moves the counter above every id in the table; before rows are removed, in the same transaction.
void CatchUp(Connection& connection, const IdCounter& counter);
// Gives the counter its one row with a sound value; repairs what is not so.
void SeedCounter(Connection& connection, const IdCounter& counter);

}  // namespace orvalo
