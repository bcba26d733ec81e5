#pragma once
#include <string>
#include <string_view>
#include <vector>

namespace orvalo::platform {

// How texts stand in vCard files (versions 2.1, 3.0 and 4.0). Any input is taken; what cannot be
// read as written becomes U+FFFD or is left as it is. Any thread.

// The bytes of a file, UTF-16 files as UTF-8 and without a byte-order mark; other bytes unchanged,
// since each value may have a character set of its own.
std::string VcardFileText(std::string bytes);

std::string DecodeQuotedPrintable(std::string_view text);

// In UTF-8. An empty or unknown `charset` (any name that ICU knows), or bytes that are not in it:
// UTF-8 when they are that, else Windows-1252.
std::string ToUtf8(std::string_view bytes, const std::string& charset);

// The fields between the separators that no backslash protects, each with its escapes undone.
std::vector<std::string> SplitVcardValue(std::string_view text, char separator);
std::string UnescapeVcardValue(std::string_view text);

// "%41" as "A".
std::string DecodePercent(std::string_view text);

}  // namespace orvalo::platform
