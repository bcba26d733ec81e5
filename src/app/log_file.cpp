#include "app/log_file.h"

#include <array>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <optional>
#include <string_view>
#include <utility>

#include "app/settings.h"
#include "platform/code_page.h"
#include "platform/file.h"
#include "platform/thread_id.h"

namespace orvalo {
namespace {

constexpr std::size_t kLongestMessage = 1024;  // bytes
constexpr std::uint64_t kLargestLogFile = 0x100000;
constexpr std::size_t kLongestPrefix = 96;
constexpr std::string_view kLineEnd = "\r\n";

// The day and time as asctime writes them, whatever the user's language is.
std::string StartHeader(const platform::LocalTime& now) {
  constexpr std::array kWeekdays = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
  constexpr std::array kMonths = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                  "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
  std::array<char, 128> header{};
  std::snprintf(header.data(), header.size(), "Started @ %s %s %2d %02d:%02d:%02d %d\r\n------\r\n",
                kWeekdays.at(static_cast<std::size_t>(now.weekday)),
                kMonths.at(static_cast<std::size_t>(now.month - 1)), now.day, now.hour, now.minute,
                now.second, now.year);
  return header.data();
}

}  // namespace

void Log::Write(const char* format, ...) {
  // Room for the rest of a character that begins within the limit, so that it is seen as cut.
  std::array<char, kLongestMessage + 4> buffer;
  va_list arguments;
  va_start(arguments, format);
  const int length = std::vsnprintf(buffer.data(), buffer.size(), format, arguments);
  va_end(arguments);
  if (length < 0) return;
  const std::string_view message(buffer.data(), std::strlen(buffer.data()));
  WriteLine(message.data(), platform::FirstBytes(message, kLongestMessage).size());
}

LogFile::LogFile(std::string path, const AppSettings& settings, const platform::Clock& clock)
    : path_(std::move(path)), settings_(settings), clock_(clock) {
  platform::AppendToFile(path_, StartHeader(clock_.ToLocal(clock_.Now())));
}

LogFile::~LogFile() = default;

bool LogFile::Enabled() const { return settings_.Flag(FlagSetting::kWriteLog); }

void LogFile::WriteLine(const char* message, std::size_t length) {
  const std::lock_guard lock(write_lock_);
  const platform::LocalTime now = clock_.ToLocal(clock_.Now());
  std::array<char, kLongestPrefix + kLongestMessage + kLineEnd.size()> line;
  const auto prefix = static_cast<std::size_t>(
      std::snprintf(line.data(), kLongestPrefix, "%02d/%02d/%02d %02d:%02d:%02d (%x)   ", now.month,
                    now.day, now.year, now.hour, now.minute, now.second,
                    static_cast<unsigned>(platform::CurrentThreadId())));
  std::memcpy(line.data() + prefix, message, length);
  std::memcpy(line.data() + prefix + length, kLineEnd.data(), kLineEnd.size());
  platform::AppendToFile(path_, {line.data(), prefix + length + kLineEnd.size()});
  RotateIfLarge(now);
}

void LogFile::RotateIfLarge(const platform::LocalTime& now) {
  const std::optional<std::uint64_t> size = platform::FileSize(path_);
  if (!size || *size <= kLargestLogFile) return;
  std::array<char, 64> stamp;
  std::snprintf(stamp.data(), stamp.size(), ".%04d%02d%02d.%02d%02d.log", now.year, now.month,
                now.day, now.hour, now.minute);
  // Not over the log of an earlier rotation in the same minute: the file then grows on.
  platform::RenameToNew(path_, path_ + stamp.data());
}

}  // namespace orvalo
