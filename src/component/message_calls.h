#pragma once
#include <cstdint>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "component/account_calls.h"
#include "component/gateway_protocol.h"

namespace orvalo::component {

// How a message is sent: the put properties at the moment of the call.
struct MessageOptions {
  std::int32_t type = 0;
  std::int32_t concat = 0;
  std::int32_t delivery_minutes = 0;  // a negative number means at once, as 0 does
  std::string sender;
  bool unicode = false;
  bool acknowledge = false;
  bool encoded = false;  // the text is the output of EncodeToUnicode
};

// The members about messages and batches. Any thread. There is one current batch for all threads:
// it is the one that was started last.
//
// `key` is the idempotency key of a submission, 32 hexadecimal digits; with "" one is drawn.
class MessageCalls {
 public:
  explicit MessageCalls(GatewayProtocol& protocol);  // must outlive this object

  // "ID: " and the message's id.
  Answer Send(const std::string& key, const MessageOptions& options, const std::string& text,
              const std::string& number);

  // "OK". When the start fails there is no current batch: recipients never get the text of an
  // earlier one.
  Answer StartBatch(const std::string& key, const MessageOptions& options, const std::string& text);

  // A line for every number of the comma-separated list, in its order (reply_texts.h): also when
  // the call failed as a whole, so that none of them is lost without a word. Empty numbers are
  // skipped. More than 1,000 numbers take several requests, whose keys follow from `key`
  // (submission_key.h). The error is 0 when the service answered for all of them, whatever it said
  // of each.
  Answer SendToBatch(const std::string& key, std::string_view numbers);

  // "OK: 2 accepted". There is no current batch afterwards, unless the service could not be asked.
  Answer EndBatch(const std::string& key);

  Answer QueryCharge(const std::string& id);  // "status: 004 charge: 0.8"
  Answer QueryStatus(const std::string& id);  // "status: 004"

  // What the submission with this key was answered, text and error alike, be it the answer of Send,
  // StartBatch, SendToBatch or EndBatch. A batch that it opened becomes the current one; a long
  // list is told as far as its requests came to the service. Error 209: no submission of this
  // account with this key is known to the service; 102: the service does not tell; 101: not a key.
  // When all recipients were refused with one word ("There is no such batch"), "ERR: …" stands for
  // their lines.
  Answer QuerySubmission(const std::string& key);

  // A page of the account's messages, as JSON (message_list.h). Error 101: the cursor or the time
  // is none; 102: the service does not list messages.
  Answer ListMessages(const std::string& cursor, const std::string& since);

 private:
  std::string current_batch() const;
  void set_current_batch(const std::string& batch);
  Outcome QueryMessage(const std::string& id);
  Outcome QueryKept(const std::string& key);
  Answer QueryRecipients(const std::string& key, Outcome kept);

  GatewayProtocol& protocol_;
  mutable std::mutex mutex_;
  std::string batch_;  // its id; empty without a current batch
};

}  // namespace orvalo::component
