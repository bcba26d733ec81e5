#include "store/id_counters.h"

#include "store/connection.h"

namespace orvalo {

struct IdCounter {
  Sql next;
  Sql take;
  Sql catch_up;
  Sql is_sound;
  Sql clear;
  Sql seed;
};

// What lies above 2147483646 in a table was never given out by us.
#define ORVALO_HIGHEST(table, id) \
  "(SELECT ifnull(max(" id "), 0) FROM " table " WHERE " id " < 2147483647)"
#define ORVALO_COUNTER(counter, table, id)                                                         \
  {                                                                                                \
    Sql("SELECT max(ID, 1 + " ORVALO_HIGHEST(table, id) ") FROM " counter),                        \
        Sql("UPDATE " counter " SET ID = 1 + max(ID, 1 + " ORVALO_HIGHEST(                         \
            table,                                                                                 \
            id) ") "                                                                               \
                "RETURNING ID - 1"),                                                               \
        Sql("UPDATE " counter                                                                      \
            " SET ID = 1 + " ORVALO_HIGHEST(table, id) " WHERE ID <= " ORVALO_HIGHEST(table, id)), \
        Sql("SELECT count(*) = 1 AND sum(typeof(ID) = 'integer' AND ID BETWEEN 1 AND 2147483647)"  \
            " = 1 FROM " counter),                                                                 \
        Sql("DELETE FROM " counter), Sql("INSERT INTO " counter "(ID) VALUES(1)")                  \
  }

const IdCounter kMessageIds = ORVALO_COUNTER("NextSMSID", "SMS", "ID");
const IdCounter kGroupIds = ORVALO_COUNTER("NextGroupID", "\"GROUP\"", "GID");
const IdCounter kContactIds = ORVALO_COUNTER("NextContactID", "CONTACTS", "CID");

#undef ORVALO_COUNTER
#undef ORVALO_HIGHEST

std::int32_t NextId(Connection& connection, const IdCounter& counter) {
  Query query(connection, counter.next);
  return query.Step() ? query.Int(0) : -1;
}

std::int32_t TakeId(Connection& connection, const IdCounter& counter) {
  Query query(connection, counter.take);
  const std::int32_t id = query.Step() ? query.Int(0) : -1;
  query.Execute();
  return id;
}

void CatchUp(Connection& connection, const IdCounter& counter) {
  Run(connection, counter.catch_up);
}

void SeedCounter(Connection& connection, const IdCounter& counter) {
  const bool sound = [&] {
    Query query(connection, counter.is_sound);
    return query.Step() && query.Int(0) == 1;
  }();
  if (!sound) {
    Run(connection, counter.clear);
    Run(connection, counter.seed);
  }
  CatchUp(connection, counter);
}

}  // namespace orvalo
