#include "service/settings.h"

namespace orvalo::service {
namespace {

std::int64_t ValueOf(Connection& connection, const char* name, std::int64_t fallback) {
  Query row(connection, "SELECT value FROM setting WHERE name=?", std::string(name));
  return row.Step() ? row.Int(0) : fallback;
}

}  // namespace

void SaveDeliverySeconds(Database& database, std::int64_t seconds) {
  database.Write([&](Connection& connection) {
    Query(connection, "INSERT OR REPLACE INTO setting VALUES('delivery_seconds',?)", seconds).Run();
  });
}

std::int64_t LoadDeliverySeconds(Database& database, std::int64_t fallback) {
  return database.Read(
      [&](Connection& connection) { return ValueOf(connection, "delivery_seconds", fallback); });
}

void AddRefund(Connection& connection, Money amount) {
  Query(connection,
        "INSERT INTO setting VALUES('refunded_parts',1),('refunded_amount',?) "
        "ON CONFLICT(name) DO UPDATE SET value=value+excluded.value",
        amount)
      .Run();
}

Refunds LoadRefunds(Connection& connection) {
  return {ValueOf(connection, "refunded_parts", 0), ValueOf(connection, "refunded_amount", 0)};
}

}  // namespace orvalo::service
