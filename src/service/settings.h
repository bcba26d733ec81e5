#pragma once
#include <cstdint>

#include "service/database.h"

namespace orvalo::service {

// How long the service's simulated network takes to deliver, kept so that the ledger shows the
// statuses that the service tells. Any thread.
void SaveDeliverySeconds(Database& database, std::int64_t seconds);
std::int64_t LoadDeliverySeconds(Database& database, std::int64_t fallback);

}  // namespace orvalo::service
