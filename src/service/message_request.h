#pragma once
#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "service/refusal.h"

namespace orvalo::service {

// What a request says, checked. Pure functions: no state, any thread, no exceptions.

// A message but for its number.
struct MessageContent {
  std::string text;  // UTF-8; hexadecimal digits for the binary types
  int type = 0;
  bool unicode = false;
  int parts = 1;
  int most_parts = 1;  // that the sender allows
  std::string sender;
  int delivery_minutes = 0;
  bool ack = false;
};

// The JSON object in `body`; nothing for anything else: bad UTF-8, nesting deeper than any request
// of the protocol needs, and numbers that no variable holds included.
std::optional<nlohmann::json> ParseObject(std::string_view body);

// The member as text of at most `longest` bytes; nothing when it is missing, of another kind or
// longer.
std::optional<std::string> TextMember(const nlohmann::json& object, const char* name,
                                      std::size_t longest);

bool IsBinaryType(int type);
bool IsPhoneNumber(std::string_view text);  // 3 to 16 digits, a "+" before them allowed

// A phone number as it is priced, kept and sent: "+31612345678", "0031612345678" and "31612345678"
// are one. Not always a phone number any more: "0012" is none.
std::string PlainNumber(std::string_view number);

// How many parts `units` characters, UTF-16 code units or bytes take: one up to `whole`, else one
// for every `chained`.
std::int64_t PartsOf(std::int64_t units, std::int64_t whole, std::int64_t chained);

std::variant<MessageContent, Refusal> ParseContent(const nlohmann::json& object);

// The member `to`: one number; or up to 1,000 texts, which may or may not be numbers.
std::variant<std::string, Refusal> ParseNumber(const nlohmann::json& object);
std::variant<std::vector<std::string>, Refusal> ParseNumbers(const nlohmann::json& object);

}  // namespace orvalo::service
