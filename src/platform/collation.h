#pragma once
#include <string>
#include <string_view>

namespace orvalo::platform {

// Letter case and the order of texts. Any thread. In bytes that are not UTF-8 only ASCII letters
// have a case.

// The rules of no particular language, so that data means the same on every machine. The length may
// change ("ß" becomes "SS").

std::string ToUpper(std::string_view text);
std::string ToLower(std::string_view text);

// Equality of whole texts without regard to case ("ß" and "ẞ", "É" and "é" alike).
bool EqualNoCase(std::string_view a, std::string_view b);

// Two texts are EqualNoCase when, and only when, these are the same; for looking up many.
std::string FoldCase(std::string_view text);

// ASCII letters only; for protocol words and member names. Allocates nothing.
bool EqualNoCaseAscii(std::string_view a, std::string_view b);

// Dictionary order of the user's language, case-sensitive (lower case before upper case when all
// else is equal; English where the environment asks for the order of bytes). Hyphens and
// apostrophes count only between texts that are otherwise alike, and those without come first.
// Negative, 0 or positive. Texts that the order cannot tell apart are ordered by their bytes, so 0
// means equal.
int CompareTexts(std::string_view a, std::string_view b);

// A key whose byte order is the order of CompareTexts but for its tie-break; for sorting long
// lists. Kept in memory only: keys differ between machines.
std::string SortKey(std::string_view text);
void AppendSortKey(std::string_view text, std::string* keys);  // for many keys in one place

}  // namespace orvalo::platform
