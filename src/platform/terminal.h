#pragma once
#include <optional>
#include <string>
#include <string_view>

namespace orvalo::platform {

// Whether a terminal stands behind the program's standard input, and behind its error output.
bool InputIsTerminal();
bool ErrorOutputIsTerminal();

// Asks on the terminal for a text that is not shown while it is typed. Nothing when there is no
// terminal, the input ends, or the person breaks off (Ctrl-C).
std::optional<std::string> AskSecret(const std::string& prompt);

// The one way in which programs print what others wrote (any thread, no failure), so that it cannot
// steer a terminal, break a line or change the order in which one is read.
//
// The text on one line: runs of control characters (of ASCII, and the C1 ones that UTF-8 writes as
// 0xC2 0x80 to 0x9F) and of line and paragraph separators become one blank, none at either end;
// bytes that are not UTF-8 and marks that override or isolate a writing direction become U+FFFD.
std::string PrintableLine(std::string_view text);
// JSON with the same characters as \u escapes, which read back as what they were. `json` must be
// UTF-8; its own line ends are kept.
std::string PrintableJson(std::string_view json);

// Whom this program runs as: the name, or where the system knows none the number. Any thread.
std::string UserName();

}  // namespace orvalo::platform
