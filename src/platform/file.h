#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/file_error.h"

namespace orvalo::platform {

// Files by path (8-bit, the system code page). Any thread.

// The file's bytes; nothing when it cannot be opened, is no regular file, is larger than `limit`,
// or breaks off. `error` (may be null) then says why.
std::optional<std::string> ReadFile(const std::string& path, std::uint64_t limit = 256u << 20,
                                    FileError* error = nullptr);

// Replaces `path` as a whole, as FileReplacement (kPrivate) does. False when any step fails, and
// then the old file is untouched; `error` (may be null) says why.
bool ReplaceFile(const std::string& path, std::string_view bytes, FileError* error = nullptr);

// Writes `bytes` at the end of the file, in one write where the system allows it, so that lines of
// several programs do not mix. Makes the file (mode 0600; made by root, the folder's owner's) when
// it is missing; others may read it and write to it meanwhile. False when it cannot be opened or
// not all was written.
bool AppendToFile(const std::string& path, std::string_view bytes);

// Gives the file a second name that is not taken yet: its own followed by `suffix`, or by that and
// ".2", ".3" and so on; where files have one name only, it is renamed. When it has such a name
// already, that one counts. Nothing when all of that fails.
std::optional<std::string> KeepAside(const std::string& path, const std::string& suffix);

// Whether anything has this name, be it a link that leads nowhere.
bool IsNameTaken(const std::string& path);

// Renames a file unless something of the new name exists. False when it does, or on any failure.
bool RenameToNew(const std::string& from, const std::string& to);

// Where the last link of a chain of links leads, whether anything is there or not; the path itself
// when it is no link.
std::string FollowLinks(std::string path);

// The size in bytes, or nothing when there is no such regular file.
std::optional<std::uint64_t> FileSize(const std::string& path);

bool IsFolder(const std::string& path);

// Makes the folder (mode 0700; made by root, the owner's of the folder above it) and its missing
// parents; true when it exists afterwards.
bool MakeFolder(const std::string& path);

}  // namespace orvalo::platform
