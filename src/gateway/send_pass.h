#pragma once
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <vector>

#include "gateway/engine_parts.h"
#include "gateway/send_batch.h"
#include "gateway/send_outcome.h"
#include "gateway/send_plan.h"
#include "gateway/send_step.h"
#include "store/records.h"
#include "store/send_journal.h"

namespace orvalo {

// The send pass: takes Pending messages, newest first, sends each to its recipients and records
// what became of them. Runs on the engine's worker thread only, under the pass lock from start to
// end.
//
// Before its first request a message stands in the send journal, on the disk: who gets it, and the
// key under which the gateway takes it once. A run that is killed, or loses its power, leaves it
// there, and the next run goes on where it was. A message whose request nobody answers stays
// Processing and is taken up again by later passes, behind the Pending ones; when nobody is there
// at all, or two messages are not answered, the pass ends and the rest waits untouched.
//
// A component that keeps no keys: a message is marked Processing, on the disk, before its first
// recipient goes out, and whatever is not accepted has failed. A run killed in between leaves the
// message Processing, which the next start turns into Failed: it is never sent twice.
//
// The outcome of a message is one transaction. One that the store refuses (another program holds
// the file, the disk is full) is kept, the pass ends, and the next one begins with it; nothing else
// is sent before it is recorded.
class SendPass {
 public:
  SendPass(const EngineParts& parts, std::mutex& pass_lock);

  // The pass for one message id, or for every one that is to be sent (kEveryMessage). Sends nothing
  // offline. A failure inside (a full disk, say) ends the pass and is logged; the next pass runs
  // normally.
  void SendQueuedSMSs(std::int32_t id);

  // Lets the next pass try what waits at once. Without it the passes for every message leave an
  // outage alone for a while, from one minute to a quarter of an hour.
  void TryAgain() { next_try_ = 0; }

  // The engine ends: the last chance of an outcome that is kept.
  void Finish();

 private:
  // A message in hand, or one whose outcome the store has not taken yet.
  struct InHand {
    MessageRow row;
    std::int32_t delay = 0;
    SendOutcome outcome;
    bool complete = false;  // every recipient has its place in the outcome
  };
  enum class After { kGoOn, kGiveUp };  // with the rest of the pass

  // Runs a part of a pass under the pass lock; what it returns tells the outbox whether there was
  // anything to do.
  void Guarded(const std::function<bool()>& work);
  bool RecordInHand();                // false when nothing is in hand
  bool WalkPending(std::int32_t id);  // false when there was nothing to do
  bool WalkJournal(std::int32_t id);  // the same where the component keeps keys
  void ForgetPlanned(const std::deque<PlannedMessage>& planned);
  bool TakeRow(std::int32_t id,
               MessageRow* row);  // Pending → Processing, or false when it is not Pending
  After SendPlanned(const PlannedMessage& message, std::int32_t progress_index);
  After SendRow(const PlannedMessage& planned, std::int32_t progress_index);
  After LeaveWaiting(const PlannedMessage& message, const SendOutcome& outcome);
  std::vector<std::int32_t> UnfinishedFrom(std::int32_t id);
  void SetNextTry();
  OutgoingMessage Outgoing(const MessageRow& row, std::int32_t progress_index) const;
  void SendToAll(const PlannedMessage& planned, const OutgoingMessage& message,
                 SendOutcome* outcome);
  void SendOneByOne(const PlannedMessage& planned, const OutgoingMessage& message,
                    SendOutcome* outcome);

  EngineParts parts_;
  std::mutex& pass_lock_;
  SendJournal journal_;
  SendPlanner planner_;
  SendStep step_;
  SendBatch batch_;
  OutcomeRecorder recorder_;
  std::optional<InHand> in_hand_;
  int waiting_ = 0;                   // messages of this pass that nobody has answered
  bool nobody_there_ = false;         // for the last message of the last pass
  std::int32_t next_unfinished_ = 0;  // the last pass gave up at this message; 0: at none
  std::int64_t next_try_ = 0;         // the clock's tick
  std::int64_t pause_ = 0;            // milliseconds
};

}  // namespace orvalo
