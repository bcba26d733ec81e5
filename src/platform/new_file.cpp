#include "platform/new_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QProcess>
#include <QString>
#include <QStringList>
#include <cerrno>
#include <utility>

#include "platform/open_file.h"

namespace orvalo::platform {

std::unique_ptr<NewFile> NewFile::Create(const std::string& path) {
  if (unlink(path.c_str()) != 0 && errno != ENOENT) return nullptr;
  const int descriptor = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
  if (descriptor < 0) return nullptr;
  GiveToOwnerOf(FolderOf(path), descriptor);
  return std::unique_ptr<NewFile>(new NewFile(descriptor));
}

NewFile::~NewFile() {
  if (descriptor_ >= 0) close(descriptor_);
}

std::ptrdiff_t NewFile::Write(std::string_view bytes) {
  for (;;) {
    const ssize_t written = write(descriptor_, bytes.data(), bytes.size());
    if (written >= 0 || errno != EINTR) return written;
  }
}

bool NewFile::Close() {
  if (descriptor_ < 0) return true;
  const bool flushed = fsync(descriptor_) == 0;
  return close(std::exchange(descriptor_, -1)) == 0 && flushed;
}

bool MakeExecutable(const std::string& path) { return chmod(path.c_str(), 0700) == 0; }

bool StartProgram(const std::string& path) {
  return QProcess::startDetached(QString::fromStdString(path), QStringList());
}

}  // namespace orvalo::platform
