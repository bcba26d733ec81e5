#pragma once
#include <string>
#include <string_view>

#include "platform/file_error.h"
#include "platform/open_file.h"

namespace orvalo::platform {

// Writes a file as a whole: the bytes go to a temporary file beside it, which is flushed to the
// disk and renamed over it by Commit (over a link, not over what it points to). Until then, and for
// good when a step fails or the object goes without Commit, the old file stays as it was, and
// nothing of the new one is left. One thread.
//
// The file keeps owner and mode of the one it replaces, as far as the system allows.
class FileReplacement {
 public:
  // What a file becomes that replaces none.
  enum class Kind {
    kPrivate,  // of the user alone (0600); made by root, of the folder's owner
    kUsual,    // as the user's other files: 0666 without the umask
  };

  FileReplacement(std::string path, Kind kind);
  ~FileReplacement();
  FileReplacement(const FileReplacement&) = delete;
  FileReplacement& operator=(const FileReplacement&) = delete;

  // False once any step has failed; Error() then says why.
  bool Write(std::string_view bytes);
  // Only when the last step fails, the flushing of the folder, does the new file stand already, and
  // may yet be lost with the machine's power.
  bool Commit();

  const FileError& Error() const { return error_; }

 private:
  bool Open();
  bool TakeOver();
  bool Fail();

  const std::string path_;
  const Kind kind_;
  std::string temporary_;
  OpenFile folder_;
  OpenFile file_;
  FileError error_;
};

// Removes from a folder what killed writes have left there: temporary files of this class, of this
// user (for root: of the folder's owner as well), that no living process is writing.
void RemoveDeadTemporaries(const std::string& folder);

}  // namespace orvalo::platform
