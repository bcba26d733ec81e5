#pragma once
#include <cstdint>

#include "gateway/engine_parts.h"
#include "gateway/send_step.h"
#include "store/records.h"
#include "store/send_journal.h"

namespace orvalo {

// Stores what became of a message's recipients: on the row when there is one recipient, as a row
// for each when there are several. Worker thread only.
class OutcomeRecorder {
 public:
  OutcomeRecorder(const EngineParts& parts, SendJournal& journal)
      : parts_(parts), journal_(journal) {}

  // All of it, and the end of the message's journal entry, in one transaction. `delay` is what the
  // message went out with. A row that is gone or not in Processing any more stays as it is. Throws
  // StoreError, having stored nothing.
  void Record(const MessageRow& row, std::int32_t delay, const SendOutcome& outcome);

 private:
  void RecordChildren(const MessageRow& row, const SendOutcome& outcome);
  void RecordSingle(const MessageRow& row, std::int32_t delay, const SendOutcome& outcome);

  EngineParts parts_;
  SendJournal& journal_;
};

}  // namespace orvalo
