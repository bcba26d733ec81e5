#include "component/submission_replies.h"

#include <cstdint>
#include <utility>

#include "component/error_codes.h"
#include "component/reply_fields.h"
#include "component/reply_texts.h"
#include "component/submission_key.h"

namespace orvalo::component {
namespace {

constexpr int kLowestHttpStatus = 200;
constexpr int kHighestHttpStatus = 599;

// One line about one recipient; `understood` is cleared when the service's result is not one.
std::string ResultLine(const nlohmann::json& result, const std::string& number, bool* understood) {
  if (TextField(result, "to") == number) {
    if (const auto id = HexField(result, "id", kIdDigits)) return BatchSentLine(*id, number);
    if (const auto code = IntegerField(result, "code", 1, 9999)) {
      return BatchErrorLine(*code, TextField(result, "message").value_or(""), number);
    }
  }
  *understood = false;
  return BatchErrorLine(kNotUnderstood, NotUnderstood().message, number);
}

}  // namespace

Answer SentAnswer(const Outcome& outcome) {
  if (!outcome.ok()) return RefusalAnswer(outcome);
  const auto id = HexField(outcome.reply, "id", kIdDigits);
  return id ? Answer{kSuccess, SentText(*id)} : RefusalAnswer(NotUnderstood());
}

Answer OpenedAnswer(const Outcome& outcome, std::string* batch) {
  if (!outcome.ok()) return RefusalAnswer(outcome);
  auto id = HexField(outcome.reply, "batch", kIdDigits);
  if (!id) return RefusalAnswer(NotUnderstood());
  *batch = std::move(*id);
  return {kSuccess, "OK"};
}

Answer RecipientsAnswer(const Outcome& outcome, const std::vector<std::string>& numbers) {
  Answer answer;
  if (!outcome.ok()) answer = RefusalAnswer(outcome);
  answer.text.clear();
  const auto results = outcome.ok() ? outcome.reply.find("results") : outcome.reply.end();
  if (outcome.ok() && (results == outcome.reply.end() || !results->is_array() ||
                       results->size() != numbers.size())) {
    return RecipientsAnswer(NotUnderstood(), numbers);
  }
  bool understood = true;
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    answer.text += outcome.ok() ? ResultLine((*results)[i], numbers[i], &understood)
                                : BatchErrorLine(outcome.error, outcome.message, numbers[i]);
  }
  if (!understood) {
    answer.error = kNotUnderstood;
    answer.reason = NotUnderstood().message;
  }
  return answer;
}

Answer EndedAnswer(const Outcome& outcome) {
  if (!outcome.ok()) return RefusalAnswer(outcome);
  const auto accepted = IntegerField(outcome.reply, "accepted", 0, INT32_MAX);
  if (!accepted) return RefusalAnswer(NotUnderstood());
  return {kSuccess, "OK: " + std::to_string(*accepted) + " accepted"};
}

Outcome KeptOutcome(const Outcome& told, const std::string& key) {
  if (!told.ok()) return told;
  const auto named = HexField(told.reply, "key", kKeyDigits);
  const auto status = IntegerField(told.reply, "status", kLowestHttpStatus, kHighestHttpStatus);
  const auto reply = told.reply.find("reply");
  if (!named || !IsSameKey(*named, key) || !status || reply == told.reply.end()) {
    return NotUnderstood();
  }
  return OutcomeOf(*status, *reply);
}

std::vector<std::string> NumbersOf(const Outcome& outcome) {
  std::vector<std::string> numbers;
  if (!outcome.ok()) return numbers;
  const auto results = outcome.reply.find("results");
  if (results == outcome.reply.end() || !results->is_array()) return numbers;
  for (const auto& result : *results) {
    numbers.push_back(TextField(result, "to").value_or(""));
  }
  return numbers;
}

}  // namespace orvalo::component
