#pragma once
#include "service/connection.h"

namespace orvalo::service {

// Makes the tables in a new file, and those that an older version did not have in an older file.
// Throws std::runtime_error when the file was made by a newer version. Sets the connection's
// journal and flushing, which hold for the file.
void PrepareSchema(Connection& connection);

}  // namespace orvalo::service
