#pragma once
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "gateway/engine_parts.h"
#include "gateway/send_step.h"

namespace orvalo {

// One text to many numbers: StartBatch, QuickBatchSend for chunks of about 512 characters of
// numbers, EndBatch. Worker thread only.
class SendBatch {
 public:
  SendBatch(const EngineParts& parts, SendStep& step) : parts_(parts), step_(step) {}

  // Sends to all of outcome->all and fills the outcome's lists. Recipients that no reply names are
  // put on none of them; a stop request puts the chunks not yet sent on the retry list; where
  // nobody answers the outcome is waiting. Chunks whose answer the journal has are not sent again.
  // Returns how many were sent.
  std::int32_t Send(const OutgoingMessage& message, SendOutcome* outcome);

 private:
  struct Chunk {
    std::int32_t position;  // of its first record among the message's recipients
    std::string_view numbers;
    std::span<const RecipientRecord> records;
  };

  // False: nothing of the `rest` goes out now, and it is on the lists that it belongs on.
  bool Start(const OutgoingMessage& message, std::span<const RecipientRecord> rest,
             SendOutcome* outcome);
  std::int32_t SendChunk(const Chunk& chunk, const OutgoingMessage& message, SendOutcome* outcome);
  void End(const OutgoingMessage& message, SendOutcome* outcome);
  std::string Why(const GatewayFailure& failure) const;
  std::string Reason(const GatewayFailure& failure) const;  // empty for a success

  EngineParts parts_;
  SendStep& step_;
};

// Enters a chunk's reply into the lists: each entry belongs to the first record of the chunk with
// its number; an entry that matches none is dropped. Returns how many were sent. The reasons of
// failures are the reply's own words.
std::int32_t RecordChunkReply(std::string_view reply, std::span<const RecipientRecord> chunk,
                              SendOutcome* outcome);

}  // namespace orvalo
