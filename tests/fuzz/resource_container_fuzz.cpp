// Hostile container files: whatever the check lets through, Qt must be able to walk and to read.
#include <QDirIterator>
#include <QString>
#include <cstdint>
#include <string>

#include "platform/resource_container.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto container = orvalo::platform::ResourceContainer::LoadBytes(
      std::string(reinterpret_cast<const char*>(data), size), nullptr);
  if (container == nullptr) return 0;
  const std::string root = container->Root() + "/";
  QDirIterator entries(QString::fromStdString(root), QDirIterator::Subdirectories);
  while (entries.hasNext()) {
    const std::string path = entries.next().toStdString();
    container->Read(std::string_view(path).substr(root.size()));
  }
  container->Read("strings.json");
  return 0;
}
