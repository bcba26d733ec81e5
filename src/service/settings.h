#pragma once
#include <cstdint>

#include "service/database.h"
#include "service/money.h"

namespace orvalo::service {

// How long the service's simulated network takes to deliver, kept so that the ledger shows the
// statuses that the service tells. Any thread.
void SaveDeliverySeconds(Database& database, std::int64_t seconds);
std::int64_t LoadDeliverySeconds(Database& database, std::int64_t fallback);

// What was given back since the ledger began, kept so that nobody need count all parts. Within a
// write and a read.
struct Refunds {
  std::int64_t parts = 0;
  Money amount = 0;
};
void AddRefund(Connection& connection, Money amount);
Refunds LoadRefunds(Connection& connection);

}  // namespace orvalo::service
