#pragma once
#include <array>
#include <cstdint>
#include <string>

namespace orvalo {

class Texts;

// Status of a message. Stored in the columns Stat and SavedStat; values never change.
enum class SmsStatus : std::int32_t {
  kPending = 0,
  kQueued = 1,
  kFailed = 2,
  kSent = 3,
  kScheduled = 4,
  kEditing = 5,
  kDelayScheduled = 6,
  kScheduledOnServer = 7,
  kDeliveredToGateway = 8,
  kDelivered = 9,
  kProcessing = 10,
  kUnknown = 11,
  kExpanded = 12,
  kErrorWithMessage = 13,
  kCancelled = 14,
  kDeliveryError = 15,
  kRoutingError = 16,
  kMessageExpired = 17,
};
inline constexpr int kSmsStatusCount = 18;
inline constexpr int kFirstStatusNameId = 1216;         // string ids 1216 to 1233
inline constexpr int kFirstStatusDescriptionId = 1520;  // string ids 1520 to 1537

// The status names shown to the operator: built-in English ones until LoadFrom replaces them from
// the string table, once, at start-up, before other threads exist.
class SmsStatusNames {
 public:
  SmsStatusNames();
  void LoadFrom(const Texts& texts);
  // The name; "?" for a value outside 0 to 17 (a damaged row).
  const std::string& Name(std::int32_t status) const;

 private:
  std::array<std::string, kSmsStatusCount> names_;
};

}  // namespace orvalo
