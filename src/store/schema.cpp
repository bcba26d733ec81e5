#include "store/schema.h"

#include <algorithm>
#include <string>

#include "store/connection.h"
#include "store/store_error.h"

namespace orvalo {
namespace {

constexpr Sql kReadApplicationId("PRAGMA application_id");
constexpr Sql kReadSchemaNumber("PRAGMA user_version");
constexpr Sql kCountObjects("SELECT count(*) FROM sqlite_schema");

// The two indices on SMS are partial: what has come to its end, the bulk of an old file, is in
// none. Their conditions are written out because SQLite would build a table for IN at every
// update. Membership rows are read in the order of their hidden row number, the order of joining.
constexpr const char* kTables = R"(
CREATE TABLE SMS(
  ID INTEGER PRIMARY KEY, Time INTEGER NOT NULL, Stat INTEGER NOT NULL, Type INTEGER NOT NULL,
  RefID INTEGER NOT NULL, "To" TEXT NOT NULL, ToInfo TEXT NOT NULL, Msg TEXT NOT NULL,
  ApiMsgID TEXT NOT NULL, SavedStat INTEGER NOT NULL, SenderID TEXT NOT NULL,
  Delay INTEGER NOT NULL, QueryTime INTEGER NOT NULL, StatQryTm INTEGER NOT NULL,
  Charge TEXT NOT NULL, Number TEXT NOT NULL DEFAULT '', Reason TEXT NOT NULL DEFAULT '');
CREATE INDEX SMS_UNFINISHED ON SMS(Stat) WHERE (Stat = 0 OR Stat BETWEEN 4 AND 6 OR Stat = 10);
CREATE INDEX SMS_FOLLOWED ON SMS(Stat, StatQryTm) WHERE QueryTime >= 1 AND
  (Stat = 1 OR Stat = 3 OR Stat = 7 OR Stat = 8 OR Stat = 11);
CREATE TABLE NextSMSID(ID INTEGER NOT NULL);
CREATE TABLE "GROUP"(GID INTEGER PRIMARY KEY, Cnt INTEGER NOT NULL, Name TEXT NOT NULL);
CREATE TABLE NextGroupID(ID INTEGER NOT NULL);
CREATE TABLE CONTACTS(
  CID INTEGER PRIMARY KEY, Name TEXT NOT NULL, Surname TEXT NOT NULL, Title TEXT NOT NULL,
  Custom TEXT NOT NULL, Mobile TEXT NOT NULL);
CREATE TABLE NextContactID(ID INTEGER NOT NULL);
CREATE TABLE CONTACT_GROUP_MAP(CID INTEGER NOT NULL, GID INTEGER NOT NULL);
CREATE INDEX MAP_CID ON CONTACT_GROUP_MAP(CID);
)";

// The journal of what is being sent; see send_journal.h.
constexpr const char* kJournalTables =
    "CREATE TABLE SENDING(ID INTEGER PRIMARY KEY, Key TEXT NOT NULL, Since INTEGER NOT NULL);"
    "CREATE TABLE SENDING_TO(ID INTEGER NOT NULL, Pos INTEGER NOT NULL, CID INTEGER NOT NULL, "
    "Number TEXT NOT NULL, Entry TEXT NOT NULL, OwnText INTEGER NOT NULL, Text TEXT NOT NULL, "
    "PRIMARY KEY(ID, Pos)) WITHOUT ROWID;"
    "CREATE TABLE SENDING_ANSWER(ID INTEGER NOT NULL, Pos INTEGER NOT NULL, Code INTEGER NOT NULL, "
    "Words TEXT NOT NULL, Reply TEXT NOT NULL, PRIMARY KEY(ID, Pos)) WITHOUT ROWID;";

// What each schema has more than the one before it, from 2 on.
constexpr const char* kUpgrades[] = {
    "ALTER TABLE SMS ADD COLUMN Number TEXT NOT NULL DEFAULT '';"
    "ALTER TABLE SMS ADD COLUMN Reason TEXT NOT NULL DEFAULT '';",
    kJournalTables,
};

constexpr const char* kContactIndices =
    "CREATE INDEX CONTACTS_MOBILE ON CONTACTS(Mobile);"
    "CREATE INDEX MAP_GID ON CONTACT_GROUP_MAP(GID);";

// Each fails to be prepared when a table or column is missing that every schema has.
constexpr Sql kTableChecks[] = {
    Sql("SELECT ID, Time, Stat, Type, RefID, SMS.\"To\", ToInfo, Msg, ApiMsgID, SavedStat, "
        "SenderID, Delay, QueryTime, StatQryTm, Charge FROM SMS INDEXED BY SMS_UNFINISHED "
        "WHERE (Stat = 0 OR Stat BETWEEN 4 AND 6 OR Stat = 10) LIMIT 1"),
    Sql("SELECT ID FROM SMS INDEXED BY SMS_FOLLOWED WHERE QueryTime >= 1 AND "
        "(Stat = 1 OR Stat = 3 OR Stat = 7 OR Stat = 8 OR Stat = 11) LIMIT 1"),
    Sql("SELECT GID, Cnt, Name FROM \"GROUP\" LIMIT 1"),
    Sql("SELECT CID, Name, Surname, Title, Custom, Mobile FROM CONTACTS LIMIT 1"),
    Sql("SELECT CID, GID, rowid FROM CONTACT_GROUP_MAP LIMIT 1"),
    Sql("SELECT ID FROM NextSMSID"),
    Sql("SELECT ID FROM NextGroupID"),
    Sql("SELECT ID FROM NextContactID"),
};

// The same of what later schemas have.
constexpr Sql kLaterChecks[] = {
    Sql("SELECT Number, Reason FROM SMS LIMIT 1"),
    Sql("SELECT ID, Key, Since FROM SENDING LIMIT 1"),
    Sql("SELECT ID, Pos, CID, Number, Entry, OwnText, Text FROM SENDING_TO LIMIT 1"),
    Sql("SELECT ID, Pos, Code, Words, Reply FROM SENDING_ANSWER LIMIT 1"),
};

std::int64_t ReadNumber(Connection& connection, const Sql& sql) {
  Query query(connection, sql);
  return query.Step() ? query.Int64(0) : 0;
}

void MakeTables(Connection& connection) {
  connection.Execute(kTables);
  connection.Execute(kJournalTables);
  MakeContactIndices(connection);
  connection.Execute("PRAGMA application_id=" + std::to_string(kApplicationId));
}

// The copy is taken while this transaction keeps everybody else from writing and has not changed
// the file yet, and when all else has succeeded.
void Upgrade(Connection& connection, int number) {
  for (int next = number; next < kSchemaNumber; ++next) connection.Execute(kUpgrades[next - 1]);
  connection.KeepCopy("schema-" + std::to_string(number));
}

// All of the change or nothing of it; the new number comes with it.
template <typename Change>
void ChangeSchema(Connection& connection, const Change& change) {
  connection.Begin();
  try {
    change();
    connection.Execute("PRAGMA user_version=" + std::to_string(kSchemaNumber));
  } catch (...) {
    connection.End(false);
    throw;
  }
  connection.End(true);
}

}  // namespace

void DropContactIndices(Connection& connection) {
  connection.Execute("DROP INDEX CONTACTS_MOBILE; DROP INDEX MAP_GID");
}

void MakeContactIndices(Connection& connection) { connection.Execute(kContactIndices); }

int PrepareSchema(Connection& connection, bool create) {
  const std::int64_t number = ReadNumber(connection, kReadSchemaNumber);
  const std::int64_t application = ReadNumber(connection, kReadApplicationId);
  const bool empty = ReadNumber(connection, kCountObjects) == 0;
  if (application != kApplicationId && !(empty && application == 0 && number == 0)) {
    throw StoreError(StoreProblem::kForeign, connection.Path(), std::to_string(application));
  }
  if (number > kSchemaNumber) {
    throw StoreError(StoreProblem::kNewer, connection.Path(),
                     std::to_string(number) + " > " + std::to_string(kSchemaNumber));
  }
  if (create) connection.Execute("PRAGMA journal_mode=WAL");
  if (empty) {
    if (!create) throw StoreError(StoreProblem::kNoDatabase, connection.Path(), "empty");
    ChangeSchema(connection, [&] { MakeTables(connection); });
  }
  for (const Sql& check : kTableChecks) Query(connection, check).Step();
  const int found = empty ? kSchemaNumber : std::max(1, static_cast<int>(number));
  if (found < kSchemaNumber) {
    if (!create) return found;
    ChangeSchema(connection, [&] { Upgrade(connection, found); });
  }
  for (const Sql& check : kLaterChecks) Query(connection, check).Step();
  return kSchemaNumber;
}

}  // namespace orvalo
