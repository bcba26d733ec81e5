#pragma once
#include <array>
#include <cstdint>
#include <string>

namespace orvalo {

class Texts;

// Kind of a message. Stored in the column Type; values never change.
enum class MessageType : std::int32_t {
  kText = 0,
  kFlash = 1,
  kUnicode = 2,
  kRingtone = 3,
  kPictureMessage = 4,
  kOperatorLogo = 5,
  kVCard = 6,
  kVCal = 7,
  kBinary = 8,
};
inline constexpr int kMessageTypeCount = 9;
inline constexpr int kFirstTypeNameId = 1312;  // string ids 1312 to 1320

// The message-type code that the gateway is given for a stored type: 0 for everything outside 0
// to 7.
std::int32_t GatewayTypeCode(std::int32_t type);

// Only type 2 is sent as Unicode.
inline bool IsUnicodeType(std::int32_t type) {
  return type == static_cast<std::int32_t>(MessageType::kUnicode);
}

// The type names shown to the operator; see SmsStatusNames.
class MessageTypeNames {
 public:
  MessageTypeNames();
  void LoadFrom(const Texts& texts);
  const std::string& Name(std::int32_t type) const;  // "?" outside 0 to 8

 private:
  std::array<std::string, kMessageTypeCount> names_;
};

}  // namespace orvalo
