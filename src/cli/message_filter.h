#pragma once
#include <cstdint>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "store/records.h"

namespace CLI {
class App;
}

namespace orvalo {
class MessageTexts;
class Program;

namespace platform {
class Clock;
}
}  // namespace orvalo

namespace orvalo::cli {

// A time as a person writes it: "2026-11-23", "2026-11-23 14:30" (":05" may follow, and "T" stand
// for the blank), "90m", "2h" or "3d" ago, or "@" and seconds since 1970. Its first second, or with
// `last` the last one that it stands for. Throws CommandError(kUsage) for anything else.
std::int64_t TimeOf(const std::string& text, bool last, const platform::Clock& clock);

// Which messages of the outbox are wanted.
class MessageFilter {
 public:
  void Define(CLI::App& app);
  // The messages in order of their ids; with a limit the newest of them. Ends when `visit` returns
  // false. Throws CommandError(kUsage) for an unknown status or time.
  void ForEach(Program& program, const std::function<bool(const MessageRow&)>& visit) const;

 private:
  bool IsTo(const MessageRow& row, const MessageTexts& texts, const std::string& prefix) const;

  std::vector<std::string> statuses_;
  std::string since_, until_, recipient_;
  std::size_t limit_ = 0;  // 0: none
};

}  // namespace orvalo::cli
