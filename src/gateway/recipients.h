#pragma once
#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/code_page.h"

namespace orvalo {

class SmsDatabase;

// A text of at most N bytes inside a fixed-width record: longer ones are cut, never inside a
// character.
template <std::size_t N>
class FixedText {
 public:
  FixedText() = default;
  FixedText& operator=(std::string_view text) {
    const std::string_view kept = platform::FirstBytes(text, N);
    kept.copy(bytes_.data(), kept.size());
    size_ = static_cast<unsigned char>(kept.size());
    return *this;
  }
  std::string_view view() const { return {bytes_.data(), size_}; }
  bool empty() const { return size_ == 0; }

 private:
  static_assert(N < 256);
  std::array<char, N> bytes_{};
  unsigned char size_ = 0;
};

inline constexpr std::int32_t kTypedNumber = -1;    // contact id of a number written directly
inline constexpr std::int32_t kFromBatchReply = 0;  // contact id in records made from a batch reply

// One recipient of the message in hand, as the send pass carries it from the recipient string to
// its outcome. Copied whole between the lists; the widths are those of the record.
struct RecipientRecord {
  std::int32_t contact_id = kTypedNumber;
  FixedText<28> number;      // where the message goes, country prefix applied
  FixedText<18> entry;       // the item as written in the recipient string
  FixedText<38> gateway_id;  // text for the column ApiMsgID
};

// Splits a recipient string (",111,A12": numbers and contacts) into one record for each recipient,
// in order. Contacts that do not exist are left out. A number that begins with "0" gets `prefix` in
// place of its zeros when there is one.
std::vector<RecipientRecord> ExpandRecipients(std::string_view to, std::string_view prefix,
                                              SmsDatabase& database);

// The number as it goes to the gateway: when it begins with "0" and there is a prefix, the prefix
// in place of its leading zeros.
std::string WithCountryPrefix(std::string_view number, std::string_view prefix);

}  // namespace orvalo
