#pragma once
#include <SQLiteCpp/SQLiteCpp.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>

namespace orvalo::service {

// One SQLite connection and its prepared statements, which are kept for as long as it lives. One
// thread at a time. Everything throws SQLite::Exception on failure.
class Connection {
 public:
  Connection(const std::string& path, int flags);

  SQLite::Database& database() { return database_; }
  bool InTransaction() const;

  // The statement for this text, which must be a literal (it is known by its address).
  SQLite::Statement& Prepared(const char* sql);

 private:
  SQLite::Database database_;
  std::unordered_map<const char*, std::unique_ptr<SQLite::Statement>> statements_;
};

struct Blob {
  std::string_view bytes;
};

// One use of a prepared statement, with its parameters bound in order; reset when the scope ends.
// Two uses of the same literal must not overlap.
class Query {
 public:
  template <class... Args>
  Query(Connection& connection, const char* sql, const Args&... args)
      : statement_(connection.Prepared(sql)) {
    int index = 0;
    (Bind(++index, args), ...);
  }
  ~Query() { statement_.tryReset(); }
  Query(const Query&) = delete;
  Query& operator=(const Query&) = delete;

  bool Step() { return statement_.executeStep(); }  // true: there is a row
  std::int64_t Run();                               // to its end; the number of rows changed

  std::int64_t Int(int column) const { return statement_.getColumn(column).getInt64(); }
  bool IsNull(int column) const { return statement_.getColumn(column).isNull(); }
  std::string Text(int column) const { return statement_.getColumn(column).getString(); }

 private:
  void Bind(int index, std::int64_t value) { statement_.bind(index, value); }
  void Bind(int index, int value) { statement_.bind(index, value); }
  void Bind(int index, bool value) { statement_.bind(index, value ? 1 : 0); }
  void Bind(int index, const std::string& value) { statement_.bind(index, value); }
  void Bind(int index, const Blob& value) {
    statement_.bind(index, value.bytes.data(), static_cast<int>(value.bytes.size()));
  }
  void Bind(int index, std::nullptr_t) { statement_.bind(index); }

  SQLite::Statement& statement_;
};

}  // namespace orvalo::service
