#pragma once
#include <optional>
#include <string>

namespace orvalo::platform {

// Asks on the terminal for a text that is not shown while it is typed. Nothing when there is no
// terminal or the input ends.
std::optional<std::string> AskSecret(const std::string& prompt);

}  // namespace orvalo::platform
