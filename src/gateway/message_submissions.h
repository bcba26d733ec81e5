#pragma once
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "gateway/engine_parts.h"
#include "gateway/gateway_failure.h"
#include "store/send_journal.h"

namespace orvalo {

// What came of one submission.
struct SubmissionAnswer {
  GatewayFailure failure;  // code 0: the gateway has taken it
  std::string reply;
  bool open = false;         // nobody has answered: it is repeated later, under its key
  bool told_before = false;  // out of the journal; what there is to log was logged when it came
  bool too_late = false;     // surely not taken, and not sent any more: the words say why
  bool stopped = false;      // the same: the operator wanted it so
  bool in_doubt = false;     // the gateway cannot tell whether it has taken it; the same
};

// For how many of the message's recipients the journal has the gateway's answer.
std::int32_t CountAnswered(const JournalEntry& entry);

// The submissions of one message: what it asks the gateway to take, each under a key of its own
// that follows from the message's journal entry. However often a submission is repeated, by this
// process or after it died, the gateway takes it once and answers what it answered.
//
// No answer is not a refusal. A submission that is not answered (nobody there, a reply that cannot
// be read, nobody logged in, out of order) is repeated for about half a minute, unless the engine
// is to stop, and is then open.
//
// A message whose sending began more than a day ago, or was stopped by the operator, is not sent
// any more: the gateway is only asked what became of its submissions.
//
// Without a component that keeps keys each submission is made once, and whatever is not accepted
// counts as refused: `open` is then never set.
//
// One for each message in hand, on the engine's worker. Operations throw StoreError when the
// journal cannot be written; the submission is then repeated by whoever takes the message up again.
class MessageSubmissions {
 public:
  // `entry` must outlive this object. Without a key it stands in no journal. `resumed`: somebody
  // has been at it before.
  MessageSubmissions(const EngineParts& parts, SendJournal& journal, const JournalEntry& entry,
                     bool resumed = false);

  bool AreKeyed() const { return !entry_.key.empty(); }
  bool AreOnlyAsked() const { return only_asked_; }
  // True when what the journal has no answer for may have gone out all the same: it must go out
  // under its key and no other.
  bool MayHaveGoneOut() const { return AreKeyed() && resumed_; }
  // True when the journal has the answer of the submission at this position of the recipients.
  bool Knows(std::int32_t position) const { return known_.count(position) > 0; }

  // One recipient; the answer is kept in the journal, several at a time: see KeepAnswers.
  SubmissionAnswer Send(std::int32_t position, std::u16string_view wire, std::string_view number);
  // The answer to a start and an end is not kept: the component needs a start again after its own.
  SubmissionAnswer StartBatch(std::u16string_view wire);
  SubmissionAnswer BatchSend(std::int32_t position, std::string_view numbers);
  SubmissionAnswer EndBatch();

  // Writes into the journal what has been answered since the last time.
  void KeepAnswers();

 private:
  using Call = std::function<void(std::u16string* reply)>;
  SubmissionAnswer Submit(std::uint32_t position, const Call& call);
  SubmissionAnswer Try(std::uint32_t position, const Call& call);
  SubmissionAnswer AskFor(std::u16string_view key);
  void Remember(std::int32_t position, const SubmissionAnswer& answer);
  bool Wait(std::int64_t milliseconds);  // false when the engine is to stop

  EngineParts parts_;
  SendJournal& journal_;
  const JournalEntry& entry_;
  std::unordered_map<std::int32_t, const JournalAnswer*> known_;
  std::vector<JournalAnswer> new_answers_;
  const bool only_asked_;
  const bool resumed_;
};

}  // namespace orvalo
