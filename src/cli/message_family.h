#pragma once
#include <cstdint>
#include <vector>

#include "gateway/engine_requests.h"
#include "store/records.h"

namespace orvalo {
class SmsDatabase;
}

namespace orvalo::cli {

// A message that is being sent, and the messages made from it for its recipients. Reads the store
// when it is asked to; main thread.
class MessageFamily {
 public:
  MessageFamily(SmsDatabase& database, std::int32_t id) : database_(database), id_(id) {}

  void Refresh();
  bool AllSettled() const { return unsettled_ == 0; }  // as of the last Refresh
  IdList Followed() const { return followed_; }

  // All of them as they are now, in order of their ids.
  std::vector<MessageRow> Rows();

 private:
  SmsDatabase& database_;
  std::int32_t id_;
  std::vector<std::int32_t> members_;  // once the message has been expanded
  std::int32_t unsettled_ = 1;
  IdList followed_;
};

}  // namespace orvalo::cli
