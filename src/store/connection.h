#pragma once
#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <type_traits>
#include <unordered_map>
#include <utility>

struct sqlite3;
struct sqlite3_stmt;
namespace SQLite {
class Database;
}

namespace orvalo {

// The text of one statement: a constant of the program, because the address of the text is the key
// under which every connection keeps the statement prepared.
struct Sql {
  consteval explicit Sql(const char* statement) : text(statement) {}
  const char* text;
};

enum class StoreAccess { kReadWrite, kReadOnly };

// The writers of one process take turns here, so that none of them polls for SQLite's lock. A
// mutex but for the patience. Any thread.
class WriteTurn {
 public:
  bool Take();  // false when the turn has not come within a minute
  void Give();

 private:
  std::mutex mutex_;
  std::condition_variable given_;
  bool taken_ = false;
};

// One thread's connection to the file, its prepared statements and its transaction. Made by
// Storage; used by one thread at a time. Every failure of SQLite is thrown as StoreError.
class Connection {
 public:
  // `contact_changes` grows with every change of a contact, a group or a membership.
  Connection(const std::string& path, StoreAccess access, WriteTurn& write_turn,
             std::atomic<std::uint64_t>& contact_changes);
  ~Connection();
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  // Runs any number of statements that give no rows; for the schema and pragmas.
  void Execute(const std::string& statements);

  // Transactions nest by counting. End(false) on any level dooms the outermost one: its End(true)
  // then undoes everything and throws.
  // `to_disk`: its End flushes the journal, so that a power cut does not undo what it keeps (nor
  // anything before it). Of the outermost only.
  void Begin(bool to_disk = false);
  void End(bool keep);
  bool InTransaction() const { return depth_ > 0; }

  // Folds the journal into the file as far as readers allow, never waiting for one. Does nothing
  // within a transaction.
  void Checkpoint();

  // Keeps a copy of what the file and its journal hold, without the changes of this transaction:
  // "<file>.<suffix>" (mode 0600), or with a number behind it when there is one of that name.
  // Whole and flushed to the disk before it has that name.
  void KeepCopy(const std::string& suffix) const;

  const std::string& Path() const { return path_; }
  std::int64_t Changes() const;  // rows changed by the last statement that writes
  [[noreturn]] void Fail(int result) const;

  // The turn to write is held from a thread's first write to the end of its statement or
  // transaction; re-entrant.
  void LockWriting();
  void UnlockWriting();

 private:
  friend class Query;
  struct Finalize {
    void operator()(sqlite3_stmt* statement) const;
  };
  using Statement = std::unique_ptr<sqlite3_stmt, Finalize>;

  Statement Take(const Sql& sql);
  void GiveBack(const Sql& sql, Statement statement);
  void RollBack();
  void SetFlushing(bool to_disk);

  std::string path_;
  WriteTurn& write_turn_;
  std::unique_ptr<SQLite::Database> database_;
  sqlite3* handle_ = nullptr;
  std::unordered_map<const char*, Statement> kept_;
  int depth_ = 0;
  int write_holds_ = 0;
  bool doomed_ = false;
  bool to_disk_ = false;
};

// One use of a prepared statement: parameters are given in order, rows come from Step. Bound texts
// are not copied and must live until the last Step; texts read live until the next one. Lives
// within one operation.
class Query {
 public:
  template <typename... Values>
  Query(Connection& connection, const Sql& sql, const Values&... values)
      : Query(Open{}, connection, sql) {
    (Bind(values), ...);
  }
  ~Query();
  Query(const Query&) = delete;
  Query& operator=(const Query&) = delete;

  // The same statement again, with other parameters.
  template <typename... Values>
  Query& Again(const Values&... values) {
    Rewind();
    (Bind(values), ...);
    return *this;
  }

  bool Step();     // true: there is a row to read
  void Execute();  // steps to the end

  // Columns from 0. Values of another type are converted as SQLite converts them; NULL is 0 or "".
  // Int clips what does not fit.
  std::int32_t Int(int column) const;
  std::int64_t Int64(int column) const;
  std::string_view Text(int column) const;
  bool IsNull(int column) const;

 private:
  struct Open {};
  Query(Open, Connection& connection, const Sql& sql);
  void Rewind();
  void BindInteger(std::int64_t value);
  void BindText(std::string_view value);
  template <typename Value>
  void Bind(const Value& value) {
    if constexpr (std::is_enum_v<Value>) {
      BindInteger(static_cast<std::int64_t>(value));
    } else if constexpr (std::is_integral_v<Value>) {
      BindInteger(value);
    } else {
      BindText(value);
    }
  }

  Connection& connection_;
  const Sql sql_;
  Connection::Statement statement_;
  int bound_ = 0;
  bool writes_ = false;
};

// Runs a statement that gives no rows; the number of rows it changed.
template <typename... Values>
std::int64_t Run(Connection& connection, const Sql& sql, const Values&... values) {
  Query query(connection, sql, values...);
  query.Execute();
  return connection.Changes();
}

}  // namespace orvalo
