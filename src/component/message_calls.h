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
class MessageCalls {
 public:
  explicit MessageCalls(GatewayProtocol& protocol);  // must outlive this object

  // "ID: " and the message's id.
  Answer Send(const MessageOptions& options, const std::string& text, const std::string& number);

  // "OK". When the start fails there is no current batch: recipients never get the text of an
  // earlier one.
  Answer StartBatch(const MessageOptions& options, const std::string& text);

  // A line for every number of the comma-separated list, in its order (reply_texts.h): also when
  // the call failed as a whole, so that none of them is lost without a word. Empty numbers are
  // skipped. More than 1,000 numbers take several requests. The error is 0 when the service
  // answered for all of them, whatever it said of each.
  Answer SendToBatch(std::string_view numbers);

  // "OK: 2 accepted". There is no current batch afterwards, unless the service could not be asked.
  Answer EndBatch();

  Answer QueryCharge(const std::string& id);  // "status: 004 charge: 0.8"
  Answer QueryStatus(const std::string& id);  // "status: 004"

 private:
  std::string current_batch() const;
  void set_current_batch(const std::string& batch);
  Outcome QueryMessage(const std::string& id);

  GatewayProtocol& protocol_;
  mutable std::mutex mutex_;
  std::string batch_;  // its id; empty without a current batch
};

}  // namespace orvalo::component
