#include "component/message_calls.h"

#include <algorithm>
#include <utility>

#include "component/error_codes.h"
#include "component/reply_fields.h"
#include "component/reply_texts.h"

namespace orvalo::component {
namespace {

constexpr std::size_t kIdDigits = 32;
constexpr std::size_t kMostRecipients = 1'000;  // of one request
constexpr int kHighestStatus = 999;             // three digits; later versions may know more

nlohmann::json MessageBody(const MessageOptions& options, const std::string& text) {
  nlohmann::json body = {{"text", text},
                         {"type", options.type},
                         {"unicode", options.unicode},
                         {"concat", options.concat},
                         {"sender", options.sender},
                         {"delivery_minutes", std::max(options.delivery_minutes, 0)},
                         {"ack", options.acknowledge}};
  if (options.encoded) body["encoded"] = true;
  return body;
}

Call Submission(std::string path, nlohmann::json body) {
  Call call;
  call.method = "POST";
  call.path = std::move(path);
  call.body = std::move(body);
  call.repeat = Call::Repeat::kSubmission;
  return call;
}

std::vector<std::string> SplitNumbers(std::string_view list) {
  std::vector<std::string> numbers;
  while (!list.empty()) {
    const auto comma = std::min(list.find(','), list.size());
    if (comma > 0) numbers.emplace_back(list.substr(0, comma));
    list.remove_prefix(std::min(comma + 1, list.size()));
  }
  return numbers;
}

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

// The lines about the recipients of one request.
Answer ResultLines(const Outcome& outcome, const std::vector<std::string>& numbers) {
  Answer answer;
  if (!outcome.ok()) answer = RefusalAnswer(outcome);
  answer.text.clear();
  const auto results = outcome.ok() ? outcome.reply.find("results") : outcome.reply.end();
  if (outcome.ok() && (results == outcome.reply.end() || !results->is_array() ||
                       results->size() != numbers.size())) {
    return ResultLines(NotUnderstood(), numbers);
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

}  // namespace

MessageCalls::MessageCalls(GatewayProtocol& protocol) : protocol_(protocol) {}

Answer MessageCalls::Send(const MessageOptions& options, const std::string& text,
                          const std::string& number) {
  auto body = MessageBody(options, text);
  body["to"] = number;
  const auto outcome = protocol_.Perform(Submission("/v1/messages", std::move(body)));
  if (!outcome.ok()) return RefusalAnswer(outcome);
  const auto id = HexField(outcome.reply, "id", kIdDigits);
  return id ? Answer{kSuccess, SentText(*id)} : RefusalAnswer(NotUnderstood());
}

Answer MessageCalls::StartBatch(const MessageOptions& options, const std::string& text) {
  set_current_batch("");
  const auto outcome = protocol_.Perform(Submission("/v1/batches", MessageBody(options, text)));
  if (!outcome.ok()) return RefusalAnswer(outcome);
  const auto batch = HexField(outcome.reply, "batch", kIdDigits);
  if (!batch) return RefusalAnswer(NotUnderstood());
  set_current_batch(*batch);
  return {kSuccess, "OK"};
}

Answer MessageCalls::SendToBatch(std::string_view numbers) {
  const auto batch = current_batch();
  auto all = SplitNumbers(numbers);
  Answer answer;
  for (std::size_t begin = 0; begin < all.size(); begin += kMostRecipients) {
    const auto end = std::min(begin + kMostRecipients, all.size());
    const std::vector<std::string> some(std::make_move_iterator(all.begin() + begin),
                                        std::make_move_iterator(all.begin() + end));
    const auto lines = ResultLines(
        batch.empty()
            ? Failed(kNoSuchMessage, "There is no current batch")
            : protocol_.Perform(Submission("/v1/batches/" + batch + "/recipients", {{"to", some}})),
        some);
    auto text = std::move(answer.text) + lines.text;
    if (lines.error != 0) answer = lines;
    answer.text = std::move(text);
  }
  return answer;
}

Answer MessageCalls::EndBatch() {
  const auto batch = current_batch();
  if (batch.empty()) return RefusalAnswer(Failed(kNoSuchMessage, "There is no current batch"));
  const auto outcome =
      protocol_.Perform(Submission("/v1/batches/" + batch + "/end", nlohmann::json::object()));
  const bool gone = outcome.error == kNoSuchMessage || outcome.error == kBatchEnded;
  if (outcome.ok() || gone) set_current_batch("");
  if (!outcome.ok()) return RefusalAnswer(outcome);
  const auto accepted = IntegerField(outcome.reply, "accepted", 0, INT32_MAX);
  if (!accepted) return RefusalAnswer(NotUnderstood());
  return {kSuccess, "OK: " + std::to_string(*accepted) + " accepted"};
}

Answer MessageCalls::QueryCharge(const std::string& id) {
  const auto outcome = QueryMessage(id);
  if (!outcome.ok()) return RefusalAnswer(outcome);
  const auto status = IntegerField(outcome.reply, "status", 0, kHighestStatus);
  const auto charge = DecimalField(outcome.reply, "charge");
  if (!status || !charge) return RefusalAnswer(NotUnderstood());
  return {kSuccess, ChargeText(*status, *charge)};
}

Answer MessageCalls::QueryStatus(const std::string& id) {
  const auto outcome = QueryMessage(id);
  if (!outcome.ok()) return RefusalAnswer(outcome);
  const auto status = IntegerField(outcome.reply, "status", 0, kHighestStatus);
  return status ? Answer{kSuccess, StatusText(*status)} : RefusalAnswer(NotUnderstood());
}

Outcome MessageCalls::QueryMessage(const std::string& id) {
  // What is no id would make another address.
  if (!IsHex(id, kIdDigits)) return Failed(kNoSuchMessage, "Not a message id");
  Call call;
  call.path = "/v1/messages/" + id;
  return protocol_.Perform(call);
}

std::string MessageCalls::current_batch() const {
  std::lock_guard guard(mutex_);
  return batch_;
}

void MessageCalls::set_current_batch(const std::string& batch) {
  std::lock_guard guard(mutex_);
  batch_ = batch;
}

}  // namespace orvalo::component
