#pragma once
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>

namespace orvalo::platform {

// One insert of FormatText: an integer or a text.
class FormatInsert {
 public:
  FormatInsert(int value)
      : value_(static_cast<std::int64_t>(value)) {}    // NOLINT(google-explicit-constructor)
  FormatInsert(std::int64_t value) : value_(value) {}  // NOLINT(google-explicit-constructor)
  FormatInsert(const char* value)
      : value_(std::string_view(value)) {}                 // NOLINT(google-explicit-constructor)
  FormatInsert(std::string_view value) : value_(value) {}  // NOLINT(google-explicit-constructor)
  FormatInsert(const std::string& value)
      : value_(std::string_view(value)) {}  // NOLINT(google-explicit-constructor)
  const std::variant<std::int64_t, std::string_view>& value() const { return value_; }

 private:
  std::variant<std::int64_t, std::string_view> value_;
};

// Inserts the arguments into a text of the message-table kind: "%1!s!" the first as a text, "%2!d!"
// the second as a decimal, "%1!02d!" with printf's flags and width, "%1" alone as "%1!s!"; "%%" a
// percent sign, "%n" a line break, "%0" ends the text without one; also %space, %. and %!.
// Conversions: s, d, i, u, x, X, c (a code point); widths count characters and end at 255. Nothing
// when the text asks for an insert that is not given, for
// another kind of value than it is, or is malformed: a translated text can be wrong, and must not
// crash the program. Any thread.
std::optional<std::string> FormatText(std::string_view format,
                                      std::span<const FormatInsert> inserts);
inline std::optional<std::string> FormatText(std::string_view format,
                                             std::initializer_list<FormatInsert> inserts) {
  return FormatText(format, std::span<const FormatInsert>(inserts.begin(), inserts.size()));
}

}  // namespace orvalo::platform
