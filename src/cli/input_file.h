#pragma once
#include <cstdint>
#include <string>

#include "cli/command.h"

namespace orvalo::cli {

// "-" as the name of a file: the standard input.
inline constexpr char kStandardInput[] = "-";

// All bytes of a file of any kind, pipes included, or of the standard input. Throws CommandError
// when it cannot be read or has more than `limit` bytes.
std::string ReadInput(Context& context, const std::string& path, std::uint64_t limit);

// A file that can be read from its start and whose size is known, as an import wants it: the file
// itself when it is a regular one, else a copy in the data folder of what came through the pipe or
// the standard input, which goes with this object. The run must hold the folder.
class SeekableInput {
 public:
  // Throws CommandError when the pipe cannot be read or copied.
  SeekableInput(Context& context, const std::string& path);
  ~SeekableInput();
  SeekableInput(const SeekableInput&) = delete;
  SeekableInput& operator=(const SeekableInput&) = delete;
  const std::string& path() const { return path_; }

 private:
  std::string path_;
  bool copied_ = false;
};

}  // namespace orvalo::cli
