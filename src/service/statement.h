#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/clock.h"
#include "service/connection.h"
#include "service/money.h"

namespace orvalo::service {

// What went into and out of an account.
struct Statement {
  struct Entry {
    std::int64_t time = 0;      // when the voucher was redeemed, or the day of the messages began
    Money amount = 0;           // positive when it was credited
    std::int64_t messages = 0;  // how many cost it; 0 for a voucher
    std::string voucher;        // its number
  };

  std::string user;
  Money balance = 0;
  Money credits = 0;           // ever given; less everything ever charged it is the balance
  std::vector<Entry> entries;  // of the last kStatementDays days, newest first
};

inline constexpr int kStatementDays = 30;  // today is one of them

// Changes when the account's password does, and tells nothing of it; "" when there is no such
// account.
std::string AccountMark(Connection& connection, std::int64_t account);

// Nothing when there is no such account. Reads no single message: a day's messages are one entry.
std::optional<Statement> ReadStatement(Connection& connection, std::int64_t account,
                                       const platform::Clock& clock);

}  // namespace orvalo::service
