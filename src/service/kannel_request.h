#pragma once
#include <string>
#include <string_view>
#include <vector>

#include "platform/http.h"
#include "service/kannel_options.h"
#include "service/outbox.h"

namespace orvalo::service {

// One request to the engine: one part of a text, for one or many numbers, all different. Reports
// about it come back under its key, which nobody can guess.
struct Handover {
  std::string key;                  // 16 bytes
  std::vector<outbox::Waiting> to;  // the same in all but the number
};

// What the engine's reply says.
enum class EngineAnswer {
  kTaken,        // it has the message
  kTakenSlowly,  // it has the message, and the link to the network is down or its queue long
  kUnroutable,   // no way to the number, or to one of the numbers
  kNoLink,       // the same, while a link that may be the way is down
  kDenied,       // all numbers are denied; nothing was sent
  kBadMessage,   // the request is refused as malformed; nothing was sent
  kBusy,         // its queue is full: the number, or one of the numbers, was not taken
  kWrongLogin,   // the service's user or password is refused; nothing was sent
  kNotAsked,     // it was surely not reached
  kUnclear,      // no reply, or none that makes sense: it may have the message
};

const char* NameOf(EngineAnswer answer);

// The numbers that make one handover of the waiting parts: same content, no number twice.
std::vector<Handover> GroupUp(std::vector<outbox::Waiting> waiting, std::size_t most_receivers);

// The request as it goes to `url` now. Nothing of the login is in its address, which engines log.
// The engine may try for what is left of the validity.
platform::HttpRequest RequestOf(const Handover& handover, const KannelOptions& options,
                                const std::string& url, std::int64_t now);

EngineAnswer ReadAnswer(const platform::HttpReply& reply);

// What the answer means to each part of a handover to `receivers` numbers. The engine replies as
// soon as it knows of one receiver: for several, a refusal may be one's alone. Each then has a
// report of its own, but for a full queue, which is never reported.
PartEvent EventOf(EngineAnswer answer, std::size_t receivers);

}  // namespace orvalo::service
