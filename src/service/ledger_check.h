#pragma once
#include <cstdint>
#include <string>
#include <vector>

#include "service/connection.h"

namespace orvalo::service {

// Proves, from the file alone and in one view of it, that the money adds up: for each account its
// credits less the charges are its balance; for each message that went through the outbox the
// charge is the price of its parts less those refunded, all its parts are there, each with one row,
// and refunds stand exactly where nothing was sent.
struct LedgerCheck {
  std::int64_t accounts = 0, messages = 0, parts = 0, refunds = 0;
  std::vector<std::string> faults;  // sentences; empty: all is well
};

LedgerCheck CheckLedger(Connection& connection);

}  // namespace orvalo::service
