#include "service/gsm_alphabet.h"

#include <algorithm>
#include <array>
#include <unordered_map>

#include "platform/code_page.h"

namespace orvalo::service {
namespace {

// By code; the escape's own place is never a character.
constexpr std::u16string_view kDefaultTable =
    u"@£$¥èéùìòÇ\nØø\rÅåΔ_ΦΓΛΩΠΨΣΘΞ\uFFFFÆæßÉ !\"#¤%&'()*+,-./0123456789:;<=>?"
    u"¡ABCDEFGHIJKLMNOPQRSTUVWXYZÄÖÑÜ§¿abcdefghijklmnopqrstuvwxyzäöñüà";
static_assert(kDefaultTable.size() == 128);

struct ExtendedCharacter {
  char16_t character;
  char code;
};

constexpr std::array kExtension{ExtendedCharacter{u'\f', 0x0A}, ExtendedCharacter{u'^', 0x14},
                                ExtendedCharacter{u'{', 0x28},  ExtendedCharacter{u'}', 0x29},
                                ExtendedCharacter{u'\\', 0x2F}, ExtendedCharacter{u'[', 0x3C},
                                ExtendedCharacter{u'~', 0x3D},  ExtendedCharacter{u']', 0x3E},
                                ExtendedCharacter{u'|', 0x40},  ExtendedCharacter{u'€', 0x65}};

const std::unordered_map<char16_t, std::string>& Codes() {
  static const auto codes = [] {
    std::unordered_map<char16_t, std::string> all;
    for (std::size_t code = 0; code < kDefaultTable.size(); ++code) {
      if (code != kGsmEscape) all[kDefaultTable[code]] = static_cast<char>(code);
    }
    for (const auto& [character, code] : kExtension) all[character] = {kGsmEscape, code};
    return all;
  }();
  return codes;
}

}  // namespace

std::optional<std::string> ToGsm(std::string_view text) {
  const auto& codes = Codes();
  std::string septets;
  septets.reserve(text.size());
  for (const auto unit : platform::ToWide(text)) {
    const auto place = codes.find(unit);
    if (place == codes.end()) return std::nullopt;
    septets += place->second;
  }
  return septets;
}

std::string FromGsm(std::string_view septets) {
  std::u16string text;
  text.reserve(septets.size());
  for (std::size_t i = 0; i < septets.size(); ++i) {
    if (septets[i] != kGsmEscape || i + 1 == septets.size()) {
      text += kDefaultTable[static_cast<unsigned char>(septets[i]) & 0x7F];
      continue;
    }
    const auto* const place =
        std::find_if(kExtension.begin(), kExtension.end(),
                     [code = septets[++i]](const auto& entry) { return entry.code == code; });
    if (place != kExtension.end()) text += place->character;
  }
  return platform::FromWide(text);
}

}  // namespace orvalo::service
