#pragma once
#include <cstddef>
#include <string>
#include <string_view>

namespace orvalo::platform {

// The system code page is UTF-8. Program texts are 8-bit strings in it; wide strings (UTF-16) exist
// only where texts leave the program through automation. All functions: any thread, no failure.

// Bytes that are not UTF-8 (and surrogates without a partner) become U+FFFD, one for each offending
// sequence.
std::u16string ToWide(std::string_view text);
std::string FromWide(std::u16string_view text);

// What older spreadsheets write: a byte a character. The five bytes that stand for nothing become
// U+FFFD.
std::string FromWindows1252(std::string_view bytes);

bool IsValidUtf8(std::string_view text);

// Characters are Unicode code points; a byte that is not part of a valid sequence counts as one.
std::size_t CountCharacters(std::string_view text);

// The first `count` characters; the rest is cut off, never inside a character.
std::string_view FirstCharacters(std::string_view text, std::size_t count);

// At most `count` bytes from the front, never ending inside a character: for fixed-width records
// and buffers.
std::string_view FirstBytes(std::string_view text, std::size_t count);

}  // namespace orvalo::platform
