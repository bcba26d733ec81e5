#include "store/message_type.h"

#include "app/texts.h"

namespace orvalo {

std::int32_t GatewayTypeCode(std::int32_t type) {
  switch (static_cast<MessageType>(type)) {
    case MessageType::kFlash:
      return 1;
    case MessageType::kRingtone:
      return 6;
    case MessageType::kPictureMessage:
      return 5;
    case MessageType::kOperatorLogo:
      return 3;
    case MessageType::kVCard:
      return 8;
    case MessageType::kVCal:
      return 9;
    default:
      return 0;
  }
}

MessageTypeNames::MessageTypeNames()
    : names_{"Text",           "Flash",         "Unicode",
             "Nokia Ringtone", "Nokia Pic Msg", "Nokia Operator Logo",
             "Nokia vCard",    "Nokia vCal",    "Binary"} {}

void MessageTypeNames::LoadFrom(const Texts& texts) {
  for (int i = 0; i < kMessageTypeCount; ++i) names_[i] = texts.Load(kFirstTypeNameId + i);
}

const std::string& MessageTypeNames::Name(std::int32_t type) const {
  static const std::string unknown = "?";
  return type >= 0 && type < kMessageTypeCount ? names_[type] : unknown;
}

}  // namespace orvalo
