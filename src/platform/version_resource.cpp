#include "platform/version_resource.h"

#include <elf.h>
#include <link.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <string_view>

#include "platform/number.h"

namespace orvalo::platform {
namespace {

constexpr std::size_t kLongestPath = 260;
constexpr std::uint64_t kLargestBlock = 64u << 10;
constexpr std::uint64_t kMostSections = 0xFF00;  // more are numbered in another way
constexpr char kSectionName[] = ".orvalo.version";

constexpr std::array<std::uint32_t, 2> WordsOf(std::string_view version) {
  std::array<std::uint32_t, 4> parts{};
  for (std::uint32_t& part : parts) {
    part = static_cast<std::uint32_t>(ParseInteger(version)) & 0xFFFF;
    const std::size_t point = version.find('.');
    version = point == std::string_view::npos ? std::string_view() : version.substr(point + 1);
  }
  return {parts[0] << 16 | parts[1], parts[2] << 16 | parts[3]};
}

struct OwnBlock {
  std::uint32_t fixed[13];
  std::uint16_t translation[2];
};

constexpr std::array<std::uint32_t, 2> kOwnVersion = WordsOf(ORVALO_PROGRAM_VERSION);

// A sanitizer that guards global data would make the section larger than its block.
#ifdef __clang__
#define ORVALO_BARE [[clang::no_sanitize("address")]]
#else
#define ORVALO_BARE
#endif

// Structure version 1.0; file and product version; every flag known and none set; no particular
// system; an application without a subtype or date. English texts in UTF-8.
ORVALO_BARE
[[gnu::section(".orvalo.version"), gnu::used, gnu::retain]] constexpr OwnBlock kOwnBlock = {
    {0xFEEF04BD, 0x00010000, kOwnVersion[0], kOwnVersion[1], kOwnVersion[0], kOwnVersion[1], 0x3F,
     0, 0, 1, 0, 0, 0},
    {0x0409, 65001}};

// The path of a loaded module, by its file's name or its path.
std::string PathOfLoaded(const std::string& name) {
  struct Search {
    std::string_view name;
    std::string path;
  } search{name, {}};
  dl_iterate_phdr(
      [](dl_phdr_info* info, std::size_t, void* data) {
        auto& wanted = *static_cast<Search*>(data);
        const std::string_view path = info->dlpi_name;
        if (path.empty() || path.substr(path.rfind('/') + 1) != wanted.name) return 0;
        wanted.path = path;
        return 1;
      },
      &search);
  return search.path;
}

// Reads parts of a file; every part that lies outside reads as a failure.
class Reader {
 public:
  explicit Reader(const std::string& path) : file_(path, std::ios::binary) {}

  bool ReadAt(std::uint64_t offset, void* to, std::size_t length) {
    file_.clear();
    file_.seekg(static_cast<std::streamoff>(offset));
    file_.read(static_cast<char*>(to), static_cast<std::streamsize>(length));
    return static_cast<bool>(file_);
  }

 private:
  std::ifstream file_;
};

using Header = Elf64_Ehdr;
using Section = Elf64_Shdr;

bool IsUsable(const Header& header) {
  return std::memcmp(header.e_ident, ELFMAG, SELFMAG) == 0 &&
         header.e_ident[EI_CLASS] == ELFCLASS64 && header.e_shentsize == sizeof(Section) &&
         header.e_shnum < kMostSections && header.e_shstrndx < header.e_shnum;
}

}  // namespace

std::optional<std::string> ReadVersionResource(const std::string& module) {
  std::string path = module.empty() ? "/proc/self/exe" : module;
  if (path.find('/') == std::string::npos) path = PathOfLoaded(path);
  if (path.empty() || path.size() > kLongestPath) return std::nullopt;
  Reader file(path);
  Header header;
  Section names;
  if (!file.ReadAt(0, &header, sizeof header) || !IsUsable(header)) return std::nullopt;
  const auto section_at = [&](std::uint64_t index) {
    return header.e_shoff + index * sizeof(Section);
  };
  if (!file.ReadAt(section_at(header.e_shstrndx), &names, sizeof names)) return std::nullopt;
  for (std::uint64_t index = 0; index < header.e_shnum; ++index) {
    Section section;
    char name[sizeof kSectionName];
    if (!file.ReadAt(section_at(index), &section, sizeof section)) return std::nullopt;
    if (!file.ReadAt(names.sh_offset + section.sh_name, name, sizeof name) ||
        std::memcmp(name, kSectionName, sizeof name) != 0)
      continue;
    if (section.sh_type == SHT_NOBITS || section.sh_size > kLargestBlock) return std::nullopt;
    std::string block(section.sh_size, '\0');
    if (!file.ReadAt(section.sh_offset, block.data(), block.size())) return std::nullopt;
    return block;
  }
  return std::nullopt;
}

}  // namespace orvalo::platform
