#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace orvalo::platform {

// Files by path (8-bit, the system code page). Any thread.

// The file's bytes; nothing when it cannot be opened, is no regular file, is larger than `limit`,
// or breaks off.
std::optional<std::string> ReadFile(const std::string& path, std::uint64_t limit = 256u << 20);

// Replaces `path` as a whole: a temporary file beside it, flushed to the disk, then renamed over
// it (over a link, not over what it points to). Mode 0600. False when any step fails; the old file
// is then untouched and no temporary file stays behind. Only when the last step fails, the flushing
// of the folder, does the new file stand already, and may yet be lost with the machine's power.
bool ReplaceFile(const std::string& path, std::string_view bytes);

// Writes `bytes` at the end of the file, in one write where the system allows it, so that lines of
// several programs do not mix. Makes the file (mode 0600) when it is missing; others may read it
// and write to it meanwhile. False when it cannot be opened or not all was written.
bool AppendToFile(const std::string& path, std::string_view bytes);

// Renames a file unless something of the new name exists. False when it does, or on any failure.
bool RenameToNew(const std::string& from, const std::string& to);

// The size in bytes, or nothing when there is no such regular file.
std::optional<std::uint64_t> FileSize(const std::string& path);

bool IsFolder(const std::string& path);

// Makes the folder (mode 0700) and its missing parents; true when it exists afterwards.
bool MakeFolder(const std::string& path);

}  // namespace orvalo::platform
