#pragma once
#include <optional>
#include <string>

namespace orvalo::platform {

// The raw version block of a module: a program or library file of ours carries one as a section of
// its own, linked in by whoever calls this function. Little-endian: the 13 words (32 bits each) of
// the standard fixed block, signature 0xFEEF04BD first; then pairs of language and code page (16
// bits each).
//
// `module`: empty for this program's own file; a name without a slash for a module that is loaded;
// else a path (at most 260 bytes). Nothing when there is no such file, it cannot be read, or it has
// no such block. Any thread; reads the file.
std::optional<std::string> ReadVersionResource(const std::string& module);

}  // namespace orvalo::platform
