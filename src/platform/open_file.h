#pragma once
#include <string>
#include <string_view>

namespace orvalo::platform {

// What the files of this folder share about descriptors; not for other rooms.

// An open descriptor that closes itself.
class OpenFile {
 public:
  explicit OpenFile(int descriptor = -1) : descriptor_(descriptor) {}
  ~OpenFile() { Close(); }
  OpenFile(OpenFile&& other) noexcept;
  OpenFile& operator=(OpenFile&& other) noexcept;

  explicit operator bool() const { return descriptor_ >= 0; }
  int get() const { return descriptor_; }
  // False when the system reports, only now, that bytes were lost.
  bool Close();

 private:
  int descriptor_;
};

// All of the bytes; false on the first failure, which errno then tells.
bool WriteAll(int descriptor, std::string_view bytes);

// The folder that a file of this path stands in, as a path.
std::string FolderOf(const std::string& path);

// Opens the file with these flags, or makes it with this mode. A file that root makes belongs to
// the owner of its folder, who could not use it otherwise. -1 and errno on failure.
int OpenOrMake(const std::string& path, int flags, unsigned mode);

// The same for what is open already and was made by this program. Does nothing unless run by root.
void GiveToOwnerOf(const std::string& folder, int descriptor);

}  // namespace orvalo::platform
