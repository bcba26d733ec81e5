#pragma once
#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace orvalo {

class Texts;

// Inputs of the compose page, as bits of a type's control mask.
enum ComposeInput : std::uint32_t {
  kNameButton = 1,
  kTitleButton = 2,
  kSurnameButton = 4,
  kCustomButton = 8,
  kSignatureButton = 16,
  kTextField = 32,
  kBrowseButton = 64,
  kPathField = 128,
  kPicturePreview = 256,
};

// Types offered for a new message, in the order of the list.
inline constexpr std::array<std::int32_t, 5> kComposeTypes{0, 1, 2, 6, 7};

// The inputs shown and enabled for a stored type; 0 for binary messages and unknown types.
std::uint32_t ComposeInputsOf(std::int32_t type);

// The content of types 3 to 7 is a file's bytes, imported as hexadecimal.
constexpr bool IsFileType(std::int32_t type) { return type >= 3 && type <= 7; }

// String ids of the open-file dialog of a type: its default pattern and its filter list. Types
// without an import of their own have the text-file filter.
struct ImportFilter {
  int default_id = 1325;
  int filter_id = 1326;
};
ImportFilter ImportFilterOf(std::int32_t type);

// Characters of one message; the counter uses it for every type.
inline constexpr std::size_t kMessageLength = 160;
inline constexpr std::size_t kFirstTextLimit =
    2048;  // of the text field before it first has the focus

// The counter beside the text: "<characters> (<messages>)", an empty text counting as one message.
std::string LengthCounter(std::string_view text);

// The text as the text field keeps it when it gets the focus: cut to one message unless messages
// may span several.
std::string_view LimitText(std::string_view text, bool span_sms);

}  // namespace orvalo
