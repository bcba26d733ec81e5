#include "gateway/recipients.h"

#include <algorithm>

#include "platform/number.h"
#include "store/sms_database.h"

namespace orvalo {

namespace {

constexpr std::size_t kMobileWidth = 16;

}  // namespace

std::string WithCountryPrefix(std::string_view number, std::string_view prefix) {
  if (prefix.empty() || !number.starts_with('0')) return std::string(number);
  const std::size_t digits = std::min(number.find_first_not_of('0'), number.size());
  return std::string(prefix).append(number.substr(digits));
}

std::vector<RecipientRecord> ExpandRecipients(std::string_view to, std::string_view prefix,
                                              SmsDatabase& database) {
  std::vector<RecipientRecord> records;
  if (to.starts_with(',')) to.remove_prefix(1);
  while (!to.empty()) {
    const std::string_view item = to.substr(0, to.find(','));
    to.remove_prefix(std::min(item.size() + 1, to.size()));
    if (item.empty()) continue;

    RecipientRecord record;
    std::string number(platform::FirstBytes(item, kMobileWidth));
    if (item.starts_with('A')) {
      record.contact_id = platform::ParseInteger(item.substr(1));
      const auto mobile = database.GetContactMobile(record.contact_id);
      if (!mobile) continue;
      number = platform::FirstBytes(*mobile, kMobileWidth);
    }
    record.number = WithCountryPrefix(number, prefix);
    record.entry = item;
    records.push_back(record);
  }
  return records;
}

}  // namespace orvalo
