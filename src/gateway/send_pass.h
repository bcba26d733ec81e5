#pragma once
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <string_view>

#include "gateway/engine_parts.h"
#include "gateway/personalise.h"
#include "gateway/send_batch.h"
#include "gateway/send_step.h"
#include "store/records.h"

namespace orvalo {

// The send pass: takes Pending messages, newest first, sends each to its recipients and records
// what became of them. Runs on the engine's worker thread only, under the pass lock from start to
// end.
//
// A message is marked Processing, on the disk, before its first recipient goes out; its outcome is
// recorded as one transaction. An outcome that the store refuses (another program holds the file,
// the disk is full) is kept, the pass ends, and the next one begins with it; nothing else is sent
// before it is recorded. A run killed in between leaves the message Processing, which the next
// start turns into Failed: it is never sent twice.
class SendPass {
 public:
  SendPass(const EngineParts& parts, std::mutex& pass_lock);

  // The pass for one message id, or for every Pending message (kEveryMessage). Sends nothing
  // offline. A failure inside (a full disk, say) ends the pass and is logged; the next pass runs
  // normally.
  void SendQueuedSMSs(std::int32_t id);

  // The engine ends: the last chance of an outcome that is kept.
  void Finish();

 private:
  // A message in hand, or one whose outcome the store has not taken yet.
  struct InHand {
    MessageRow row;
    std::int32_t delay = 0;
    SendOutcome outcome;
  };

  // Runs a part of a pass under the pass lock; what it returns tells the outbox whether there was
  // anything to do.
  void Guarded(const std::function<bool()>& work);
  bool RecordInHand();                // false when nothing is in hand
  bool WalkPending(std::int32_t id);  // false when there was nothing to do
  bool TakeRow(std::int32_t id,
               MessageRow* row);  // Pending → Processing, or false when it is not Pending
  bool SendRow(MessageRow row, std::int32_t progress_index);  // false: nobody is logged in
  void SendMessageRow(const OutgoingMessage& message, std::string_view to, SendOutcome* outcome);
  void SendOneByOne(const OutgoingMessage& message, SendOutcome* outcome);
  void SendPersonalised(const OutgoingMessage& message, SendOutcome* outcome);
  void RecordOutcome(const InHand& message);
  void RecordChildren(const MessageRow& row, const SendOutcome& outcome);
  void RecordSingle(const MessageRow& row, std::int32_t delay, const SendOutcome& outcome);

  EngineParts parts_;
  std::mutex& pass_lock_;
  Personaliser personaliser_;
  SendStep step_;
  SendBatch batch_;
  std::optional<InHand> in_hand_;
};

}  // namespace orvalo
