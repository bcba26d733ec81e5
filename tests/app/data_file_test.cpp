#include "app/data_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "app/data_file_format.h"
#include "support/temporary_folder.h"

namespace orvalo::test {
namespace {

using testing::ElementsAre;
using testing::Pair;
using testing::SizeIs;

std::string Repeat(std::string_view text, int times) {
  std::string result;
  for (int i = 0; i < times; ++i) result += text;
  return result;
}

// A file whose records need not be what the program would write.
std::string HandMadeFile(const std::vector<std::pair<std::string, std::string>>& records,
                         std::uint32_t added_to_length = 0) {
  std::string plain;
  for (const auto& [key, value] : records) {
    std::string header = key;
    header.resize(48, '\0');
    const auto length = static_cast<std::uint32_t>(value.size()) + added_to_length;
    for (int i = 0; i < 4; ++i) header += static_cast<char>(length >> (8 * i));
    plain += header + value;
  }
  DataScrambler scrambler;
  for (char& byte : plain) byte = static_cast<char>(scrambler.Next(byte));
  return "\xBE\xBA\xFE\xCA" + plain;
}

class DataFileTest : public testing::Test {
 protected:
  std::string Value(const DataFile& file, std::string_view key) {
    std::string value;
    file.GetString(key, &value, "(none)");
    return value;
  }

  TemporaryFolder folder_;
  const std::string path_ = folder_.File("SMS.dat");
};

TEST_F(DataFileTest, WritesTheBytesOfTheFormat) {
  DataFile file(path_, false);
  ASSERT_TRUE(file.Save());
  EXPECT_EQ(Slurp(path_), "\xBE\xBA\xFE\xCA");

  // Worked out by hand; the last two bytes are those on which the state is 255, then 5.
  file.SetString("WriteLog", "1");
  ASSERT_TRUE(file.Save());
  constexpr unsigned char kExpected[] = {
      0xBE, 0xBA, 0xFE, 0xCA, 0xCA, 0x6D, 0xA7, 0x0C, 0x4D, 0xED, 0x33, 0x91, 0xB5, 0x17, 0xD6,
      0x60, 0x20, 0xF9, 0x24, 0xBE, 0xCD, 0x6F, 0xBE, 0x08, 0x78, 0xD1, 0x0C, 0x86, 0xE5, 0x47,
      0x66, 0xD0, 0x90, 0x29, 0xF4, 0x6E, 0x3D, 0x9F, 0x4E, 0xF8, 0xA8, 0x01, 0xDC, 0x36, 0x55,
      0xF7, 0x36, 0x80, 0xC0, 0x59, 0x84, 0x1E, 0x6C, 0xCF, 0x1E, 0xA8, 0x28};
  EXPECT_EQ(Slurp(path_), std::string(std::begin(kExpected), std::end(kExpected)));
}

TEST_F(DataFileTest, EverythingSurvivesTheDisk) {
  const struct {
    std::string key, value, stored;
  } cases[] = {
      {"sender_id", "Orvalo", "Orvalo"},
      {"Sig", "two\r\nlines, é and €", "two\r\nlines, é and €"},
      {"größe", "umlaut key", "umlaut key"},
      {"Empty", "", "(none)"},
      {"Longest", std::string(2047, 'v'), std::string(2047, 'v')},
      {"TooLong", std::string(2048, 'v'), std::string(2047, 'v')},
      {"CutBetweenCharacters", Repeat("€", 700), Repeat("€", 682)},
      {"Nul", std::string("up to\0here", 10), "up to"},
      {std::string(47, 'k'), "longest key", "longest key"},
      {std::string(60, 'q'), "cut key", "cut key"},
  };
  {
    DataFile file(path_, true);
    for (const auto& test : cases) file.SetString(test.key, test.value);
    for (const auto& test : cases) EXPECT_EQ(Value(file, test.key), test.stored) << test.key;
  }
  DataFile file(path_, false);
  for (const auto& test : cases) EXPECT_EQ(Value(file, test.key), test.stored) << test.key;
  EXPECT_EQ(Value(file, "SENDER_id"), "Orvalo");
  EXPECT_EQ(Value(file, "GRÖSSE"), Value(file, "größe"));
}

TEST_F(DataFileTest, OfOneKeyTheFirstRecordAndTheLastSettingCount) {
  Spill(path_, HandMadeFile({{"sig", "first"}, {"Unknown", "x"}, {"SIG", "second"}}));
  const std::string before = Slurp(path_);
  {
    DataFile file(path_, false);
    EXPECT_EQ(Value(file, "Sig"), "first");
    file.SetString("Login", "not saved");
  }
  EXPECT_EQ(Slurp(path_), before);
  {
    DataFile file(path_, true);
    file.SetString("Login", "first");
    file.SetString("LOGIN", "second");
  }
  EXPECT_THAT(DecodeDataRecords(Slurp(path_)),
              ElementsAre(Pair("LOGIN", "second"), Pair("SIG", "first"), Pair("UNKNOWN", "x")));
}

TEST_F(DataFileTest, ReadsDamagedFilesAsFarAsTheyAreSound) {
  const std::vector<std::pair<std::string, std::string>> records = {
      {"A", "1"}, {"B", std::string(300, 'b')}, {"C", ""}};
  const std::string whole = HandMadeFile(records);
  const std::size_t ends[] = {4 + 52 + 1, 4 + 52 + 1 + 52 + 300, 4 + 52 + 1 + 52 + 300 + 52};
  ASSERT_EQ(whole.size(), ends[2]);
  for (std::size_t length = 0; length <= whole.size(); ++length) {
    const auto sound = std::count_if(std::begin(ends), std::end(ends),
                                     [=](std::size_t end) { return end <= length; });
    ASSERT_THAT(DecodeDataRecords(whole.substr(0, length)), SizeIs(sound)) << length;
  }

  const std::string beyond(3000, 'x');
  const std::string split = std::string(2046, 'x') + "€ and more";
  const struct {
    const char* what;
    std::string bytes;
    std::vector<DataRecord> expected;
  } cases[] = {
      {"foreign", "PK\3\4 something else, long enough to be a record or two, or three of them", {}},
      {"wrong magic", "\xCA\xFE\xBA\xBE" + whole.substr(4), {}},
      {"length of 4 GiB", HandMadeFile({{"A", "1"}}, 0xFFFFFFFE), {}},
      {"length one beyond the end", HandMadeFile({{"A", "1"}}, 1), {}},
      {"value too long",
       HandMadeFile({{"A", beyond}, {"B", "2"}}),
       {{"A", beyond.substr(0, 2047)}, {"B", "2"}}},
      {"cut before a character", HandMadeFile({{"A", split}}), {{"A", split.substr(0, 2046)}}},
      {"no NUL after the key",
       HandMadeFile({{std::string(48, 'k'), "1"}}),
       {{std::string(47, 'k'), "1"}}},
      {"NUL inside",
       HandMadeFile({{std::string("A\0B", 3), std::string("1\0002", 3)}}),
       {{"A", "1"}}},
  };
  for (const auto& test : cases) {
    EXPECT_EQ(DecodeDataRecords(test.bytes), test.expected) << test.what;
  }
}

// A folder and a link that leads nowhere cannot be read by anybody, not even by root.
TEST_F(DataFileTest, WhatCannotBeReadIsNeverReplaced) {
  std::filesystem::create_directory(folder_.File("empty"));
  std::filesystem::create_symlink(folder_.File("gone"), folder_.File("link"));
  for (const char* name : {"empty", "link"}) {
    {
      DataFile file(folder_.File(name), true);
      EXPECT_EQ(file.state(), DataFile::State::kUnreadable) << name;
      file.SetString("a", "1");
      EXPECT_FALSE(file.Save());
      EXPECT_FALSE(file.Error().detail.empty());
      EXPECT_EQ(Value(file, "a"), "1");
    }
    EXPECT_EQ(std::filesystem::is_symlink(folder_.File(name)), name == std::string("link"));
    EXPECT_FALSE(std::filesystem::is_regular_file(folder_.File(name)));
  }
}

TEST_F(DataFileTest, DamagedFilesAreKeptAsideBeforeTheyAreReplaced) {
  const std::string large = HandMadeFile(
      std::vector<std::pair<std::string, std::string>>(3000, {"Sig", std::string(2000, 's')}));
  ASSERT_GT(large.size(), 5u << 20);
  Spill(path_, large);
  EXPECT_EQ(DataFile(path_, false).state(), DataFile::State::kSound) << "as large as it is";

  const std::string whole = HandMadeFile({{"A", "1"}, {"B", "2"}});
  const std::pair<std::string, std::string> cases[] = {
      // the file, and what is read of A
      {"foreign", "(none)"},
      {whole.substr(0, whole.size() - 1), "1"},
      {"", "(none)"},
      {HandMadeFile({{"A", std::string(3000, 'x')}}), std::string(2047, 'x')},
  };
  std::string suffix = ".damaged";
  int number = 1;
  for (const auto& [bytes, value] : cases) {
    Spill(path_ + ".new", bytes);
    std::filesystem::rename(path_ + ".new", path_);
    DataFile file(path_, false);
    EXPECT_EQ(file.state(), DataFile::State::kDamaged);
    EXPECT_EQ(Value(file, "A"), value);
    EXPECT_EQ(file.KeepDamaged(), path_ + suffix);
    EXPECT_EQ(file.KeepDamaged(), path_ + suffix) << "once is enough";
    EXPECT_TRUE(file.Save());
    EXPECT_EQ(Slurp(path_ + suffix), bytes);
    EXPECT_EQ(DataFile(path_, false).state(), DataFile::State::kSound);
    suffix = ".damaged." + std::to_string(++number);
  }
}

}  // namespace
}  // namespace orvalo::test
