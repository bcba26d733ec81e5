#include "service/statement.h"

#include <algorithm>
#include <limits>

#include "service/secrets.h"

namespace orvalo::service {
namespace {

// When the day began that lies so many days before today.
std::int64_t DayStart(const platform::Clock& clock, int days_ago) {
  auto day = clock.ToLocal(clock.Now());
  day.day -= days_ago;
  day.hour = day.minute = day.second = 0;
  return clock.FromLocal(day);
}

void AddCharges(Connection& connection, std::int64_t account, std::int64_t from, std::int64_t until,
                Statement& statement) {
  Query row(
      connection,
      "SELECT COUNT(*),SUM(charge) FROM message WHERE account=? AND accepted>=? AND accepted<?",
      account, from, until);
  if (!row.Step() || row.Int(0) == 0) return;
  statement.entries.push_back({from, -row.Int(1), row.Int(0), {}});
}

void AddVouchers(Connection& connection, std::int64_t account, std::int64_t from,
                 Statement& statement) {
  Query rows(connection,
             "SELECT redeemed_at,amount,number FROM voucher WHERE redeemed_by=? AND redeemed_at>=? "
             "ORDER BY redeemed_at DESC",
             account, from);
  while (rows.Step()) statement.entries.push_back({rows.Int(0), rows.Int(1), 0, rows.Text(2)});
}

}  // namespace

std::string AccountMark(Connection& connection, std::int64_t account) {
  Query row(connection, "SELECT password FROM account WHERE id=?", account);
  return row.Step() ? Digest(row.Text(0)) : std::string();
}

std::optional<Statement> ReadStatement(Connection& connection, std::int64_t account,
                                       const platform::Clock& clock) {
  Statement statement;
  {
    Query row(connection, "SELECT user,balance,credits FROM account WHERE id=?", account);
    if (!row.Step()) return std::nullopt;
    statement.user = row.Text(0);
    statement.balance = row.Int(1);
    statement.credits = row.Int(2);
  }
  auto until = std::numeric_limits<std::int64_t>::max();
  for (int day = 0; day < kStatementDays; ++day) {
    const auto from = DayStart(clock, day);
    AddCharges(connection, account, from, until, statement);
    until = from;
  }
  AddVouchers(connection, account, until, statement);
  std::stable_sort(statement.entries.begin(), statement.entries.end(),
                   [](const auto& one, const auto& other) { return one.time > other.time; });
  return statement;
}

}  // namespace orvalo::service
