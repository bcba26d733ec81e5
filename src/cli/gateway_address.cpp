#include "cli/gateway_address.h"

#include <algorithm>
#include <string_view>

#include "cli/command.h"
#include "platform/collation.h"

namespace orvalo::cli {

namespace {

bool TakeScheme(std::string_view* address, std::string_view scheme) {
  if (!platform::EqualNoCaseAscii(address->substr(0, scheme.size()), scheme)) return false;
  address->remove_prefix(scheme.size());
  return true;
}

// Whether "host:port/path" is on this machine: "localhost", "[::1]" or "127." and digits.
bool IsThisMachine(std::string_view rest) {
  rest = rest.substr(0, rest.find_first_of("/?#"));
  if (rest.find('@') != std::string_view::npos) return false;
  if (rest.starts_with('[')) return rest.substr(0, rest.find(']') + 1) == "[::1]";
  const std::string_view host = rest.substr(0, rest.find(':'));
  constexpr std::string_view kLoopback = "127.";
  return platform::EqualNoCaseAscii(host, "localhost") ||
         (host.starts_with(kLoopback) &&
          host.find_first_not_of("0123456789.") == std::string_view::npos);
}

}  // namespace

std::string GatewayAddress(const std::string& typed, bool plain_http) {
  std::string_view rest = typed;
  if (typed.empty() || TakeScheme(&rest, "https://")) return typed;
  if (!TakeScheme(&rest, "http://")) {
    return typed.find("://") == std::string::npos ? "https://" + typed : typed;
  }
  if (plain_http || IsThisMachine(rest)) return typed;
  throw CommandError(ExitCode::kFailed,
                     "Over http:// everybody on the way to another machine can read passwords and "
                     "messages. Use https://, or say `orvaloctl init --plain-http`");
}

}  // namespace orvalo::cli
