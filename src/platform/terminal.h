#pragma once
#include <optional>
#include <string>

namespace orvalo::platform {

// Whether a terminal stands behind the program's standard input, and behind its error output.
bool InputIsTerminal();
bool ErrorOutputIsTerminal();

// Asks on the terminal for a text that is not shown while it is typed. Nothing when there is no
// terminal, the input ends, or the person breaks off (Ctrl-C).
std::optional<std::string> AskSecret(const std::string& prompt);

}  // namespace orvalo::platform
