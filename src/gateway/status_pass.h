#pragma once
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "gateway/engine_parts.h"
#include "gateway/gateway_failure.h"
#include "gateway/gateway_ids.h"
#include "store/sms_database.h"

namespace orvalo {

// The status pass: asks the gateway for status and charge of the sent messages that are due and
// enters the answers. Runs on the engine's worker thread, or, where no engine runs, on the thread
// of whoever wants a single pass; under the pass lock from start to end.
//
// Answers are written in groups, one transaction for each, at the latest after a second: what a
// killed run had not yet written, the next pass asks for again.
class StatusPass {
 public:
  StatusPass(const EngineParts& parts, std::mutex& pass_lock)
      : parts_(parts), pass_lock_(pass_lock) {}

  // The pass for one message, whether due or not and without moving its schedule, or for every due
  // one (kEveryMessage). Does nothing offline. A failure inside ends the pass and is logged.
  void QueryMessageStatus(std::int32_t id);

  // What the passes of this object were not told: how many questions failed, and why the last one
  // did.
  struct Unanswered {
    std::int32_t count = 0;
    GatewayFailure last;
  };
  const Unanswered& unanswered() const { return unanswered_; }

 private:
  // What a row is to be given at the next write.
  struct Answer {
    std::int32_t id = 0;
    bool answered = false;            // status and charge are to be stored
    std::optional<SmsStatus> status;  // when it changes
    std::string charge;
    std::optional<std::int32_t> next_interval;
    std::int32_t asked_at = 0;
  };

  std::int32_t WalkFollowed(std::int32_t id);  // how many replies carried a status
  std::int32_t QueryRow(const SmsDatabase::FollowedSms& row, SmsStatus status, bool move_schedule,
                        std::int64_t now);
  // Asks about every gateway id of the row in order. Further ids of one row move to a copy of it.
  std::int32_t QueryOneMessage(const SmsDatabase::FollowedSms& row, Answer* answer);
  void NoteUnanswered(const GatewayFailure& failure, const GatewayIdEntry& entry);
  void SplitOff(std::int32_t id, const GatewayIdEntry& entry, std::string* api_msg_id,
                const Answer& answer);
  void Write(const Answer& answer);
  void WriteAnswers();

  EngineParts parts_;
  std::mutex& pass_lock_;
  std::vector<Answer> answers_;  // not yet written
  std::int64_t oldest_answer_tick_ = 0;
  std::int32_t highest_error_ = 0;
  Unanswered unanswered_;
};

}  // namespace orvalo
