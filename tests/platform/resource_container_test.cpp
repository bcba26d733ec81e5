#include "platform/resource_container.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <random>

#include "platform/resource_check.h"
#include "support/temporary_folder.h"

namespace orvalo::test {
namespace {

using platform::CheckContainer;
using platform::ResourceContainer;

const std::string kContainerFile = ORVALO_ZLIB_CONTAINER;
const std::string kSourceFolder = ORVALO_CONTAINER_FOLDER;
// Qt reports every entry that does not unpack; here they are many.
const bool kQuiet = setenv("QT_LOGGING_RULES", "*=false", 1) == 0;
constexpr const char* kEntries[] = {"strings.json", "dialogs/129.ui", "dialogs/empty.ui",
                                    "Über.txt"};

std::uint32_t GetU32(const std::string& bytes, std::size_t at) {
  std::uint32_t value = 0;
  for (std::size_t i = 0; i < 4; ++i)
    value = value << 8 | static_cast<unsigned char>(bytes.at(at + i));
  return value;
}

void SetU32(std::string& bytes, std::size_t at, std::uint32_t value) {
  for (std::size_t i = 4; i-- > 0; value >>= 8) bytes.at(at + i) = static_cast<char>(value & 0xFF);
}

TEST(ResourceContainer, HasTheProgramsOwnEntries) {
  const ResourceContainer& own = ResourceContainer::BuiltIn();
  EXPECT_EQ(own.Root(), ":/builtin");
  const auto strings = own.Read("strings.json");
  ASSERT_TRUE(strings);
  EXPECT_TRUE(strings->starts_with("{"));
}

TEST(ResourceContainer, LoadsAFileBesideTheProgramsOwn) {
  const TemporaryFolder folder;
  const std::string file = folder.File("Language.rcc");
  Spill(file, Slurp(kContainerFile));
  std::string error;
  for (int round = 0; round < 2; ++round) {
    const auto container = ResourceContainer::Load(file, &error);
    ASSERT_NE(container, nullptr) << error;
    EXPECT_EQ(container->Root(), ":/language");
    EXPECT_EQ(ResourceContainer::Load(file, &error), nullptr);  // one at a time
    EXPECT_FALSE(error.empty());
    Spill(file, "");  // what is loaded needs its file no more
    for (const std::string entry : kEntries)
      EXPECT_EQ(container->Read(entry), Slurp(kSourceFolder + "/" + entry)) << entry;
    EXPECT_FALSE(ResourceContainer::BuiltIn().Read("Über.txt"));
    Spill(file, Slurp(kContainerFile));
  }
  EXPECT_NE(ResourceContainer::Load(file, nullptr), nullptr);
}

TEST(ResourceContainer, ReadsNothingButItsOwnFiles) {
  const auto container = ResourceContainer::Load(kContainerFile, nullptr);
  ASSERT_NE(container, nullptr);
  const ResourceContainer& own = ResourceContainer::BuiltIn();
  for (const std::string_view path :
       {"", "/", ".", "..", "missing.txt", "dialogs", "dialogs/", "/strings.json", "./strings.json",
        "dialogs/../strings.json", "dialogs//129.ui", "../language/Über.txt",
        "../builtin/strings.json", ":/language/strings.json", "strings.json/", "STRINGS.JSON"}) {
    EXPECT_FALSE(container->Read(path)) << path;
    EXPECT_FALSE(own.Read(path)) << path;
  }
  EXPECT_FALSE(container->Read(std::string_view("strings.json\0x", 14)));
}

TEST(ResourceContainer, RefusesForeignAndDamagedFilesWithAReason) {
  const TemporaryFolder folder;
  const std::string sound = Slurp(kContainerFile);
  const std::size_t tree = GetU32(sound, 8), data = GetU32(sound, 12), names = GetU32(sound, 16);
  const auto patched = [&](std::size_t at, std::uint32_t value) {
    std::string bytes = sound;
    SetU32(bytes, at, value);
    return bytes;
  };
  const struct {
    const char* what;
    std::string bytes;
  } kCases[] = {
      {"empty", ""},
      {"foreign", std::string(5000, 'q')},
      {"zstd", Slurp(ORVALO_ZSTD_CONTAINER)},
      {"version", patched(4, 2)},
      {"flags", patched(20, 8)},
      {"tree outside", patched(8, 0xFFFFFFF0)},
      {"data outside", patched(12, static_cast<std::uint32_t>(sound.size()) + 1)},
      {"names in the header", patched(16, 4)},
      {"root contains itself", patched(tree + 10, 0)},
      {"too many children", patched(tree + 6, 0xFFFFFFFF)},
      {"child's name outside", patched(tree + 22, 0x7FFFFFFF)},
      {"empty name", patched(names, GetU32(sound, names) & 0xFFFF)},
      {"data larger than the file", patched(data, 0x7FFFFFFF)},
  };
  for (const auto& [what, bytes] : kCases) {
    std::string error;
    Spill(folder.File("x.rcc"), bytes);
    EXPECT_EQ(ResourceContainer::Load(folder.File("x.rcc"), &error), nullptr) << what;
    EXPECT_FALSE(error.empty()) << what;
    EXPECT_EQ(ResourceContainer::Load(folder.File("x.rcc"), nullptr), nullptr) << what;
  }
  for (std::size_t size = 0; size < sound.size(); ++size)
    ASSERT_FALSE(CheckContainer(std::string_view(sound).substr(0, size), nullptr)) << size;
  for (const std::string& file : {folder.File("missing.rcc"), folder.path()}) {
    std::string error;
    EXPECT_EQ(ResourceContainer::Load(file, &error), nullptr);
    EXPECT_FALSE(error.empty());
  }
  std::filesystem::resize_file(folder.File("x.rcc"), platform::kMaxContainer + 1);
  EXPECT_EQ(ResourceContainer::Load(folder.File("x.rcc"), nullptr), nullptr);
}

TEST(ResourceContainer, RefusesNamesThatLeadElsewhereAndEntriesThatUnpackToTooMuch) {
  const std::string sound = Slurp(kContainerFile);
  const std::size_t names = GetU32(sound, 16);
  for (const char16_t unit : {u'\0', u'/', u'.'}) {  // every name made of that character alone
    std::string bytes = sound;
    const std::size_t at = bytes.find(std::string("\0s\0t\0r", 6), names);
    ASSERT_NE(at, std::string::npos);
    bytes[at + 1] = static_cast<char>(unit);
    if (unit == u'.') bytes[at - 5] = 1;  // a name of one dot
    EXPECT_FALSE(CheckContainer(bytes, nullptr)) << static_cast<int>(unit);
  }
  // The compressed entry begins with its length, the length that it unpacks to and zlib's mark.
  const std::size_t mark = sound.find("\x78", GetU32(sound, 12) + 8);
  const std::uint32_t length =
      static_cast<std::uint32_t>(Slurp(kSourceFolder + "/strings.json").size());
  std::size_t at = mark;
  while (at >= 4 && GetU32(sound, at - 4) != length) --at;
  ASSERT_GE(at, 8u);
  std::string bytes = sound;
  for (const std::uint32_t wrong : {0u, static_cast<std::uint32_t>(platform::kMaxContainer) + 1}) {
    SetU32(bytes, at - 4, wrong);
    EXPECT_FALSE(CheckContainer(bytes, nullptr)) << wrong;
  }
  // A length that is merely wrong, or damaged data, cost that entry only.
  for (const std::uint32_t wrong : {length - 1, length + 1}) {
    SetU32(bytes, at - 4, wrong);
    const auto container = ResourceContainer::LoadBytes(bytes, nullptr);
    ASSERT_NE(container, nullptr);
    EXPECT_FALSE(container->Read("strings.json")) << wrong;
    EXPECT_TRUE(container->Read("dialogs/129.ui"));
  }
}

TEST(ResourceContainer, SurvivesEveryMutation) {
  ASSERT_TRUE(kQuiet);
  const std::string sound = Slurp(kContainerFile);
  constexpr std::uint32_t kNumbers[] = {0, 1, 2, 22, 0x7F, 0xFFFF, 0x7FFFFFFF, 0xFFFFFFFF};
  std::mt19937 random(20'26);
  int loaded = 0, refused = 0;
  for (int round = 0; round < 2'000; ++round) {
    std::string bytes = sound;
    for (unsigned change = random() % 4 + 1; change > 0; --change) {
      // The header, the names and the tree, at the end, deserve more than the data between.
      const std::size_t area = random() % 3 == 0 ? 24 : std::min<std::size_t>(400, bytes.size());
      const std::size_t at =
          random() % 2 == 0 ? random() % area : bytes.size() - 1 - random() % area;
      if (random() % 2 == 0 || at + 4 > bytes.size())
        bytes[at] = static_cast<char>(random());
      else
        SetU32(bytes, at, kNumbers[random() % std::size(kNumbers)]);
    }
    const auto container = ResourceContainer::LoadBytes(bytes, nullptr);
    ++(container == nullptr ? refused : loaded);
    if (container == nullptr) continue;
    for (const char* entry : kEntries) {
      const auto content = container->Read(entry);
      EXPECT_LE(content ? content->size() : 0, platform::kMaxContainer);
    }
  }
  EXPECT_GT(loaded, 200);
  EXPECT_GT(refused, 200);
}

}  // namespace
}  // namespace orvalo::test
