#include "messages/hex_import.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "app/texts.h"
#include "support/temporary_folder.h"

namespace orvalo {
namespace {

TEST(HexImportTest, TurnsBytesIntoUpperCaseDigits) {
  const test::TemporaryFolder folder;
  const struct {
    std::string bytes, digits;
  } cases[] = {
      {"", ""},
      {std::string("\0\x0f\xa0\xff\r\n", 6), "000FA0FF0D0A"},
      {"BEGIN", "424547494E"},
  };
  for (const auto& [bytes, digits] : cases) {
    test::Spill(folder.File("card.vcf"), bytes);
    ImportFailure failure{};
    EXPECT_EQ(ImportAsHexadecimal(folder.File("card.vcf"), &failure), digits);
  }
}

TEST(HexImportTest, SaysWhyAFileCannotBeHad) {
  const test::TemporaryFolder folder;
  const Texts texts;
  const struct {
    std::string path;
    ImportFailure failure;
  } cases[] = {
      {"", ImportFailure::kNoPath},
      {folder.File("missing"), ImportFailure::kNoLength},
      {folder.path(), ImportFailure::kNoLength},
  };
  for (const auto& [path, expected] : cases) {
    ImportFailure failure{};
    EXPECT_EQ(ImportAsHexadecimal(path, &failure), std::nullopt) << path;
    EXPECT_EQ(failure, expected) << path;
    const std::string text = ImportFailureText(texts, path, failure);
    EXPECT_NE(text.find(path), std::string::npos) << text;
    EXPECT_TRUE(text.ends_with(texts.Load(1341 + static_cast<int>(failure)))) << text;
  }
  EXPECT_TRUE(
      ImportFailureText(texts, "x", static_cast<ImportFailure>(9)).ends_with(texts.Load(1345)));
}

}  // namespace
}  // namespace orvalo
