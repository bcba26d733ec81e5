#include "platform/resource_check.h"

#include <algorithm>
#include <vector>

namespace orvalo::platform {
namespace {

// The format, all numbers big-endian. Header: "qres", version, then the offsets of the tree, the
// data and the names, and the flags of all entries together.
constexpr std::uint64_t kHeaderSize = 24;
constexpr std::uint32_t kVersion = 3;

// An entry of the tree: offset of its name; flags (16 bits); for a folder the number of its
// children and the index of the first; for a file the locale and the offset of its data; the time
// of its last change (64 bits).
constexpr std::uint64_t kEntrySize = 22;
constexpr std::uint64_t kEntryFlags = 4;
constexpr std::uint64_t kFolderCount = 6;
constexpr std::uint64_t kFolderFirst = 10;
constexpr std::uint64_t kFileData = 10;

constexpr std::uint16_t kZlib = 1;
constexpr std::uint16_t kFolder = 2;
constexpr std::uint16_t kZstd = 4;

// A name: length in UTF-16 units (16 bits), hash (32 bits), the units.
constexpr std::uint64_t kNamePrefix = 6;

class ContainerCheck {
 public:
  explicit ContainerCheck(std::string_view bytes) : bytes_(bytes) {}

  // Null when all is well, else the reason.
  const char* Run() {
    if (const char* fault = CheckHeader()) return fault;
    owned_.assign(Size() / kEntrySize + 1, false);
    // The root is entry 0; every further entry becomes known through its parent, which comes first.
    std::uint64_t known = 1;
    for (std::uint64_t index = 0; index < known; ++index)
      if (const char* fault = CheckEntry(index, known)) return fault;
    return nullptr;
  }

 private:
  std::uint64_t Size() const { return bytes_.size(); }
  std::uint64_t Byte(std::uint64_t at) const { return static_cast<unsigned char>(bytes_[at]); }
  std::uint16_t U16(std::uint64_t at) const {
    return static_cast<std::uint16_t>(Byte(at) << 8 | Byte(at + 1));
  }
  std::uint32_t U32(std::uint64_t at) const {
    return static_cast<std::uint32_t>(std::uint32_t{U16(at)} << 16 | U16(at + 2));
  }
  // `at` may be any sum of a few 32-bit numbers.
  bool Fits(std::uint64_t at, std::uint64_t length) const {
    return at <= Size() && length <= Size() - at;
  }

  const char* CheckHeader() {
    if (Size() < kHeaderSize || !bytes_.starts_with("qres")) return "is no resource container";
    if (U32(4) != kVersion) return "has another container version than 3";
    tree_ = U32(8);
    data_ = U32(12);
    names_ = U32(16);
    if ((U32(20) & kZstd) != 0) return "holds zstd-compressed entries";
    if ((U32(20) & ~std::uint32_t{kZlib | kFolder}) != 0) return "has unknown flags";
    for (const std::uint64_t section : {tree_, data_, names_})
      if (section < kHeaderSize || section > Size()) return "has a damaged header";
    return nullptr;
  }

  const char* CheckEntry(std::uint64_t index, std::uint64_t& known) {
    const std::uint64_t at = tree_ + index * kEntrySize;
    if (!Fits(at, kEntrySize)) return "has a damaged tree";
    const std::uint16_t flags = U16(at + kEntryFlags);
    if ((flags & kZstd) != 0) return "holds zstd-compressed entries";
    if ((flags & ~(kZlib | kFolder)) != 0) return "has an entry of unknown kind";
    if (index == 0 && (flags & kFolder) == 0) return "has a damaged tree";
    if (index != 0 && !IsSoundName(names_ + U32(at))) return "has a damaged name";
    if ((flags & kFolder) != 0)
      return OwnChildren(index, U32(at + kFolderFirst), U32(at + kFolderCount), known);
    return CheckData(data_ + U32(at + kFileData), (flags & kZlib) != 0);
  }

  // One component of a path: an empty name or a dot would make a folder contain itself.
  bool IsSoundName(std::uint64_t at) const {
    if (!Fits(at, kNamePrefix)) return false;
    const std::uint64_t units = U16(at);
    if (units == 0 || !Fits(at, kNamePrefix + 2 * units)) return false;
    std::uint64_t dots = 0;
    for (std::uint64_t i = 0; i < units; ++i) {
      const std::uint16_t unit = U16(at + kNamePrefix + 2 * i);
      if (unit == 0 || unit == '/') return false;
      if (unit == '.') ++dots;
    }
    return dots != units || units > 2;
  }

  const char* OwnChildren(std::uint64_t parent, std::uint64_t first, std::uint64_t count,
                          std::uint64_t& known) {
    if (count == 0) return nullptr;
    if (first <= parent || !Fits(tree_ + first * kEntrySize, count * kEntrySize))
      return "has a damaged tree";
    for (std::uint64_t child = first; child < first + count; ++child) {
      if (owned_[child]) return "has an entry in two folders";
      owned_[child] = true;
    }
    known = std::max(known, first + count);
    return nullptr;
  }

  // The data are their length (32 bits), then the bytes; compressed bytes begin with the length
  // that they unpack to (32 bits).
  const char* CheckData(std::uint64_t at, bool compressed) const {
    if (!Fits(at, 4) || !Fits(at, 4 + std::uint64_t{U32(at)})) return "has damaged data";
    if (!compressed) return nullptr;
    if (U32(at) < 4 || U32(at + 4) == 0) return "has damaged data";
    return U32(at + 4) > kMaxContainer ? "has an entry that is too large" : nullptr;
  }

  std::string_view bytes_;
  std::uint64_t tree_ = 0, data_ = 0, names_ = 0;
  std::vector<bool> owned_;  // by entry: has a parent
};

}  // namespace

bool CheckContainer(std::string_view bytes, std::string* error) {
  const char* fault = bytes.size() > kMaxContainer ? "is too large" : ContainerCheck(bytes).Run();
  if (fault != nullptr && error != nullptr) *error = fault;
  return fault == nullptr;
}

}  // namespace orvalo::platform
