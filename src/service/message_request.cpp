#include "service/message_request.h"

#include <algorithm>
#include <array>

#include "platform/code_page.h"
#include "service/secrets.h"

namespace orvalo::service {
namespace {

using nlohmann::json;

constexpr int kDeepest = 8;
constexpr std::int64_t kMostConcat = 255, kMostMinutes = 10'080;
constexpr std::size_t kMostNumbers = 1000, kLongestSender = 64, kLongestNumberText = 100;

// Looks at brackets only, outside strings; whether the rest is JSON is the parser's business.
bool IsShallow(std::string_view body) {
  int depth = 0;
  bool quoted = false;
  for (std::size_t i = 0; i < body.size(); ++i) {
    const char character = body[i];
    if (quoted) {
      if (character == '\\') ++i;
      if (character == '"') quoted = false;
    } else if (character == '"') {
      quoted = true;
    } else if (character == '{' || character == '[') {
      if (++depth > kDeepest) return false;
    } else if (character == '}' || character == ']') {
      --depth;
    }
  }
  return true;
}

// A whole number in [0, most], `fallback` when the member is missing, -1 when it is anything else.
int NumberMember(const json& object, const char* name, std::int64_t most, int fallback = 0) {
  const auto place = object.find(name);
  if (place == object.end()) return fallback;
  if (!place->is_number_integer()) return -1;
  // Negative numbers become larger than any limit.
  const auto value = place->get<std::uint64_t>();
  return value <= static_cast<std::uint64_t>(most) ? static_cast<int>(value) : -1;
}

std::optional<bool> FlagMember(const json& object, const char* name) {
  const auto place = object.find(name);
  if (place == object.end()) return false;
  if (!place->is_boolean()) return std::nullopt;
  return place->get<bool>();
}

Refusal MalformedMember(const char* name) {
  return {ErrorCode::kMalformed,
          std::string("The member \"") + name + "\" is missing, of the wrong kind or out of range"};
}

// The text that hexadecimal UTF-16BE code units stand for.
std::optional<std::string> DecodeUtf16(const std::string& digits) {
  const auto bytes = FromHex(digits);
  if (bytes.size() * 2 != digits.size() || bytes.size() % 2 != 0) return std::nullopt;
  std::u16string wide;
  for (std::size_t i = 0; i < bytes.size(); i += 2) {
    wide += static_cast<char16_t>(static_cast<unsigned char>(bytes[i]) << 8 |
                                  static_cast<unsigned char>(bytes[i + 1]));
  }
  auto text = platform::FromWide(wide);
  if (platform::ToWide(text) != wide) return std::nullopt;  // half a surrogate pair
  return text;
}

// Fills in the parts; the text stands already.
std::optional<Refusal> CountParts(MessageContent& content, int concat) {
  std::int64_t parts = 0, most = std::max(concat, 1);
  if (IsBinaryType(content.type)) {
    if (content.text.empty() || FromHex(content.text).size() * 2 != content.text.size()) {
      return Refuse(ErrorCode::kBadType);
    }
    parts = PartsOf(static_cast<std::int64_t>(content.text.size() / 2), 140, 134);
    most = kMostConcat;
  } else if (content.unicode) {
    parts = PartsOf(static_cast<std::int64_t>(platform::ToWide(content.text).size()), 70, 67);
  } else {
    parts = PartsOf(static_cast<std::int64_t>(platform::CountCharacters(content.text)), 160, 153);
  }
  if (parts > most) return Refuse(ErrorCode::kTextTooLong);
  content.parts = static_cast<int>(parts);
  content.most_parts = static_cast<int>(most);
  return std::nullopt;
}

}  // namespace

std::optional<json> ParseObject(std::string_view body) {
  if (!IsShallow(body)) return std::nullopt;
  auto parsed = json::parse(body, nullptr, false);
  if (!parsed.is_object()) return std::nullopt;
  return parsed;
}

std::optional<std::string> TextMember(const json& object, const char* name, std::size_t longest) {
  const auto place = object.find(name);
  if (place == object.end() || !place->is_string()) return std::nullopt;
  const auto& text = place->get_ref<const std::string&>();
  if (text.size() > longest) return std::nullopt;
  return text;
}

bool IsBinaryType(int type) {
  constexpr std::array kBinary{3, 5, 6, 8, 9};
  return std::find(kBinary.begin(), kBinary.end(), type) != kBinary.end();
}

bool IsPhoneNumber(std::string_view text) {
  if (text.starts_with('+')) text.remove_prefix(1);
  return text.size() >= 3 && text.size() <= 16 &&
         text.find_first_not_of("0123456789") == std::string_view::npos;
}

std::string PlainNumber(std::string_view number) {
  if (number.starts_with('+')) number.remove_prefix(1);
  if (number.starts_with("00")) number.remove_prefix(2);
  return std::string(number);
}

std::int64_t PartsOf(std::int64_t units, std::int64_t whole, std::int64_t chained) {
  return units <= whole ? 1 : (units + chained - 1) / chained;
}

std::variant<MessageContent, Refusal> ParseContent(const json& object) {
  MessageContent content;
  auto text = TextMember(object, "text", std::string::npos);
  if (!text) return MalformedMember("text");
  content.text = std::move(*text);

  constexpr int kLargestType = 255;
  content.type = NumberMember(object, "type", kLargestType);
  if (content.type < 0) return MalformedMember("type");
  if (content.type > 1 && !IsBinaryType(content.type)) return Refuse(ErrorCode::kBadType);
  const int concat = NumberMember(object, "concat", kMostConcat);
  if (concat < 0) return MalformedMember("concat");
  content.delivery_minutes = NumberMember(object, "delivery_minutes", kMostMinutes);
  if (content.delivery_minutes < 0) return MalformedMember("delivery_minutes");
  if (object.contains("sender")) {
    auto sender = TextMember(object, "sender", kLongestSender);
    if (!sender) return MalformedMember("sender");
    content.sender = std::move(*sender);
  }

  const auto unicode = FlagMember(object, "unicode"), ack = FlagMember(object, "ack"),
             encoded = FlagMember(object, "encoded");
  if (!unicode) return MalformedMember("unicode");
  if (!ack) return MalformedMember("ack");
  if (!encoded) return MalformedMember("encoded");
  content.unicode = *unicode;
  content.ack = *ack;
  if (*encoded && *unicode && !IsBinaryType(content.type)) {
    auto decoded = DecodeUtf16(content.text);
    if (!decoded) return Refuse(ErrorCode::kBadType);
    content.text = std::move(*decoded);
  }
  if (auto refusal = CountParts(content, concat)) return *refusal;
  return content;
}

std::variant<std::string, Refusal> ParseNumber(const json& object) {
  auto number = TextMember(object, "to", std::string::npos);
  if (!number) return MalformedMember("to");
  if (!IsPhoneNumber(*number)) return Refuse(ErrorCode::kBadNumber);
  return std::move(*number);
}

std::variant<std::vector<std::string>, Refusal> ParseNumbers(const json& object) {
  const auto place = object.find("to");
  if (place == object.end() || !place->is_array() || place->empty()) return MalformedMember("to");
  if (place->size() > kMostNumbers) return Refuse(ErrorCode::kTooLarge);
  std::vector<std::string> numbers;
  numbers.reserve(place->size());
  for (const auto& entry : *place) {
    if (!entry.is_string()) return MalformedMember("to");
    const auto& text = entry.get_ref<const std::string&>();
    if (text.size() > kLongestNumberText) return MalformedMember("to");
    numbers.push_back(text);
  }
  return numbers;
}

}  // namespace orvalo::service
