#pragma once
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "gateway/engine_parts.h"
#include "gateway/recipients.h"

namespace orvalo {

class MessageSubmissions;

// One message on its way out: what every recipient of it shares.
struct OutgoingMessage {
  std::int32_t type = 0;  // as stored
  std::string text;       // as stored, fields not yet replaced
  std::string sender_id;
  std::int32_t delay = 0;                     // seconds until it is to be delivered; 0: at once
  std::int32_t progress_index = 0;            // rows of this pass still to do, this one counted
  MessageSubmissions* submissions = nullptr;  // the way out of it
};

// A recipient that the gateway has not taken, and why: see ReasonText.
struct RefusedRecipient : RecipientRecord {
  std::string reason;
  bool stopped = false;  // by the operator
};

// What became of a message's recipients.
struct SendOutcome {
  std::int32_t recipients = 0;  // how many the recipient string yielded
  std::vector<RecipientRecord> all;
  std::vector<RecipientRecord> successes;
  std::vector<RefusedRecipient> failures;
  std::vector<RecipientRecord> retries;  // not tried: the engine stops, or nobody is logged in
  bool no_session = false;               // the gateway takes nothing until the next login
  bool waiting = false;  // a submission is open: what is on no list goes out later, under its key
  std::string why_waiting;
  std::vector<RefusedRecipient> in_doubt;  // the gateway cannot tell whether it has them
  std::int32_t highest_error = 0;
  std::string unnamed_reason;  // why recipients failed that no list names
};

// The wire forms of a text: what the component is given, as UTF-16.
class WireText {
 public:
  // Unicode messages pass through the component's encoder; its answer replaces the text when there
  // is one.
  static std::u16string Of(std::string_view text, bool unicode, GatewayClient& gateway);
};

// Puts one recipient on the wire. Worker thread only.
class SendStep {
 public:
  enum class Kind { kPlain, kPersonalised };  // chooses the log lines

  explicit SendStep(const EngineParts& parts) : parts_(parts) {}

  // Hands the per-message properties to the component; they hold until they are set again.
  void SetProperties(const OutgoingMessage& message);

  // Sends `wire` to `record`'s number and puts the record on the outcome's success or failure list;
  // on the retry list when the engine is to stop; on none when nobody answers, or when it is to
  // stop and the record may have gone out before: the outcome is then waiting, and so are all that
  // follow. `text` is the same text for the log; `position` is the record's among the message's
  // recipients.
  void Send(Kind kind, const OutgoingMessage& message, std::string_view text,
            const std::u16string& wire, const RecipientRecord& record, std::int32_t position,
            SendOutcome* outcome);

 private:
  EngineParts parts_;
};

}  // namespace orvalo
