#include "component/message_calls.h"

#include <algorithm>
#include <utility>

#include "component/error_codes.h"
#include "component/message_list.h"
#include "component/reply_fields.h"
#include "component/reply_texts.h"
#include "component/submission_key.h"
#include "component/submission_replies.h"

namespace orvalo::component {
namespace {

constexpr std::size_t kMostRecipients = 1'000;  // of one request
constexpr char kNoBatch[] = "There is no current batch";

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

Call Submission(std::string path, const std::string& key, nlohmann::json body) {
  Call call;
  call.method = "POST";
  call.path = std::move(path);
  call.body = std::move(body);
  call.repeat = Call::Repeat::kSubmission;
  call.key = key;
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

// Puts `more` behind the lines that are there; the latest error of all stands.
void Append(Answer more, Answer* answer) {
  auto text = std::move(answer->text) + more.text;
  if (more.error != 0) *answer = std::move(more);
  answer->text = std::move(text);
}

}  // namespace

MessageCalls::MessageCalls(GatewayProtocol& protocol) : protocol_(protocol) {}

Answer MessageCalls::Send(const std::string& key, const MessageOptions& options,
                          const std::string& text, const std::string& number) {
  auto body = MessageBody(options, text);
  body["to"] = number;
  return SentAnswer(protocol_.Perform(Submission("/v1/messages", key, std::move(body))));
}

Answer MessageCalls::StartBatch(const std::string& key, const MessageOptions& options,
                                const std::string& text) {
  set_current_batch("");
  std::string batch;
  auto answer = OpenedAnswer(
      protocol_.Perform(Submission("/v1/batches", key, MessageBody(options, text))), &batch);
  set_current_batch(batch);
  return answer;
}

Answer MessageCalls::SendToBatch(const std::string& key, std::string_view numbers) {
  const auto batch = current_batch();
  const auto path = "/v1/batches/" + batch + "/recipients";
  auto all = SplitNumbers(numbers);
  Answer answer;
  for (std::size_t begin = 0; begin < all.size(); begin += kMostRecipients) {
    const auto end = std::min(begin + kMostRecipients, all.size());
    const std::vector<std::string> some(std::make_move_iterator(all.begin() + begin),
                                        std::make_move_iterator(all.begin() + end));
    const auto its_key = key.empty() ? key : KeyOfRequest(key, begin / kMostRecipients);
    Append(RecipientsAnswer(batch.empty()
                                ? Failed(kNoSuchMessage, kNoBatch)
                                : protocol_.Perform(Submission(path, its_key, {{"to", some}})),
                            some),
           &answer);
  }
  return answer;
}

Answer MessageCalls::EndBatch(const std::string& key) {
  const auto batch = current_batch();
  if (batch.empty()) return RefusalAnswer(Failed(kNoSuchMessage, kNoBatch));
  const auto outcome =
      protocol_.Perform(Submission("/v1/batches/" + batch + "/end", key, nlohmann::json::object()));
  const bool gone = outcome.error == kNoSuchMessage || outcome.error == kBatchEnded;
  if (outcome.ok() || gone) set_current_batch("");
  return EndedAnswer(outcome);
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

Answer MessageCalls::QuerySubmission(const std::string& key) {
  auto kept = QueryKept(key);
  if (!kept.ok()) return RefusalAnswer(kept);
  if (kept.reply.contains("results")) return QueryRecipients(key, std::move(kept));
  if (kept.reply.contains("accepted")) return EndedAnswer(kept);
  if (!kept.reply.contains("batch")) return SentAnswer(kept);
  std::string batch;
  auto answer = OpenedAnswer(kept, &batch);
  if (!batch.empty()) set_current_batch(batch);
  return answer;
}

Answer MessageCalls::ListMessages(const std::string& cursor, const std::string& since) {
  Call call;
  if (!ListCall(cursor, since, &call)) {
    return RefusalAnswer(Failed(kMalformed, "Not a cursor or not a time"));
  }
  return ListAnswer(protocol_.Perform(call), cursor);
}

// A full request may have been followed by others of the same call.
Answer MessageCalls::QueryRecipients(const std::string& key, Outcome kept) {
  Answer answer;
  for (std::size_t place = 1;; ++place) {
    const auto numbers = NumbersOf(kept);
    Append(RecipientsAnswer(kept, numbers), &answer);
    if (numbers.size() < kMostRecipients) return answer;
    kept = QueryKept(KeyOfRequest(key, place));
    if (kept.error == kNoSuchSubmission) return answer;
    if (!kept.ok()) return RefusalAnswer(kept);
  }
}

Outcome MessageCalls::QueryKept(const std::string& key) {
  if (!IsHex(key, kKeyDigits)) return Failed(kMalformed, "Not a key of a submission");
  Call call;
  call.path = "/v1/submissions/" + key;
  call.asks_for_submission = true;
  return KeptOutcome(protocol_.Perform(call), key);
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
