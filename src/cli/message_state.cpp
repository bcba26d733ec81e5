#include "cli/message_state.h"

namespace orvalo::cli {

bool IsFollowed(const MessageRow& row) {
  switch (static_cast<SmsStatus>(row.stat)) {
    case SmsStatus::kUnknown:
    case SmsStatus::kQueued:
    case SmsStatus::kDeliveredToGateway:
    case SmsStatus::kScheduledOnServer:
    case SmsStatus::kSent:
      return row.query_time > 0;
    default:
      return false;
  }
}

bool IsSettled(const MessageRow& row) {
  switch (static_cast<SmsStatus>(row.stat)) {
    case SmsStatus::kPending:
    case SmsStatus::kProcessing:
    case SmsStatus::kScheduled:
    case SmsStatus::kDelayScheduled:
      return false;
    default:
      return !IsFollowed(row);
  }
}

}  // namespace orvalo::cli
