#pragma once
#include <string>

#include "component/account_calls.h"
#include "component/gateway_protocol.h"

namespace orvalo::component {

// A page of the account's messages in the order in which the service accepted them: the call, and
// what ListMessages answers to its outcome. Pure functions, any thread.

// `cursor` is what the page before named as the next, "" for the first page; `since` are seconds
// since 1970 UTC before which the first page does not begin, "" for no such limit. False, with
// `call` untouched, when either is nothing that can stand in an address.
bool ListCall(const std::string& cursor, const std::string& since, Call* call);

// JSON: {"messages": [{"id", "key", "to", "parts", "charge", "status", "accepted"}…], "next": "…"},
// each member checked, no others among them, and "next" only when there is another page: never the
// same `cursor` again. A service that does not have the call is error 102.
Answer ListAnswer(const Outcome& outcome, const std::string& cursor);

}  // namespace orvalo::component
