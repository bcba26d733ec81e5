#pragma once
#include <cstdint>
#include <set>
#include <vector>

#include "gateway/engine_requests.h"
#include "store/records.h"

namespace orvalo {
class SmsDatabase;
}

namespace orvalo::cli {

// Messages that are being sent, and the messages made from them for their recipients. Reads the
// store when it is asked to; main thread.
class MessageFamily {
 public:
  MessageFamily(SmsDatabase& database, const std::vector<std::int32_t>& ids)
      : database_(database), heads_(ids.begin(), ids.end()), unsettled_(ids.size()) {}

  void Refresh();
  bool AllSettled() const { return unsettled_ == 0; }  // as of the last Refresh
  IdList Followed() const { return followed_; }

  // All of them as they are now, in order of their ids.
  std::vector<MessageRow> Rows();

 private:
  void LookAt(std::int32_t id);

  SmsDatabase& database_;
  const std::set<std::int32_t> heads_;
  std::set<std::int32_t> expanded_;    // heads whose members are known
  std::vector<std::int32_t> members_;  // of the expanded ones
  std::size_t unsettled_;
  IdList followed_;
};

}  // namespace orvalo::cli
