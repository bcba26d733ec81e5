#include "platform/resource_container.h"

#include <QByteArray>
#include <QDirIterator>
#include <QResource>
#include <QString>
#include <algorithm>
#include <atomic>
#include <mutex>
#include <utility>

#include "platform/file.h"
#include "platform/resource_check.h"

// Outside any namespace, as the macro wants it: makes the linker keep the entries that are compiled
// into this static library.
static void KeepBuiltInResources() { Q_INIT_RESOURCE(builtin); }

namespace orvalo::platform {
namespace {

// Only what has the plain form "name/name/name" reaches Qt: anything else could lead out of the
// container's root.
bool IsPlainPath(std::string_view path) {
  for (;;) {
    const std::size_t slash = path.find('/');
    const std::string_view name = path.substr(0, slash);
    if (name.empty() || name == "." || name == ".." || name.find('\0') != std::string_view::npos)
      return false;
    if (slash == std::string_view::npos) return true;
    path.remove_prefix(slash + 1);
  }
}

class QtResourceContainer : public ResourceContainer {
 public:
  explicit QtResourceContainer(const char* root) : root_(root) {}

  std::optional<std::string> Read(std::string_view path) const override {
    if (!IsPlainPath(path)) return std::nullopt;
    const QResource entry(QString::fromStdString(root_ + "/" + std::string(path)));
    if (!entry.isValid() || entry.data() == nullptr) return std::nullopt;  // missing, or a folder
    const QByteArray bytes = entry.uncompressedData();
    // Data that do not unpack come out empty or short.
    if (bytes.size() != entry.uncompressedSize()) return std::nullopt;
    return bytes.toStdString();
  }

  std::vector<std::string> Paths() const override {
    std::vector<std::string> paths;
    QDirIterator entries(QString::fromStdString(root_), QDir::Files, QDirIterator::Subdirectories);
    while (entries.hasNext())
      paths.push_back(entries.next().toStdString().substr(root_.size() + 1));
    std::sort(paths.begin(), paths.end());
    return paths;
  }

  std::string Root() const override { return root_; }

 private:
  const std::string root_;
};

std::atomic<bool> a_container_is_loaded = false;
std::mutex one_entry_at_a_time;

// Holds the bytes for as long as Qt refers to them.
class RegisteredContainer : public QtResourceContainer {
 public:
  RegisteredContainer(std::string bytes, const char* map_root)
      : QtResourceContainer((":" + std::string(map_root)).c_str()),
        bytes_(std::move(bytes)),
        map_root_(QString::fromLatin1(map_root)) {}

  ~RegisteredContainer() override {
    if (registered_) QResource::unregisterResource(Bytes(), map_root_);
  }

  bool Register() { return registered_ = QResource::registerResource(Bytes(), map_root_); }

 private:
  const uchar* Bytes() const { return reinterpret_cast<const uchar*>(bytes_.data()); }

  const std::string bytes_;
  const QString map_root_;
  bool registered_ = false;
};

class LoadedContainer : public RegisteredContainer {
 public:
  explicit LoadedContainer(std::string bytes)
      : RegisteredContainer(std::move(bytes), "/language") {}
  ~LoadedContainer() override { a_container_is_loaded = false; }
};

}  // namespace

const ResourceContainer& ResourceContainer::BuiltIn() {
  static const auto* const container = [] {
    KeepBuiltInResources();
    return new QtResourceContainer(":/builtin");
  }();
  return *container;
}

std::unique_ptr<ResourceContainer> ResourceContainer::Load(const std::string& file,
                                                           std::string* error) {
  std::optional<std::string> bytes = ReadFile(file, kMaxContainer);
  if (bytes) return LoadBytes(*std::move(bytes), error);
  if (error != nullptr) *error = "cannot be read";
  return nullptr;
}

std::unique_ptr<ResourceContainer> ResourceContainer::LoadBytes(std::string bytes,
                                                                std::string* error) {
  if (!CheckContainer(bytes, error)) return nullptr;
  if (a_container_is_loaded.exchange(true)) {
    if (error != nullptr) *error = "another container is loaded";
    return nullptr;
  }
  auto container = std::make_unique<LoadedContainer>(std::move(bytes));
  if (container->Register()) return container;
  if (error != nullptr) *error = "is refused by the resource system";
  return nullptr;
}

std::optional<std::string> ResourceContainer::ReadEntry(const std::string& file,
                                                        std::string_view path, std::string* error) {
  std::string ignored;
  std::string& reason = error == nullptr ? ignored : *error;
  reason = "cannot be read";
  std::optional<std::string> bytes = ReadFile(file, kMaxContainer);
  if (!bytes || !CheckContainer(*bytes, &reason)) return std::nullopt;
  reason = "lacks the entry";
  std::lock_guard guard(one_entry_at_a_time);
  RegisteredContainer container(*std::move(bytes), "/entry");
  return container.Register() ? container.Read(path) : std::nullopt;
}

}  // namespace orvalo::platform
