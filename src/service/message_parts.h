#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvalo::service {

// How the user data of a short message is written. The numbers are those of the engine's parameter
// "coding".
enum class Alphabet : int { kGsm = 0, kBinary = 1, kUcs2 = 2 };

// A message as short messages carry it (GSM 03.40, 9.2.3.24): each part has 140 octets of user
// data, less the user-data header, which begins with its own length.
struct PartedMessage {
  struct Part {
    std::string header;  // with its length octet; empty: none
    std::string body;    // UTF-8 for kGsm, UTF-16BE for kUcs2, octets for kBinary
  };
  Alphabet alphabet = Alphabet::kGsm;
  int message_class = -1;  // 0 is flash; -1: none
  std::vector<Part> parts;
};

// What the splitting of a message depends on. `type` is the protocol's; `reference` ties the parts
// of one message together on the phone.
struct PartingRules {
  int type = 0;
  bool unicode = false;
  std::uint8_t reference = 0;
};

// `text` as it travels in the protocol: UTF-8, or hexadecimal digits for the binary types. Text
// goes in the GSM alphabet unless it is asked in Unicode or holds a character that this alphabet
// lacks; then in UCS-2. A character, a surrogate pair or an escape is never cut in two. At least
// one part; more than 255 cannot be numbered, and give nothing.
//
// The binary types go to the port of the phone's application for them: operator logo 5506, picture
// 5514, ringtone 5505, vCard 9204, vCalendar 9205, with message class 1.
std::optional<PartedMessage> SplitMessage(std::string_view text, const PartingRules& rules);

}  // namespace orvalo::service
