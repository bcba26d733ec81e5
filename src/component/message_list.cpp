#include "component/message_list.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <utility>

#include "component/error_codes.h"
#include "component/reply_fields.h"
#include "component/submission_key.h"

namespace orvalo::component {
namespace {

constexpr char kFirstPage[] = "/v1/messages?limit=1000";
constexpr std::size_t kLongestCursor = 128;
constexpr std::size_t kLongestTime = 12;
constexpr std::size_t kLongestNumber = 64;
constexpr int kMostParts = 9'999;

bool IsLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

bool IsTime(const std::string& text) {
  return !text.empty() && text.size() <= kLongestTime &&
         std::all_of(text.begin(), text.end(), IsDigit);
}

bool IsCursor(const std::string& text) {
  return !text.empty() && text.size() <= kLongestCursor &&
         std::all_of(text.begin(), text.end(), [](char c) {
           return IsDigit(c) || IsLetter(c) || c == '-' || c == '_' || c == '.';
         });
}

// A phone number as the service keeps it: digits, a sign before them allowed.
std::optional<std::string> NumberField(const nlohmann::json& object, const char* name) {
  auto text = TextField(object, name);
  if (!text || text->size() > kLongestNumber ||
      !std::all_of(text->begin(), text->end(), [](char c) { return IsDigit(c) || c == '+'; })) {
    return std::nullopt;
  }
  return text;
}

std::optional<std::int64_t> TimeField(const nlohmann::json& object, const char* name) {
  if (!object.is_object() || !object.contains(name)) return std::nullopt;
  const auto& field = object[name];
  if (!field.is_number_unsigned() || !IsTime(field.dump())) return std::nullopt;
  return field.get<std::int64_t>();
}

// Null for what is no message.
nlohmann::json Checked(const nlohmann::json& message) {
  const auto id = HexField(message, "id", kIdDigits);
  const auto key = HexField(message, "key", kKeyDigits);
  const auto to = NumberField(message, "to");
  const auto parts = IntegerField(message, "parts", 1, kMostParts);
  const auto charge = DecimalField(message, "charge");
  const auto status = IntegerField(message, "status", 0, kHighestStatus);
  const auto accepted = TimeField(message, "accepted");
  if (!id || !key || !to || !parts || !charge || !status || !accepted) return nullptr;
  return {{"id", *id},
          {"key", *key},
          {"to", *to},
          {"parts", *parts},
          {"charge", *charge},
          {"status", *status},
          {"accepted", *accepted}};
}

}  // namespace

bool ListCall(const std::string& cursor, const std::string& since, Call* call) {
  if ((!cursor.empty() && !IsCursor(cursor)) || (!since.empty() && !IsTime(since))) return false;
  call->path = kFirstPage;
  if (!cursor.empty()) call->path += "&after=" + cursor;
  if (!since.empty()) call->path += "&since=" + since;
  return true;
}

Answer ListAnswer(const Outcome& outcome, const std::string& cursor) {
  // Earlier services know the path, but only for sending.
  if (outcome.error == kNoSuchMethod) {
    return RefusalAnswer(Failed(kNoSuchCall, "The service does not list messages"));
  }
  if (!outcome.ok()) return RefusalAnswer(outcome);
  const auto messages = outcome.reply.find("messages");
  if (messages == outcome.reply.end() || !messages->is_array()) {
    return RefusalAnswer(NotUnderstood());
  }
  nlohmann::json page = {{"messages", nlohmann::json::array()}};
  for (const auto& message : *messages) {
    auto checked = Checked(message);
    if (checked.is_null()) return RefusalAnswer(NotUnderstood());
    page["messages"].push_back(std::move(checked));
  }
  if (outcome.reply.contains("next")) {
    const auto next = TextField(outcome.reply, "next");
    if (!next || !IsCursor(*next) || *next == cursor) return RefusalAnswer(NotUnderstood());
    page["next"] = *next;
  }
  return {kSuccess, page.dump()};
}

}  // namespace orvalo::component
