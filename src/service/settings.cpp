#include "service/settings.h"

namespace orvalo::service {

void SaveDeliverySeconds(Database& database, std::int64_t seconds) {
  database.Write([&](Connection& connection) {
    Query(connection, "INSERT OR REPLACE INTO setting VALUES('delivery_seconds',?)", seconds).Run();
  });
}

std::int64_t LoadDeliverySeconds(Database& database, std::int64_t fallback) {
  return database.Read([&](Connection& connection) {
    Query row(connection, "SELECT value FROM setting WHERE name='delivery_seconds'");
    return row.Step() ? row.Int(0) : fallback;
  });
}

}  // namespace orvalo::service
