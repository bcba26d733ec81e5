#pragma once
#include <string>

namespace orvalo::test {

// A fresh folder that goes away, with all that is in it, at the end of its scope.
class TemporaryFolder {
 public:
  TemporaryFolder();
  ~TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  const std::string& path() const { return path_; }
  std::string File(const std::string& name) const { return path_ + "/" + name; }

 private:
  std::string path_;
};

// The bytes of a file ("" when there is none), and the making of one.
std::string Slurp(const std::string& path);
void Spill(const std::string& path, const std::string& bytes);

}  // namespace orvalo::test
