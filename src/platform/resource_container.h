#pragma once
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvalo::platform {

// One container of texts, dialogs, menus, accelerators and images, addressed by paths
// ("strings.json", "dialogs/129.ui"). Either the program's own, compiled in, or a replaceable file
// made with `rcc --binary --compress-algo zlib`. Reading is allowed from any thread.
class ResourceContainer {
 public:
  virtual ~ResourceContainer() = default;

  // The bytes of one entry; nothing when there is no such file, when its data do not unpack, or
  // when the path is not of the plain form "name/name" (no leading slash, no ".."). Never looks
  // into another container.
  virtual std::optional<std::string> Read(std::string_view path) const = 0;

  // The paths of all entries, in alphabetical order.
  virtual std::vector<std::string> Paths() const = 0;

  // The root under which Qt finds the entries (":/builtin", ":/language"): for the windows' form
  // loader.
  virtual std::string Root() const = 0;

  // The program's own container (root ":/builtin"). Never null, never destroyed.
  static const ResourceContainer& BuiltIn();

  // Reads and checks a container file (at most 64 MiB, every offset verified; zstd-compressed
  // entries are refused because their size cannot be bounded), then registers it under
  // ":/language". Null for a missing, damaged or foreign file, with a reason in `error` (may be
  // null) that completes the sentence "The file …". Destroying the object unregisters it. At most
  // one is loaded at a time.
  static std::unique_ptr<ResourceContainer> Load(const std::string& file, std::string* error);

  // One entry of such a file, which is let go again at once; any other container stays loaded
  // beside it. Nothing when the file or the entry is missing or damaged. Any thread.
  static std::optional<std::string> ReadEntry(const std::string& file, std::string_view path,
                                              std::string* error);

  // Load with the bytes of such a file.
  static std::unique_ptr<ResourceContainer> LoadBytes(std::string bytes, std::string* error);
};

}  // namespace orvalo::platform
