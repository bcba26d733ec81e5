#pragma once
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/file_error.h"
#include "platform/file_replacement.h"
#include "platform/open_file.h"

namespace orvalo::platform {

// What a program keeps to itself. Whatever stands directly in one of these folders is its own, and
// so is what a file there is a link to or a second name of, and what is one of these files.
struct OwnPlaces {
  std::vector<std::string> folders;
  std::vector<std::string> files;  // elsewhere
};

// A file that the operator has named to be written. One thread.
//
// A file is replaced as a whole by Commit, and stays as it was when anything fails before; of a
// link, what it leads to is replaced. A write-protected file is refused. Devices, pipes with a
// reader, and the names of open descriptors ("/dev/stdout") are written to at once.
class OutputFile {
 public:
  // What is the program's own is refused as FileError::Kind::kOwn.
  OutputFile(const std::string& path, const OwnPlaces& own);
  ~OutputFile();
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  // False once any step has failed; Error() then says why. Bytes wait in a buffer, so that a
  // failure may show later than the Write that caused it.
  bool Write(std::string_view bytes);
  bool Commit();

  const FileError& Error() const { return error_; }

 private:
  bool Open(const std::string& path, const OwnPlaces& own);
  bool OpenDirectly(const std::string& path, const OwnPlaces& own);
  bool Flush();
  bool Fail(FileError error);

  std::unique_ptr<FileReplacement> replacement_;  // else
  OpenFile direct_;
  std::string waiting_;
  FileError error_;
};

}  // namespace orvalo::platform
