#include "service/connection.h"

#include <sqlite3.h>

namespace orvalo::service {

Connection::Connection(const std::string& path, int flags)
    : database_(path, flags | SQLite::OPEN_NOMUTEX, 5000) {}

bool Connection::InTransaction() const {
  return sqlite3_get_autocommit(database_.getHandle()) == 0;
}

SQLite::Statement& Connection::Prepared(const char* sql) {
  auto& statement = statements_[sql];
  if (!statement) statement = std::make_unique<SQLite::Statement>(database_, sql);
  return *statement;
}

std::int64_t Query::Run() {
  while (statement_.executeStep()) {
  }
  return statement_.getChanges();
}

}  // namespace orvalo::service
