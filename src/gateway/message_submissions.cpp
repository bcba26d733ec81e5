#include "gateway/message_submissions.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "app/texts.h"
#include "gateway/batch_reply.h"
#include "gateway/engine_notices.h"
#include "gateway/gateway_client.h"
#include "platform/clock.h"
#include "platform/code_page.h"

namespace orvalo {
namespace {

// Behind the message's part of the key stands what is submitted: a position, or one of these.
constexpr std::uint32_t kStart = 0xffffffff;
constexpr std::uint32_t kEnd = 0xfffffffe;

constexpr std::array<std::int64_t, 5> kPauses = {1'000, 2'000, 4'000, 8'000, 15'000};
constexpr std::int64_t kLongestInAll = 30'000;  // milliseconds
constexpr std::int64_t kLookAround = 100;
constexpr std::size_t kAnswersKeptAtOnce = 16;
constexpr std::int64_t kLongestSending = 86'400;  // seconds
constexpr std::int32_t kNoSuchCall = 102;
constexpr int kTooLateTextId = 2361;
constexpr int kInDoubtTextId = 2362;
constexpr int kStoppedTextId = 2370;

std::u16string KeyOf(const JournalEntry& entry, std::uint32_t position) {
  std::array<char, 9> digits;
  std::snprintf(digits.data(), digits.size(), "%08x", position);
  return platform::ToWide(entry.key + digits.data());
}

}  // namespace

// The answer to a chunk of a batch names its recipients, unless all of it was refused.
std::int32_t CountAnswered(const JournalEntry& entry) {
  std::size_t count = 0;
  for (const JournalAnswer& answer : entry.answers)
    count += std::max<std::size_t>(ParseBatchReply(answer.reply).size(), 1);
  return static_cast<std::int32_t>(std::min(count, entry.recipients.size()));
}

MessageSubmissions::MessageSubmissions(const EngineParts& parts, SendJournal& journal,
                                       const JournalEntry& entry, bool resumed)
    : parts_(parts),
      journal_(journal),
      entry_(entry),
      only_asked_(AreKeyed() && (entry.since == kSendingStopped ||
                                 parts.clock.Now() - entry.since > kLongestSending)),
      resumed_(resumed) {
  for (const JournalAnswer& answer : entry.answers) known_.emplace(answer.position, &answer);
}

SubmissionAnswer MessageSubmissions::Send(std::int32_t position, std::u16string_view wire,
                                          std::string_view number) {
  const std::u16string wide_number = platform::ToWide(number);
  auto answer = Submit(
      position, [&](std::u16string* reply) { parts_.gateway.Send(1, wire, wide_number, reply); });
  Remember(position, answer);
  // The answer for the only recipient goes straight into its row.
  if (new_answers_.size() >= kAnswersKeptAtOnce) KeepAnswers();
  return answer;
}

SubmissionAnswer MessageSubmissions::StartBatch(std::u16string_view wire) {
  return Submit(kStart, [&](std::u16string* reply) { parts_.gateway.StartBatch(wire, reply); });
}

SubmissionAnswer MessageSubmissions::BatchSend(std::int32_t position, std::string_view numbers) {
  const std::u16string wide_numbers = platform::ToWide(numbers);
  auto answer = Submit(
      position, [&](std::u16string* reply) { parts_.gateway.BatchSend(wide_numbers, reply); });
  Remember(position, answer);
  KeepAnswers();
  return answer;
}

SubmissionAnswer MessageSubmissions::EndBatch() {
  return Submit(kEnd, [&](std::u16string* reply) { parts_.gateway.EndBatch(reply); });
}

SubmissionAnswer MessageSubmissions::Submit(std::uint32_t position, const Call& call) {
  if (const auto found = known_.find(static_cast<std::int32_t>(position)); found != known_.end()) {
    const JournalAnswer& known = *found->second;
    return {{known.code, platform::HttpObstacle::kNotKnown, known.words}, known.reply, false, true};
  }
  const std::int64_t end = parts_.clock.Tick() + kLongestInAll;
  auto answer = Try(position, call);
  for (const std::int64_t pause : kPauses) {
    if (!answer.open || answer.failure.code == kNoSession) break;
    if (parts_.clock.Tick() + pause > end || !Wait(pause)) break;
    answer = Try(position, call);
  }
  return answer;
}

SubmissionAnswer MessageSubmissions::Try(std::uint32_t position, const Call& call) {
  SubmissionAnswer answer;
  std::u16string reply;
  if (only_asked_) return AskFor(KeyOf(entry_, position));
  if (AreKeyed() &&
      !platform::Succeeded(parts_.gateway.SetSubmissionKey(KeyOf(entry_, position)))) {
    answer.failure.code =
        kNotUnderstood;  // and nothing goes out under a key of the component's own
    answer.open = true;
    return answer;
  }
  call(&reply);
  answer.failure = parts_.gateway.LastFailure(reply);
  // The gateway has it already, worded a little otherwise: for another delivery time, say.
  if (AreKeyed() && answer.failure.code == kKeyReused) return AskFor(KeyOf(entry_, position));
  answer.reply = platform::FromWide(reply);
  answer.open = AreKeyed() && IsUnanswered(answer.failure.code);
  return answer;
}

SubmissionAnswer MessageSubmissions::AskFor(std::u16string_view key) {
  SubmissionAnswer answer;
  std::u16string reply;
  parts_.gateway.QuerySubmission(key, &reply);
  answer.failure = parts_.gateway.LastFailure(reply);
  answer.reply = platform::FromWide(reply);
  answer.open = IsUnanswered(answer.failure.code);
  answer.too_late = answer.failure.code == kNoSuchSubmission;
  answer.in_doubt = answer.failure.code == kNoSuchCall;
  answer.stopped = answer.too_late && entry_.since == kSendingStopped;
  if (answer.too_late)
    answer.failure.words = parts_.texts.Load(answer.stopped ? kStoppedTextId : kTooLateTextId);
  if (answer.in_doubt) answer.failure.words = parts_.texts.Load(kInDoubtTextId);
  return answer;
}

void MessageSubmissions::Remember(std::int32_t position, const SubmissionAnswer& answer) {
  if (!AreKeyed() || answer.open || answer.told_before || only_asked_ || answer.in_doubt) return;
  new_answers_.push_back({position, answer.failure.code, answer.failure.words, answer.reply});
}

void MessageSubmissions::KeepAnswers() {
  if (new_answers_.empty()) return;
  journal_.Record(entry_.id, new_answers_);
  new_answers_.clear();
}

bool MessageSubmissions::Wait(std::int64_t milliseconds) {
  for (; milliseconds > 0; milliseconds -= kLookAround) {
    if (parts_.notices.Stopping()) return false;
    parts_.clock.Sleep(std::min(milliseconds, kLookAround));
  }
  return !parts_.notices.Stopping();
}

}  // namespace orvalo
