#include "store/sms_status.h"

#include "app/texts.h"

namespace orvalo {

SmsStatusNames::SmsStatusNames()
    : names_{"Pending",
             "Queued",
             "Failed",
             "Sent",
             "Scheduled",
             "Editing",
             "Delay Scheduled",
             "Scheduled on Server",
             "Delivered to Gateway",
             "Delivered",
             "Processing",
             "Unknown",
             "Expanded",
             "Error with message",
             "Cancelled",
             "Delivery Error",
             "Routing error",
             "Message expired"} {}

void SmsStatusNames::LoadFrom(const Texts& texts) {
  for (int i = 0; i < kSmsStatusCount; ++i) names_[i] = texts.Load(kFirstStatusNameId + i);
}

const std::string& SmsStatusNames::Name(std::int32_t status) const {
  static const std::string unknown = "?";
  return status >= 0 && status < kSmsStatusCount ? names_[status] : unknown;
}

}  // namespace orvalo
