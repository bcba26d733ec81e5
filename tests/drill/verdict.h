#pragma once
#include <string>
#include <vector>

#include "support/gateway_program.h"

namespace orvalo::test {

// Somebody whom one message is to reach, once: at this number, or, when his contact was edited
// before the message went out, at the other.
struct ExpectedRecipient {
  std::string number, other;
};

// How many recipients are not as they should be.
struct Verdict {
  int recipients = 0;
  int lost = 0;            // the gateway has never accepted a message for them
  int doubled = 0;         // it has accepted more than one, or one that nobody asked for
  int in_doubt = 0;        // the outbox does not know what became of them
  int wrongly_failed = 0;  // accepted, and the outbox says Failed
  int misreported = 0;     // accepted, and the outbox has no row, or not the gateway's id
  std::vector<std::string> examples;  // some of them, in words

  bool IsClean() const {
    return lost + doubled + in_doubt + wrongly_failed + misreported == 0 && examples.empty();
  }
};

// Compares the gateway's ledger with the rows of the outbox in `client_folder`.
Verdict Judge(const std::vector<ExpectedRecipient>& expected, const GatewayProgram& service,
              const std::string& client_folder);

}  // namespace orvalo::test
