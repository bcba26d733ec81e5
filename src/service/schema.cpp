#include "service/schema.h"

#include <fmt/format.h>

#include <array>
#include <stdexcept>

namespace orvalo::service {
namespace {

// Amounts are in thousandths, times in seconds since 1970 UTC, numbers, ids, keys and digests as
// the protocol has them (ids and keys as 16 bytes).
constexpr const char* kFirstTables = R"(
CREATE TABLE account(
  id INTEGER PRIMARY KEY, user TEXT NOT NULL UNIQUE, email TEXT NOT NULL,
  password TEXT NOT NULL, temporary TEXT NOT NULL DEFAULT '',
  temporary_until INTEGER NOT NULL DEFAULT 0,
  balance INTEGER NOT NULL CHECK(balance >= 0), credits INTEGER NOT NULL);
CREATE TABLE session(
  token BLOB PRIMARY KEY, account INTEGER NOT NULL, client TEXT NOT NULL,
  number INTEGER NOT NULL, last_call INTEGER NOT NULL) WITHOUT ROWID;
CREATE INDEX session_account ON session(account);
CREATE TABLE batch(
  seq INTEGER PRIMARY KEY, id BLOB NOT NULL UNIQUE, account INTEGER NOT NULL,
  text TEXT NOT NULL, type INTEGER NOT NULL, unicode INTEGER NOT NULL, parts INTEGER NOT NULL,
  sender TEXT NOT NULL, delivery_minutes INTEGER NOT NULL, ack INTEGER NOT NULL,
  accepted INTEGER NOT NULL DEFAULT 0, ended INTEGER NOT NULL DEFAULT 0);
CREATE TABLE message(
  seq INTEGER PRIMARY KEY, id BLOB NOT NULL UNIQUE, account INTEGER NOT NULL, batch INTEGER,
  number TEXT NOT NULL, text TEXT NOT NULL, type INTEGER NOT NULL, unicode INTEGER NOT NULL,
  parts INTEGER NOT NULL, sender TEXT NOT NULL, ack INTEGER NOT NULL,
  accepted INTEGER NOT NULL, due INTEGER NOT NULL, charge INTEGER NOT NULL, key BLOB NOT NULL);
CREATE TABLE submission(
  seq INTEGER PRIMARY KEY, account INTEGER NOT NULL, key BLOB NOT NULL, request BLOB NOT NULL,
  status INTEGER NOT NULL, reply TEXT NOT NULL, time INTEGER NOT NULL, UNIQUE(account, key));
CREATE TABLE voucher(
  number TEXT PRIMARY KEY, amount INTEGER NOT NULL, redeemed_by INTEGER, redeemed_at INTEGER)
  WITHOUT ROWID;
CREATE TABLE price(prefix TEXT PRIMARY KEY, amount INTEGER NOT NULL) WITHOUT ROWID;
INSERT INTO price VALUES('', 800);
CREATE TABLE setting(name TEXT PRIMARY KEY, value INTEGER NOT NULL) WITHOUT ROWID;
)";

// What an account's page reads, without the tables themselves, an account's messages in the order
// of their rows, and the long messages to a number: those that have a second part; and whence users
// have logged in, by digests. Made also for older files; a version that does not know of them works
// on such a file nevertheless.
constexpr const char* kLaterAdditions = R"(
CREATE INDEX IF NOT EXISTS message_account ON message(account, accepted, charge);
CREATE INDEX IF NOT EXISTS message_list ON message(account);
CREATE INDEX IF NOT EXISTS voucher_account ON voucher(redeemed_by, redeemed_at);
CREATE INDEX IF NOT EXISTS outbox_long ON outbox(number, message, reference) WHERE part=1;
CREATE TABLE IF NOT EXISTS login_place(
  place BLOB PRIMARY KEY, user TEXT NOT NULL, last_login INTEGER NOT NULL) WITHOUT ROWID;
CREATE INDEX IF NOT EXISTS login_place_user ON login_place(user, last_login);
)";

// Parts on their way to an engine. `state` is a PartState; `since` is when the part came into it,
// of a waiting part the time before which it is not handed over, and of a taken one when the engine
// was asked to take it; `seen` the types of reports that have come. The first index holds open
// parts only.
constexpr const char* kOutboxTable = R"(
CREATE TABLE outbox(
  message INTEGER NOT NULL, part INTEGER NOT NULL, state INTEGER NOT NULL, number TEXT NOT NULL,
  price INTEGER NOT NULL, reference INTEGER NOT NULL, since INTEGER NOT NULL,
  attempts INTEGER NOT NULL DEFAULT 0, report_key BLOB, seen INTEGER NOT NULL DEFAULT 0,
  refunded INTEGER NOT NULL DEFAULT 0, reason TEXT NOT NULL DEFAULT '',
  PRIMARY KEY(message,part)) WITHOUT ROWID;
CREATE INDEX outbox_open ON outbox(state,since) WHERE state<=4;
CREATE INDEX outbox_report ON outbox(report_key,number) WHERE report_key IS NOT NULL;
)";

// What leads from each schema number to the next; a file keeps its number. Never changed, only
// added to.
constexpr std::array kSteps{kFirstTables, kOutboxTable};
constexpr int kSchemaNumber = static_cast<int>(kSteps.size());

}  // namespace

void PrepareSchema(Connection& connection) {
  auto& database = connection.database();
  database.exec(
      "PRAGMA journal_mode=WAL; PRAGMA synchronous=FULL; PRAGMA journal_size_limit=4194304");
  // Two processes may come here at once; the second must see what the first has made.
  SQLite::Transaction transaction(database, SQLite::TransactionBehavior::IMMEDIATE);
  const int number = database.execAndGet("PRAGMA user_version").getInt();
  if (number > kSchemaNumber) {
    throw std::runtime_error(
        fmt::format("{} was made by a newer version of this program", database.getFilename()));
  }
  for (int step = number; step < kSchemaNumber; ++step) {
    database.exec(kSteps[static_cast<std::size_t>(step)]);
  }
  if (number < kSchemaNumber) {
    database.exec(fmt::format("PRAGMA user_version={}", kSchemaNumber));
  }
  database.exec(kLaterAdditions);
  transaction.commit();
}

}  // namespace orvalo::service
