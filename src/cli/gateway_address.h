#pragma once
#include <string>

namespace orvalo::cli {

// A gateway's address as it is stored: one without "http://" or "https://" gets the latter. Throws
// CommandError for plain HTTP to another machine, over which everybody on the way reads passwords
// and messages, unless `plain_http` says that this is meant.
std::string GatewayAddress(const std::string& typed, bool plain_http);

}  // namespace orvalo::cli
