#pragma once
#include <string>
#include <vector>

#include "component/account_calls.h"
#include "component/reply_verdict.h"

namespace orvalo::component {

// What the members about messages and batches answer to the outcome of a submission, each part of
// it checked before it is believed. Pure functions, any thread.

// "ID: " and the message's id.
Answer SentAnswer(const Outcome& outcome);

// "OK"; then and only then `batch` is set, to the id of the batch that was opened.
Answer OpenedAnswer(const Outcome& outcome, std::string* batch);

// A line for every one of `numbers`, also when the request failed as a whole.
Answer RecipientsAnswer(const Outcome& outcome, const std::vector<std::string>& numbers);

// "OK: 2 accepted".
Answer EndedAnswer(const Outcome& outcome);

// A submission whose reply the service has kept, told by `told`: what it came to then. `told`
// itself when it failed; error 98 unless it is about `key` (32 hexadecimal digits).
Outcome KeptOutcome(const Outcome& told, const std::string& key);

// The numbers that a reply about a batch's recipients names, in its order; empty for another.
std::vector<std::string> NumbersOf(const Outcome& outcome);

}  // namespace orvalo::component
