#pragma once
#include <cstdint>
#include <mutex>
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
// A message is marked Processing in the journal before its first recipient goes out; its outcome is
// recorded as one transaction. A run killed in between leaves it Processing, which the next start
// turns into Failed: it is never sent twice.
class SendPass {
 public:
  SendPass(const EngineParts& parts, std::mutex& pass_lock);

  // The pass for one message id, or for every Pending message (kEveryMessage). Does nothing
  // offline. A failure inside (a full disk, say) ends the pass and is logged; the next pass runs
  // normally.
  void SendQueuedSMSs(std::int32_t id);

 private:
  bool WalkPending(std::int32_t id);  // false when there was nothing to do
  bool TakeRow(std::int32_t id,
               MessageRow* row);  // Pending → Processing, or false when it is not Pending
  void SendRow(const MessageRow& row, std::int32_t progress_index);
  SendOutcome SendMessageRow(const OutgoingMessage& message, std::string_view to);
  void SendOneByOne(const OutgoingMessage& message, SendOutcome* outcome);
  void SendPersonalised(const OutgoingMessage& message, SendOutcome* outcome);
  void RecordOutcome(const MessageRow& row, std::int32_t delay, const SendOutcome& outcome);
  void RecordChildren(const MessageRow& row, const SendOutcome& outcome);
  void RecordSingle(const MessageRow& row, std::int32_t delay, const SendOutcome& outcome);

  EngineParts parts_;
  std::mutex& pass_lock_;
  Personaliser personaliser_;
  SendStep step_;
  SendBatch batch_;
};

}  // namespace orvalo
