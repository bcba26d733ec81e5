#include "store/connection.h"

#include <SQLiteCpp/Backup.h>
#include <SQLiteCpp/Database.h>
#include <SQLiteCpp/Exception.h>
#include <sqlite3.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <limits>

#include "platform/disk_full.h"
#include "platform/file.h"
#include "store/store_error.h"

namespace orvalo {
namespace {

constexpr int kBusyMilliseconds = 5000;
constexpr int kMostCopies = 1000;
constexpr std::chrono::minutes kTurnPatience(1);  // a long import is one transaction
constexpr Sql kBegin("BEGIN IMMEDIATE");
constexpr Sql kCommit("COMMIT");

// `system_error` is the system's number behind `result`, or 0 when it is not known.
StoreProblem ProblemOf(int result, int system_error) {
  switch (result & 0xff) {
    case SQLITE_FULL:
      return StoreProblem::kDiskFull;
    case SQLITE_READONLY:
    case SQLITE_PERM:
      return StoreProblem::kNotWritable;
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
      return StoreProblem::kInUse;
    case SQLITE_CORRUPT:
      return StoreProblem::kDamaged;
    case SQLITE_NOTADB:
      return StoreProblem::kNoDatabase;
    case SQLITE_CANTOPEN:  // also of a journal that finds no room
      return platform::MeansDiskFull(system_error) ? StoreProblem::kDiskFull
                                                   : StoreProblem::kNotOpened;
    case SQLITE_TOOBIG:
      return StoreProblem::kTooLong;
    default:
      return platform::MeansDiskFull(system_error) ? StoreProblem::kDiskFull
                                                   : StoreProblem::kUnknown;
  }
}

// What the file says is data: it may not run anything.
void DistrustSchema(sqlite3* handle) {
  sqlite3_db_config(handle, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
  for (const int option : {SQLITE_DBCONFIG_TRUSTED_SCHEMA, SQLITE_DBCONFIG_ENABLE_TRIGGER,
                           SQLITE_DBCONFIG_ENABLE_VIEW, SQLITE_DBCONFIG_DQS_DML}) {
    sqlite3_db_config(handle, option, 0, nullptr);
  }
}

// For every row that a statement has written. Of the tables, only those of contacts and groups
// begin so.
void CountContactChange(void* count, int, const char*, const char* table, sqlite3_int64) {
  if (*table == 'C' || *table == 'G') ++*static_cast<std::atomic<std::uint64_t>*>(count);
}

}  // namespace

bool WriteTurn::Take() {
  std::unique_lock lock(mutex_);
  if (!given_.wait_for(lock, kTurnPatience, [this] { return !taken_; })) return false;
  taken_ = true;
  return true;
}

void WriteTurn::Give() {
  {
    std::lock_guard guard(mutex_);
    taken_ = false;
  }
  given_.notify_one();
}

// --- Connection

Connection::Connection(const std::string& path, StoreAccess access, WriteTurn& write_turn,
                       std::atomic<std::uint64_t>& contact_changes)
    : path_(path), write_turn_(write_turn) {
  // Looking on opens for writing as well, if it can: only so is the journal of a killed program
  // readable.
  const int flags = SQLite::OPEN_READWRITE | SQLITE_OPEN_NOMUTEX |
                    (access == StoreAccess::kReadWrite ? SQLite::OPEN_CREATE : 0);
  try {
    database_ = std::make_unique<SQLite::Database>(path, flags, kBusyMilliseconds);
  } catch (const SQLite::Exception& failure) {
    throw StoreError(ProblemOf(failure.getErrorCode(), 0), path, failure.what());
  }
  handle_ = database_->getHandle();
  DistrustSchema(handle_);
  sqlite3_update_hook(handle_, CountContactChange, &contact_changes);
  // The automatic checkpoint only keeps the journal from growing without end.
  Execute("PRAGMA synchronous=NORMAL; PRAGMA wal_autocheckpoint=10000;");
  if (access == StoreAccess::kReadOnly) Execute("PRAGMA query_only=ON;");
}

Connection::~Connection() = default;

void Connection::Finalize::operator()(sqlite3_stmt* statement) const {
  sqlite3_finalize(statement);
}

void Connection::Execute(const std::string& statements) {
  const int result = sqlite3_exec(handle_, statements.c_str(), nullptr, nullptr, nullptr);
  if (result != SQLITE_OK) Fail(result);
}

void Connection::SetFlushing(bool to_disk) {
  if (to_disk == to_disk_) return;
  Execute(to_disk ? "PRAGMA synchronous=FULL" : "PRAGMA synchronous=NORMAL");
  to_disk_ = to_disk;
}

void Connection::Begin(bool to_disk) {
  if (depth_ == 0) {
    LockWriting();
    try {
      SetFlushing(to_disk);
      Query(*this, kBegin).Execute();
    } catch (...) {
      UnlockWriting();
      throw;
    }
    doomed_ = false;
  }
  ++depth_;
}

void Connection::End(bool keep) {
  if (--depth_ > 0) {
    if (!keep) doomed_ = true;
    return;
  }
  // A full disk makes SQLite itself undo the transaction.
  const bool whole = !doomed_ && sqlite3_get_autocommit(handle_) == 0;
  doomed_ = false;
  try {
    if (keep && whole) Query(*this, kCommit).Execute();
  } catch (...) {
    RollBack();
    UnlockWriting();
    throw;
  }
  RollBack();
  UnlockWriting();
  if (keep && !whole) {
    throw StoreError("\"" + path_ + "\": a part of the change failed, so all of it was undone");
  }
}

void Connection::RollBack() {
  if (sqlite3_get_autocommit(handle_) == 0) {
    sqlite3_exec(handle_, "ROLLBACK", nullptr, nullptr, nullptr);
  }
}

std::int64_t Connection::Changes() const { return sqlite3_changes64(handle_); }

void Connection::Fail(int result) const {
  const std::string detail =
      sqlite3_errcode(handle_) == SQLITE_OK ? sqlite3_errstr(result) : sqlite3_errmsg(handle_);
  throw StoreError(ProblemOf(result, sqlite3_system_errno(handle_)), path_, detail);
}

void Connection::LockWriting() {
  if (write_holds_ == 0 && !write_turn_.Take()) {
    throw StoreError("\"" + path_ + "\" is held by another task of this program");
  }
  ++write_holds_;
}

void Connection::UnlockWriting() {
  if (--write_holds_ == 0) write_turn_.Give();
}

Connection::Statement Connection::Take(const Sql& sql) {
  Statement& kept = kept_[sql.text];  // empty while in use
  if (kept) return std::move(kept);
  sqlite3_stmt* statement = nullptr;
  const int result =
      sqlite3_prepare_v3(handle_, sql.text, -1, SQLITE_PREPARE_PERSISTENT, &statement, nullptr);
  if (result != SQLITE_OK) Fail(result);
  return Statement(statement);
}

void Connection::GiveBack(const Sql& sql, Statement statement) {
  kept_.find(sql.text)->second = std::move(statement);
}

void Connection::Checkpoint() {
  if (InTransaction()) return;
  LockWriting();
  int in_journal = 0;
  int folded = 0;
  int result =
      sqlite3_wal_checkpoint_v2(handle_, nullptr, SQLITE_CHECKPOINT_PASSIVE, &in_journal, &folded);
  if (result == SQLITE_OK && in_journal == folded) {
    // Emptying the journal needs every reader to be past it: only if that is so right now.
    sqlite3_busy_timeout(handle_, 0);
    result =
        sqlite3_wal_checkpoint_v2(handle_, nullptr, SQLITE_CHECKPOINT_TRUNCATE, nullptr, nullptr);
    sqlite3_busy_timeout(handle_, kBusyMilliseconds);
  }
  UnlockWriting();
  if (result != SQLITE_OK && result != SQLITE_BUSY && result != SQLITE_LOCKED) Fail(result);
}

void Connection::KeepCopy(const std::string& suffix) const {
  const std::string unfinished = path_ + "." + suffix + ".new";  // of a killed run, or none
  if (!platform::ReplaceFile(unfinished, {})) {
    throw StoreError("\"" + unfinished + "\" cannot be created");
  }
  try {
    SQLite::Database copy(unfinished, SQLite::OPEN_READWRITE);
    copy.exec("PRAGMA journal_mode=OFF; PRAGMA synchronous=FULL;");
    SQLite::Database source(path_, SQLite::OPEN_READWRITE, kBusyMilliseconds);
    if (SQLite::Backup(copy, source).executeStep() != SQLITE_DONE) {
      throw SQLite::Exception("the copy was not finished", SQLITE_BUSY);
    }
  } catch (const SQLite::Exception& failure) {
    std::remove(unfinished.c_str());
    throw StoreError(ProblemOf(failure.getErrorCode(), 0), unfinished, failure.what());
  }
  std::string name = path_ + "." + suffix;
  for (int number = 2; !platform::RenameToNew(unfinished, name); ++number) {
    if (number > kMostCopies) {
      std::remove(unfinished.c_str());
      throw StoreError("\"" + unfinished + "\" cannot be renamed");
    }
    name = path_ + "." + suffix + "-" + std::to_string(number);
  }
}

// --- Query

Query::Query(Open, Connection& connection, const Sql& sql)
    : connection_(connection), sql_(sql), statement_(connection.Take(sql)) {
  const bool writes = sqlite3_stmt_readonly(statement_.get()) == 0;
  if (!writes) return;
  if (connection.depth_ > 0 && (connection.doomed_ || sqlite3_get_autocommit(connection.handle_))) {
    connection.GiveBack(sql, std::move(statement_));
    throw StoreError("\"" + connection.path_ + "\": the change has already failed");
  }
  connection.LockWriting();
  writes_ = true;
}

Query::~Query() {
  sqlite3_reset(statement_.get());
  sqlite3_clear_bindings(statement_.get());
  connection_.GiveBack(sql_, std::move(statement_));
  if (writes_) connection_.UnlockWriting();
}

void Query::Rewind() {
  sqlite3_reset(statement_.get());
  bound_ = 0;
}

bool Query::Step() {
  const int result = sqlite3_step(statement_.get());
  if (result == SQLITE_ROW) return true;
  if (result == SQLITE_DONE) return false;
  connection_.Fail(result);
}

void Query::Execute() {
  while (Step()) {
  }
}

void Query::BindInteger(std::int64_t value) {
  const int result = sqlite3_bind_int64(statement_.get(), ++bound_, value);
  if (result != SQLITE_OK) connection_.Fail(result);
}

void Query::BindText(std::string_view value) {
  const char* text = value.data() == nullptr ? "" : value.data();  // a null pointer would bind NULL
  const int result = sqlite3_bind_text64(statement_.get(), ++bound_, text, value.size(),
                                         SQLITE_STATIC, SQLITE_UTF8);
  if (result != SQLITE_OK) connection_.Fail(result);
}

std::int32_t Query::Int(int column) const {
  using Limits = std::numeric_limits<std::int32_t>;
  return static_cast<std::int32_t>(
      std::clamp<std::int64_t>(Int64(column), Limits::min(), Limits::max()));
}

std::int64_t Query::Int64(int column) const {
  return sqlite3_column_int64(statement_.get(), column);
}

std::string_view Query::Text(int column) const {
  const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement_.get(), column));
  if (text == nullptr) return {};
  return {text, static_cast<std::size_t>(sqlite3_column_bytes(statement_.get(), column))};
}

bool Query::IsNull(int column) const {
  return sqlite3_column_type(statement_.get(), column) == SQLITE_NULL;
}

}  // namespace orvalo
