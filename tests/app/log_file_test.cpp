#include "app/log_file.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <set>
#include <sstream>
#include <thread>

#include "app/settings.h"
#include "platform/thread_id.h"
#include "support/fake_clock.h"
#include "support/temporary_folder.h"

namespace orvalo::test {
namespace {

constexpr std::int64_t kMorning = 1'044'263'107;  // 3 February 2003, 09:05:07
constexpr std::size_t kLimit = 1'048'576;
const std::string kHeader = "Started @ Mon Feb  3 09:05:07 2003\r\n------\r\n";

class LogFileTest : public testing::Test {
 protected:
  // What follows the first header.
  std::string AfterHeader() { return Slurp(path_).substr(kHeader.size()); }

  // With which a line of the calling thread begins in that minute.
  static std::string Prefix() {
    std::ostringstream prefix;
    prefix << "02/03/2003 09:05:07 (" << std::hex << platform::CurrentThreadId() << ")   ";
    return prefix.str();
  }

  // The message of the only line of a fresh log.
  std::string Logged(const std::string& message) {
    std::filesystem::remove(path_);
    LogFile log(path_, settings_, clock_);
    log.Write("%s", message.c_str());
    const std::string line = AfterHeader();
    return line.substr(Prefix().size(), line.size() - Prefix().size() - 2);
  }

  TemporaryFolder folder_;
  const std::string path_ = folder_.File("SMS.log");
  AppSettings settings_;
  FakeClock clock_{kMorning};
};

TEST_F(LogFileTest, HeadersAndLinesAreAppended) {
  { LogFile log(path_, settings_, clock_); }
  EXPECT_EQ(Slurp(path_), kHeader);
  LogFile log(path_, settings_, clock_);
  log.Write("Added SMS: SMS_ID (%d) Mobile:%s Msg:%s\n", 12, "+4479", "100% é");
  log.Write("again");
  std::string expected = kHeader + Prefix() +
                         "Added SMS: SMS_ID (12) Mobile:+4479 Msg:100% é\n\r\n" + Prefix() +
                         "again\r\n";
  EXPECT_EQ(AfterHeader(), expected);
  std::thread([&] {
    log.Write("elsewhere");
    expected += Prefix() + "elsewhere\r\n";
  }).join();
  EXPECT_EQ(AfterHeader(), expected);
}

TEST_F(LogFileTest, AMessageIsCutAt1024BytesBetweenCharacters) {
  const std::string full(1024, 'm');
  const std::string almost(1022, 'm');
  EXPECT_EQ(Logged(""), "");
  EXPECT_EQ(Logged(full), full);
  EXPECT_EQ(Logged(full + "m"), full);
  EXPECT_EQ(Logged(std::string(100'000, 'm')), full);
  EXPECT_EQ(Logged(almost + "é and more"), almost + "é");
  EXPECT_EQ(Logged(almost + "€ and more"), almost);
  EXPECT_EQ(Logged(almost + "€"), almost);
  EXPECT_EQ(Logged(almost + "😀"), almost);
}

TEST_F(LogFileTest, RotatesPastTheLimitAndNeverOverAnotherLog) {
  LogFile log(path_, settings_, clock_);
  log.Write("probe");
  const std::size_t line = AfterHeader().size();
  const std::string rotated = path_ + ".20030203.0905.log";

  Spill(path_, std::string(kLimit - line, 'x'));
  log.Write("probe");
  EXPECT_EQ(std::filesystem::file_size(path_), kLimit);
  EXPECT_FALSE(std::filesystem::exists(rotated));

  log.Write("probe");
  EXPECT_FALSE(std::filesystem::exists(path_));
  EXPECT_EQ(std::filesystem::file_size(rotated), kLimit + line);

  // A second log fills within the same minute.
  Spill(path_, std::string(kLimit, 'y'));
  log.Write("probe");
  log.Write("probe");
  EXPECT_EQ(std::filesystem::file_size(path_), kLimit + 2 * line);
  EXPECT_EQ(std::filesystem::file_size(rotated), kLimit + line);

  clock_.Advance(60'000);
  log.Write("probe");
  EXPECT_FALSE(std::filesystem::exists(path_));
  EXPECT_EQ(std::filesystem::file_size(path_ + ".20030203.0906.log"), kLimit + 3 * line);
}

TEST_F(LogFileTest, FailuresAreSilent) {
  Spill(folder_.File("file"), "no folder");
  LogFile log(folder_.File("file/SMS.log"), settings_, clock_);
  log.Write("lost");
  EXPECT_FALSE(log.Enabled());
  settings_.SetFlag(FlagSetting::kWriteLog, true);
  EXPECT_TRUE(log.Enabled());
}

TEST_F(LogFileTest, LinesOfSeveralThreadsStayWhole) {
  LogFile log(path_, settings_, clock_);
  const auto write = [&](std::set<std::string>* lines) {
    for (int i = 0; i < 100; ++i) {
      log.Write("line %d", i);
      lines->insert(Prefix() + "line " + std::to_string(i) + "\r");
    }
  };
  std::set<std::string> written;
  std::set<std::string> by_other;
  std::thread other(write, &by_other);
  write(&written);
  other.join();
  written.merge(by_other);
  ASSERT_EQ(written.size(), 200u);
  std::istringstream text(AfterHeader());
  for (std::string line; std::getline(text, line);) EXPECT_EQ(written.erase(line), 1u) << line;
  EXPECT_TRUE(written.empty());
}

}  // namespace
}  // namespace orvalo::test
