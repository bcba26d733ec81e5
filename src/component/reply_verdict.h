#pragma once
#include <nlohmann/json.hpp>
#include <string>

#include "platform/http.h"

namespace orvalo::component {

// What a call of the service came to: the reply of a success, or an error (error_codes.h) and its
// reason, which may be the service's own words.
struct Outcome {
  int error = 0;
  std::string message;
  nlohmann::json reply;
  platform::HttpFailure failure = platform::HttpFailure::kNone;  // why there is no reply
  platform::HttpObstacle obstacle = platform::HttpObstacle::kNotKnown;

  bool ok() const { return error == 0; }
};

Outcome Failed(int error, std::string message);
Outcome NotUnderstood();  // 98

// What one reply (or the lack of one) means, and whether the same request may be tried again.
struct Verdict {
  enum class Again {
    kNo,
    kNoReply,      // it may have been carried out: only with the same idempotency key
    kLoad,         // the service accepted nothing for now
    kUnreachable,  // it never arrived
  };
  Outcome outcome;
  Again again = Again::kNo;
};

// Refusals because of load, which come with nothing accepted: 113, 500 and 503.
bool IsLoadRefusal(int error);

// What a reply with this HTTP status and body says. A pure function, any thread. A success is an
// object; whatever else comes with a status below 400, and a refusal that is not worded as the
// protocol wants it, is error 98.
Outcome OutcomeOf(int status, nlohmann::json body);

// The same of what came, or did not come, over the network, and whether to try again.
Verdict Judge(const platform::HttpReply& reply);

}  // namespace orvalo::component
