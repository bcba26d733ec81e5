#include "platform/vcard.h"

#include <algorithm>
#include <utility>

#include "platform/collation.h"
#include "platform/config_lines.h"
#include "platform/vcard_lines.h"
#include "platform/vcard_text.h"

namespace orvalo::platform {
namespace {

constexpr std::size_t kMostNumbers = 100;  // of one card
constexpr std::size_t kMostCards = 200'000;

enum class Field {
  kNone,
  kBegin,
  kEnd,
  kCardVersion,
  kFullName,
  kName,
  kOrganization,
  kNickname,
  kTelephone,
  kEmail,
  kUid,
  kKind,
  kMember,
  kLabel,
  kAgent
};

Field FieldOf(std::string_view name) {
  constexpr std::pair<std::string_view, Field> kFields[] = {
      {"BEGIN", Field::kBegin},
      {"END", Field::kEnd},
      {"VERSION", Field::kCardVersion},
      {"FN", Field::kFullName},
      {"N", Field::kName},
      {"ORG", Field::kOrganization},
      {"NICKNAME", Field::kNickname},
      {"TEL", Field::kTelephone},
      {"EMAIL", Field::kEmail},
      {"UID", Field::kUid},
      {"KIND", Field::kKind},
      {"X-ADDRESSBOOKSERVER-KIND", Field::kKind},
      {"MEMBER", Field::kMember},
      {"X-ADDRESSBOOKSERVER-MEMBER", Field::kMember},
      {"X-ABLABEL", Field::kLabel},
      {"AGENT", Field::kAgent},
  };
  for (const auto& [known, field] : kFields)
    if (EqualNoCaseAscii(name, known)) return field;
  return Field::kNone;
}

bool IsWanted(std::string_view name) { return FieldOf(name) != Field::kNone; }

// The value in UTF-8, its escapes still in place. Empty for one that is written in base64: no text
// of ours is.
std::string TextOfProperty(const VcardProperty& property) {
  const std::string encoding = property.Parameter("ENCODING");
  if (EqualNoCaseAscii(encoding, "BASE64") || EqualNoCaseAscii(encoding, "B")) return {};
  const bool quoted = EqualNoCaseAscii(encoding, "QUOTED-PRINTABLE");
  return ToUtf8(quoted ? DecodeQuotedPrintable(property.value) : property.value,
                property.Parameter("CHARSET"));
}

bool StartsWithNoCase(std::string_view text, std::string_view start) {
  return EqualNoCaseAscii(text.substr(0, start.size()), start);
}

// Labels that people's own telephones give to the number of a mobile one.
bool IsMobileLabel(const std::string& label) {
  const std::string lower = ToLower(label);
  return lower.find("mobile") != std::string::npos || lower.find("cell") != std::string::npos ||
         lower.find("iphone") != std::string::npos;
}

// Puts the lines of one card together.
class CardBuilder {
 public:
  void Take(Field field, const VcardProperty& property) {
    switch (field) {
      case Field::kFullName:
        return Keep(&full_name_, UnescapeVcardValue(TextOfProperty(property)));
      case Field::kName:
        return Keep(&structured_name_, StructuredName(TextOfProperty(property)));
      case Field::kOrganization:
        return Keep(&organization_, SplitVcardValue(TextOfProperty(property), ';').front());
      case Field::kNickname:
        return Keep(&nickname_, SplitVcardValue(TextOfProperty(property), ',').front());
      case Field::kTelephone:
        return TakeNumber(property);
      case Field::kEmail:
        return card_.emails.push_back(
            ToLower(WithoutBlanks(UnescapeVcardValue(TextOfProperty(property)))));
      case Field::kUid:
        return Keep(&card_.uid, NormalUid(TextOfProperty(property)));
      case Field::kKind:
        card_.is_group = EqualNoCaseAscii(WithoutBlanks(property.value), "group");
        return;
      case Field::kMember:
        return card_.members.push_back(TextOfProperty(property));
      case Field::kLabel:
        if (!property.group.empty() && IsMobileLabel(TextOfProperty(property)))
          mobile_groups_.push_back(property.group);
        return;
      default:
        return;
    }
  }

  Vcard Finish() {
    for (const std::string* name : {&full_name_, &structured_name_, &organization_, &nickname_})
      Keep(&card_.name, *name);
    if (!card_.emails.empty()) Keep(&card_.name, card_.emails.front());
    for (const Number& number : numbers_) {
      const bool labelled = std::any_of(
          mobile_groups_.begin(), mobile_groups_.end(),
          [&](const std::string& group) { return EqualNoCaseAscii(group, number.group); });
      if (number.is_cell || labelled) Keep(&card_.mobile, number.text);
    }
    return std::move(card_);
  }

 private:
  struct Number {
    std::string group, text;
    bool is_cell = false;
  };

  // The first value that says something counts.
  static void Keep(std::string* place, std::string value) {
    if (place->empty() && !WithoutBlanks(value).empty()) *place = std::move(value);
  }

  // "Family;Given;Additional;Prefix;Suffix"
  static std::string StructuredName(const std::string& text) {
    const std::vector<std::string> parts = SplitVcardValue(text, ';');
    const std::string& family = parts.front();
    const std::string given = parts.size() > 1 ? parts[1] : "";
    return given.empty() || family.empty() ? given + family : given + " " + family;
  }

  void TakeNumber(const VcardProperty& property) {
    if (numbers_.size() >= kMostNumbers) return;
    numbers_.push_back(
        {property.group, NumberOf(TextOfProperty(property)),
         property.HasType("cell") || property.HasType("mobile") || property.HasType("iphone")});
  }

  Vcard card_;
  std::string full_name_, structured_name_, organization_, nickname_;
  std::vector<Number> numbers_;
  std::vector<std::string> mobile_groups_;
};

}  // namespace

std::vector<Vcard> ParseVcards(std::string bytes) {
  const std::string text = VcardFileText(std::move(bytes));
  VcardLines lines(text);
  std::vector<Vcard> cards;
  CardBuilder builder;
  VcardProperty property;
  bool inside = false, after_agent = false;
  int agents = 0;  // cards within the card: those of the person's agent
  const auto finish = [&] {
    if (inside) cards.push_back(std::exchange(builder, CardBuilder()).Finish());
    inside = false;
    lines.KeepFoldBlanks(false);
  };
  while (cards.size() < kMostCards && lines.Next(&IsWanted, &property)) {
    const Field field = FieldOf(property.name);
    const bool is_card = EqualNoCaseAscii(WithoutBlanks(property.value), "VCARD");
    if (field == Field::kBegin && is_card) {
      if (inside && after_agent) {
        ++agents;
      } else {  // also when the card before breaks off
        finish();
        agents = 0;
        inside = true;
      }
    } else if (field == Field::kEnd && is_card) {
      if (agents > 0) {
        --agents;
      } else {
        finish();
      }
    } else if (inside && agents == 0) {
      if (field == Field::kCardVersion)
        lines.KeepFoldBlanks(WithoutBlanks(property.value).starts_with("2"));
      builder.Take(field, property);
    }
    after_agent = field == Field::kAgent;
  }
  finish();
  return cards;
}

std::string NormalUid(const std::string& text) {
  constexpr std::string_view kScheme = "urn:uuid:";
  std::string_view uid = WithoutBlanks(text);
  if (StartsWithNoCase(uid, kScheme)) uid.remove_prefix(kScheme.size());
  return ToLower(uid);
}

std::string NumberOf(const std::string& value) {
  std::string_view number = WithoutBlanks(value);
  std::string decoded;
  const bool is_address = StartsWithNoCase(number, "tel:") || StartsWithNoCase(number, "sms:");
  if (is_address) {
    decoded = DecodePercent(number.substr(4));
    number = decoded;
  }
  const auto first_digit = std::min(number.find_first_of("0123456789"), number.size());
  const auto end = number.find_first_of(is_address ? ";,?pPwWxX" : ";,pPwWxX", first_digit);
  return std::string(number.substr(0, end));
}

}  // namespace orvalo::platform
