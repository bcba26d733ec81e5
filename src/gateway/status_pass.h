#pragma once
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>

#include "gateway/engine_parts.h"
#include "gateway/gateway_failure.h"
#include "gateway/gateway_ids.h"
#include "gateway/status_reply.h"
#include "store/sms_database.h"

namespace orvalo {

// The status pass: asks the gateway for status and charge of the sent messages that are due and
// enters the answers. Runs on the engine's worker thread, or, where no engine runs, on the thread
// of whoever wants a single pass; under the pass lock from start to end.
//
// Each answer is stored before the next question goes out, and only while the row still has the
// status under which it was chosen: one that has been opened for editing meanwhile keeps what it
// has, and is asked about again when the edit is given up.
class StatusPass {
 public:
  StatusPass(const EngineParts& parts, std::mutex& pass_lock)
      : parts_(parts), pass_lock_(pass_lock) {}

  // The pass for one message, whether due or not and without moving its schedule, or for every due
  // one (kEveryMessage). Does nothing offline. A failure inside ends the pass and is logged.
  void QueryMessageStatus(std::int32_t id);

  // What the passes of this object were not told, since it was forgotten last: how many questions
  // failed, and why the last one did.
  struct Unanswered {
    std::int32_t count = 0;
    GatewayFailure last;
  };
  const Unanswered& unanswered() const { return unanswered_; }
  void ForgetUnanswered() { unanswered_ = {}; }

 private:
  // The row in hand, as the store has it.
  struct Followed {
    std::int32_t id = 0;
    SmsStatus status = SmsStatus::kUnknown;
    std::string api_msg_id;
    std::optional<std::int32_t> next_interval;  // none: the schedule is not moved
  };

  std::int32_t WalkFollowed(std::int32_t id);  // how many replies carried a status
  // Asks about every gateway id of the row in order. Further ids of one row move to a copy of it.
  std::int32_t QueryRow(const SmsDatabase::FollowedSms& row, SmsStatus status, bool move_schedule,
                        std::int64_t now);
  std::optional<StatusReply> Ask(const GatewayIdEntry& entry);  // nothing: the gateway refused
  bool Store(Followed* row, SmsDatabase::QueryAnswer answer, std::int32_t asked_at);
  void SplitOff(Followed* row, const GatewayIdEntry& entry, const SmsDatabase::QueryAnswer& answer);
  void NoteUnanswered(const GatewayFailure& failure, const GatewayIdEntry& entry);

  EngineParts parts_;
  std::mutex& pass_lock_;
  std::int32_t highest_error_ = 0;
  Unanswered unanswered_;
};

}  // namespace orvalo
