#pragma once
#include <cstdint>
#include <map>
#include <vector>

#include "store/records.h"

namespace orvalo {
class SmsDatabase;
}

namespace orvalo::cli {

// Finds the messages that the engine has moved on. Remembers only those that are still under way;
// main thread.
class ChangeReport {
 public:
  explicit ChangeReport(SmsDatabase& database);  // begins with the store as it is

  // Messages that are new or of another status since the last call, in order of their ids.
  std::vector<MessageRow> Changes();

 private:
  SmsDatabase& database_;
  std::map<std::int32_t, std::int32_t> under_way_;  // id to status
  std::int32_t highest_id_ = 0;
};

}  // namespace orvalo::cli
