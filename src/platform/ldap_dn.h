#pragma once
#include <cstddef>
#include <string>
#include <string_view>

namespace orvalo::platform {

// Distinguished names (RFC 4514) in a form of ours by which they can be compared and looked up:
// servers and people write the same name in many ways. Letter case, blanks around and within
// values, the way of escaping, the long names of common attributes and the order within an RDN do
// not count. Any thread.

// The form; nothing comparable (the empty text) when `dn` is no name, or that of the root.
std::string ComparableDn(std::string_view dn);

// Of a name in that form: the name of the entry above it; empty at the top.
std::string_view ParentDn(std::string_view comparable);

// Whether a name in that form is `base` or lies below it. Everything lies below the empty name.
bool IsBelowDn(std::string_view comparable, std::string_view base);

// The value of one RDN as it is written, the first being that of the entry itself: of
// "ou=Sales,dc=example" number 0 is "Sales", number 1 "example". Empty when there is none.
std::string RdnValue(std::string_view dn, std::size_t number);

}  // namespace orvalo::platform
