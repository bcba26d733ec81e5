#include "component/reply_fields.h"

#include <algorithm>
#include <cstdint>

namespace orvalo::component {
namespace {

constexpr std::size_t kMostDigits = 9;
constexpr std::int64_t kLargestAmount = INT32_MAX / 10 - 1;

bool IsHexDigit(char c) { return IsDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F'); }

bool IsShortNumber(std::string_view text) {
  return !text.empty() && text.size() <= kMostDigits &&
         std::all_of(text.begin(), text.end(), IsDigit);
}

const nlohmann::json* FindField(const nlohmann::json& object, const char* name) {
  if (!object.is_object()) return nullptr;
  const auto place = object.find(name);
  return place == object.end() ? nullptr : &*place;
}

}  // namespace

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

bool IsHex(std::string_view text, std::size_t digits) {
  return text.size() == digits && std::all_of(text.begin(), text.end(), IsHexDigit);
}

std::optional<std::string> TextField(const nlohmann::json& object, const char* name) {
  const auto* field = FindField(object, name);
  if (field == nullptr || !field->is_string()) return std::nullopt;
  return field->get<std::string>();
}

std::optional<std::string> HexField(const nlohmann::json& object, const char* name,
                                    std::size_t digits) {
  auto text = TextField(object, name);
  if (text && !IsHex(*text, digits)) text.reset();
  return text;
}

std::optional<std::string> DecimalField(const nlohmann::json& object, const char* name) {
  auto text = TextField(object, name);
  if (!text) return std::nullopt;
  const std::string_view whole = *text;
  const auto point = whole.find('.');
  const auto units = whole.substr(0, point);
  if (!IsShortNumber(units) || std::stoll(std::string(units)) > kLargestAmount) return std::nullopt;
  if (point != whole.npos && !IsShortNumber(whole.substr(point + 1))) return std::nullopt;
  return text;
}

std::optional<int> IntegerField(const nlohmann::json& object, const char* name, int lowest,
                                int highest) {
  const auto* field = FindField(object, name);
  if (field == nullptr || !field->is_number_integer()) return std::nullopt;
  // An unsigned value beyond 63 bits would wrap when read as a signed one.
  if (field->is_number_unsigned() && field->get<std::uint64_t>() > INT32_MAX) return std::nullopt;
  const auto value = field->get<std::int64_t>();
  if (value < lowest || value > highest) return std::nullopt;
  return static_cast<int>(value);
}

}  // namespace orvalo::component
