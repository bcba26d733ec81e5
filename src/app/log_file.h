#pragma once
#include <cstddef>
#include <mutex>
#include <string>

#include "platform/clock.h"

namespace orvalo {

class AppSettings;

// Where log lines go. Callers ask Enabled() before they format anything, and never log a secret.
class Log {
 public:
  virtual ~Log() = default;
  virtual bool Enabled() const = 0;  // the setting WriteLog
  // One line from a printf format; at most 1024 bytes of message, cut at a character. Allocates
  // nothing. Any thread.
  void Write(const char* format, ...) __attribute__((format(printf, 2, 3)));

 protected:
  virtual void WriteLine(const char* message, std::size_t length) = 0;
};

// The log file "SMS.log": opened, appended to and closed for every line, so that others can read it
// at any time and a killed program loses none. A line is
//   MM/DD/YYYY hh:mm:ss (thread id in hexadecimal)   message CR LF
// in local time. Past 1 MiB the file is renamed with a date and time stamp
// ("SMS.log.YYYYMMDD.hhmm.log") and a new one begins; a name that is taken is never overwritten,
// the file then grows until the next minute. Owned by start-up, after the settings and before
// whoever logs; failures are silent. Writers of one process are serialised.
class LogFile : public Log {
 public:
  LogFile(std::string path, const AppSettings& settings,
          const platform::Clock& clock);  // writes the start header
  ~LogFile() override;
  LogFile(const LogFile&) = delete;
  LogFile& operator=(const LogFile&) = delete;

  bool Enabled() const override;

 protected:
  void WriteLine(const char* message, std::size_t length) override;

 private:
  void RotateIfLarge(const platform::LocalTime& now);

  std::mutex write_lock_;
  std::string path_;
  const AppSettings& settings_;
  const platform::Clock& clock_;
};

}  // namespace orvalo
