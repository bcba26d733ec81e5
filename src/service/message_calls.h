#pragma once
#include <functional>
#include <string>
#include <vector>

#include "platform/clock.h"
#include "service/batches.h"
#include "service/carrier.h"
#include "service/database.h"
#include "service/ledger.h"
#include "service/metrics.h"
#include "service/router.h"
#include "service/submissions.h"

namespace orvalo::service {

// The calls about messages and batches. Any thread.
class MessageCalls {
 public:
  struct Parts {
    Database& database;
    Submissions& submissions;
    Ledger& ledger;
    Carrier& carrier;
    Metrics& metrics;
    const platform::Clock& clock;
  };

  explicit MessageCalls(const Parts& parts) : parts_(parts), batches_(parts.clock) {}

  void Register(Router& router);

 private:
  // The outcome of a write that accepts messages: the reply, and what the carrier then gets.
  struct Accepted {
    ServedReply reply;
    std::vector<Ledger::Outcome> outcomes;
  };

  std::optional<Refusal> ReadContent(const Call& call, MessageContent* content);
  ServedReply PostMessage(const Call& call);
  ServedReply OpenBatch(const Call& call);
  ServedReply AddRecipients(const Call& call);
  ServedReply EndBatch(const Call& call);
  ServedReply GetMessage(const Call& call);
  ServedReply GetSubmission(const Call& call);
  ServedReply ListMessages(const Call& call);

  void Count(const Accepted& accepted);
  // `check` reads the request and may refuse it, unless it is a replay.
  ServedReply Submit(const Call& call, const std::function<std::optional<Refusal>()>& check,
                     const std::function<Accepted(Connection&)>& accept);
  Accepted AcceptRecipients(Connection& connection, const Call& call,
                            const std::vector<std::string>& numbers);

  Parts parts_;
  Batches batches_;
};

}  // namespace orvalo::service
