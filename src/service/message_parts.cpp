#include "service/message_parts.h"

#include <algorithm>
#include <array>

#include "platform/code_page.h"
#include "service/gsm_alphabet.h"
#include "service/message_request.h"
#include "service/secrets.h"

namespace orvalo::service {
namespace {

constexpr std::size_t kOctets = 140, kMostParts = 255;
constexpr std::size_t kConcatenationElement = 5;  // identifier, length, and three octets

struct PortOfType {
  int type;
  std::uint16_t port;
};

constexpr std::array kPorts{PortOfType{3, 5506}, PortOfType{5, 5514}, PortOfType{6, 5505},
                            PortOfType{8, 9204}, PortOfType{9, 9205}};

// The information element that addresses an application's port; empty for types that have none.
std::string PortElement(int type) {
  const auto* const place = std::find_if(kPorts.begin(), kPorts.end(),
                                         [&](const auto& entry) { return entry.type == type; });
  if (place == kPorts.end()) return "";
  return {0x05, 0x04, static_cast<char>(place->port >> 8), static_cast<char>(place->port), 0, 0};
}

// The units of a text that one part carries: septets, octets or code units.
std::size_t Room(Alphabet alphabet, std::size_t header) {
  const auto octets = kOctets - header;
  switch (alphabet) {
    case Alphabet::kGsm:
      return octets * 8 / 7;
    case Alphabet::kUcs2:
      return octets / 2;
    case Alphabet::kBinary:
      break;
  }
  return octets;
}

bool IsFirstHalf(char16_t unit) { return unit >= 0xD800 && unit <= 0xDBFF; }
bool IsFirstHalf(char unit) { return unit == kGsmEscape; }

// Pieces of at most `room` units; with `whole` no piece ends in the first half of a character.
template <class Text>
std::vector<Text> Pieces(const Text& text, std::size_t room, bool whole) {
  std::vector<Text> pieces;
  pieces.reserve(text.size() / room + 1);
  for (std::size_t at = 0; at < text.size();) {
    auto length = std::min(room, text.size() - at);
    if (whole && at + length < text.size() && IsFirstHalf(text[at + length - 1])) --length;
    pieces.push_back(text.substr(at, length));
    at += length;
  }
  if (pieces.empty()) pieces.emplace_back();
  return pieces;
}

std::string Octets(const std::string& text) { return text; }
std::string Octets(const std::u16string& text) {
  std::string octets;
  octets.reserve(text.size() * 2);
  for (const auto unit : text) {
    octets += static_cast<char>(unit >> 8);
    octets += static_cast<char>(unit);
  }
  return octets;
}

// Cuts the text into parts and gives each its header.
template <class Text>
bool Split(const Text& text, const PartingRules& rules, PartedMessage& message) {
  const auto port = PortElement(rules.type);
  const auto alphabet = message.alphabet;
  const bool whole = alphabet != Alphabet::kBinary;
  const auto single = port.empty() ? 0 : port.size() + 1;
  auto pieces = Pieces(text, Room(alphabet, single), whole);
  if (pieces.size() > 1) {
    pieces = Pieces(text, Room(alphabet, 1 + kConcatenationElement + port.size()), whole);
  }
  if (pieces.size() > kMostParts) return false;
  message.parts.reserve(pieces.size());
  for (std::size_t i = 0; i < pieces.size(); ++i) {
    std::string elements = port;
    if (pieces.size() > 1) {
      elements += {0x00, 0x03, static_cast<char>(rules.reference), static_cast<char>(pieces.size()),
                   static_cast<char>(i + 1)};
    }
    PartedMessage::Part part;
    if (!elements.empty()) part.header = static_cast<char>(elements.size()) + elements;
    part.body = Octets(pieces[i]);
    if (alphabet == Alphabet::kGsm) part.body = FromGsm(part.body);
    message.parts.push_back(std::move(part));
  }
  return true;
}

}  // namespace

std::optional<PartedMessage> SplitMessage(std::string_view text, const PartingRules& rules) {
  PartedMessage message;
  bool fits = false;
  if (IsBinaryType(rules.type)) {
    message.alphabet = Alphabet::kBinary;
    message.message_class = 1;
    fits = Split(FromHex(text), rules, message);
  } else {
    if (rules.type == 1) message.message_class = 0;
    const auto septets = rules.unicode ? std::nullopt : ToGsm(text);
    message.alphabet = septets ? Alphabet::kGsm : Alphabet::kUcs2;
    fits =
        septets ? Split(*septets, rules, message) : Split(platform::ToWide(text), rules, message);
  }
  if (!fits) return std::nullopt;
  return message;
}

}  // namespace orvalo::service
