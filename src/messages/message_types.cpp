#include "messages/message_types.h"

#include "platform/code_page.h"
#include "store/message_type.h"

namespace orvalo {

namespace {

constexpr std::uint32_t kTypedInputs =
    kNameButton | kTitleButton | kSurnameButton | kCustomButton | kSignatureButton | kTextField;
constexpr std::uint32_t kFileInputs = kBrowseButton | kPathField;

}  // namespace

std::uint32_t ComposeInputsOf(std::int32_t type) {
  switch (static_cast<MessageType>(type)) {
    case MessageType::kText:
    case MessageType::kFlash:
    case MessageType::kUnicode:
      return kTypedInputs;
    case MessageType::kRingtone:
    case MessageType::kVCard:
    case MessageType::kVCal:
      return kFileInputs;
    case MessageType::kPictureMessage:
    case MessageType::kOperatorLogo:
      return kFileInputs | kPicturePreview;
    default:
      return 0;
  }
}

ImportFilter ImportFilterOf(std::int32_t type) {
  switch (static_cast<MessageType>(type)) {
    case MessageType::kRingtone:
      return {1327, 1328};
    case MessageType::kPictureMessage:
    case MessageType::kOperatorLogo:
      return {1329, 1330};
    default:
      return {1325, 1326};
  }
}

std::string LengthCounter(std::string_view text) {
  const auto length = static_cast<std::int64_t>(platform::CountCharacters(text));
  const std::int64_t messages = (length - 1) / static_cast<std::int64_t>(kMessageLength) + 1;
  return std::to_string(length) + " (" + std::to_string(messages) + ")";
}

std::string_view LimitText(std::string_view text, bool span_sms) {
  return span_sms ? text : platform::FirstCharacters(text, kMessageLength);
}

}  // namespace orvalo
