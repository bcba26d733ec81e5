#pragma once
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

namespace orvalo::platform {

// A file that is written from its beginning, private to the user (mode 0600). One thread.
class NewFile {
 public:
  // Null when the file cannot be made. One of that name is removed first, whether it was read-only
  // or a link to elsewhere.
  static std::unique_ptr<NewFile> Create(const std::string& path);

  ~NewFile();
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;

  // The number of bytes that went to the file, or -1 when none could.
  std::ptrdiff_t Write(std::string_view bytes);
  // Also flushes to the disk; false when bytes were lost.
  bool Close();

 private:
  explicit NewFile(int descriptor) : descriptor_(descriptor) {}

  int descriptor_;
};

// The file can be started as a program by the user, and by nobody else. False when it cannot.
bool MakeExecutable(const std::string& path);

// Starts a program that outlives this one. False when it cannot be started. Main thread.
bool StartProgram(const std::string& path);

}  // namespace orvalo::platform
