// What a service, or something in its place, answers to the gateway component.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "component/message_list.h"
#include "component/reply_fields.h"
#include "component/reply_texts.h"
#include "component/reply_verdict.h"
#include "component/submission_replies.h"

namespace {

using namespace orvalo::component;

void Require(bool condition) {
  if (!condition) std::abort();
}

// The client takes such texts apart at blanks and marks: nothing in them may look like another.
void CheckWords(const std::string& text) {
  const std::string words = PlainWords(text);
  Require(words.find_first_of("\r\n\t") == std::string::npos);
  Require((" " + words).find(" To:") == std::string::npos);
  Require((" " + words).find(" ID:") == std::string::npos);
  Require((" " + words).find(" ERR:") == std::string::npos);
}

void CheckFields(const nlohmann::json& reply) {
  for (const char* name : {"id", "token", "to", "code", "message", "balance", "charge", "status"}) {
    if (const auto text = TextField(reply, name)) CheckWords(*text);
    if (const auto id = HexField(reply, name, 32)) Require(id->size() == 32);
    if (const auto amount = DecimalField(reply, name)) Require(std::stod(*amount) < 1e9);
    if (const auto status = IntegerField(reply, name, 0, 999)) StatusText(*status);
  }
}

// What the members make of a reply that is a success.
void CheckAnswers(const Outcome& outcome) {
  static const std::string key(32, '0');
  std::string batch;
  OpenedAnswer(outcome, &batch);
  Require(batch.empty() || IsHex(batch, kIdDigits));
  const auto kept = KeptOutcome(outcome, key);
  for (const auto& one : {outcome, kept}) {
    SentAnswer(one);
    EndedAnswer(one);
    const auto numbers = NumbersOf(one);
    const auto lines = RecipientsAnswer(one, numbers).text;
    Require(std::count(lines.begin(), lines.end(), '\n') == std::ssize(numbers));
  }
  const auto page = ListAnswer(outcome, "7");
  if (page.error == 0) Require(nlohmann::json::parse(page.text).value("next", "") != "7");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  static const int statuses[] = {200, 201, 204, 302, 400, 404, 500, 502};
  orvalo::platform::HttpReply reply;
  reply.status = statuses[data[0] % std::size(statuses)];
  reply.content_type = (data[0] & 0x80) != 0 ? "text/html" : "application/json";
  reply.body.assign(reinterpret_cast<const char*>(data) + 1, size - 1);
  const Verdict verdict = Judge(reply);
  Require(reply.status < 400 || !verdict.outcome.ok());
  CheckWords(verdict.outcome.message);
  if (!verdict.outcome.ok()) return 0;
  CheckFields(verdict.outcome.reply);
  CheckAnswers(verdict.outcome);
  for (const auto& result : verdict.outcome.reply) {
    if (!result.is_array()) continue;
    for (const auto& line : result) CheckFields(line);
  }
  return 0;
}
