#include "service/ledger_check.h"

#include <fmt/format.h>

#include "service/money.h"
#include "service/part_state.h"
#include "service/secrets.h"

namespace orvalo::service {
namespace {

constexpr std::size_t kMostFaults = 100;

void AddFault(LedgerCheck& check, std::string sentence) {
  if (check.faults.size() < kMostFaults) check.faults.push_back(std::move(sentence));
}

void CheckAccounts(Connection& connection, LedgerCheck& check) {
  Query rows(connection,
             "SELECT user,credits,balance,COALESCE((SELECT sum(charge) FROM message WHERE "
             "account=account.id),0) FROM account ORDER BY user");
  while (rows.Step()) {
    ++check.accounts;
    const auto credits = rows.Int(1), balance = rows.Int(2), charges = rows.Int(3);
    if (credits - charges == balance) continue;
    AddFault(check,
             fmt::format("account {}: credits {} less charges {} are not the balance {}",
                         rows.Text(0), MoneyText(credits), MoneyText(charges), MoneyText(balance)));
  }
}

// Messages that the simulated network carried have no parts here.
void CheckMessages(Connection& connection, LedgerCheck& check) {
  Query rows(connection,
             "SELECT id,charge,parts,(SELECT count(*) FROM outbox WHERE message=seq),"
             "(SELECT COALESCE(sum(price),0) FROM outbox WHERE message=seq AND refunded=0),"
             "(SELECT COALESCE(max(part),0) FROM outbox WHERE message=seq) FROM message");
  while (rows.Step()) {
    ++check.messages;
    const auto parts = rows.Int(3);
    check.parts += parts;
    if (parts == 0) continue;
    const auto id = ToHex(rows.Text(0));
    if (parts != rows.Int(2) || rows.Int(5) != parts - 1) {
      AddFault(check, fmt::format("message {}: {} of {} parts are there", id, parts, rows.Int(2)));
    }
    if (rows.Int(1) != rows.Int(4)) {
      AddFault(check, fmt::format("message {}: the charge {} is not the price {} of its parts", id,
                                  MoneyText(rows.Int(1)), MoneyText(rows.Int(4))));
    }
  }
}

void CheckRefunds(Connection& connection, LedgerCheck& check) {
  Query rows(connection, "SELECT message,part,state,refunded FROM outbox");
  while (rows.Step()) {
    const auto state = static_cast<PartState>(rows.Int(2));
    const bool refunded = rows.Int(3) != 0;
    if (refunded) ++check.refunds;
    // A refund stays when a late report tells that the part was sent after all.
    if (IsFree(state) && !refunded) {
      AddFault(check, fmt::format("part {}/{} is {} and not refunded", rows.Int(0), rows.Int(1),
                                  NameOf(state)));
    }
  }
}

}  // namespace

LedgerCheck CheckLedger(Connection& connection) {
  const SQLite::Transaction one_view(connection.database());
  LedgerCheck check;
  CheckAccounts(connection, check);
  CheckMessages(connection, check);
  CheckRefunds(connection, check);
  return check;
}

}  // namespace orvalo::service
