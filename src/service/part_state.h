#pragma once
#include <cstdint>

#include "service/carrier.h"

namespace orvalo::service {

// Where one part of a message stands on its way out. The numbers are kept in the ledger's file and
// never change. Up to kAtNetwork a part is open: something may still come of it.
enum class PartState : int {
  kWaiting = 0,      // to be handed to the engine; surely not there yet
  kAsked = 1,        // being handed over; after a crash nobody knows
  kInDoubt = 2,      // handed over perhaps: no reply came. Only a report or a person settles it
  kTaken = 3,        // the engine has taken it
  kAtNetwork = 4,    // the mobile network has taken it
  kDelivered = 5,    // on the phone
  kUndelivered = 6,  // the network could not deliver it
  kExpired = 7,      // the network gave up, or never reported
  kDeleted = 8,      // the network deleted it
  kRefused = 9,      // the network refused it: something is wrong with the message
  kUnroutable = 10,  // the engine or the network refused it: no way to this number
  kBadMessage = 11,  // the engine refused it as malformed
  kOutdated = 12,    // its time passed before it could be handed over
  kWithdrawn = 13,   // not handed over because another part of its message was refused
  kWrittenOff = 14,  // in doubt, and a person decided that it was not sent
};

constexpr int kLastOpenState = static_cast<int>(PartState::kAtNetwork);

// Nothing was sent, so nothing is owed: the price of such a part goes back to its account.
bool IsFree(PartState state);

// A word for people and for metrics, "in_doubt".
const char* NameOf(PartState state);

// The gateway's status of a part. `due`: before that time a waiting part is held.
GatewayStatus StatusOfPart(PartState state, std::int64_t due, std::int64_t now);

// Which of two parts' statuses is the message's: the worse.
GatewayStatus Worse(GatewayStatus a, GatewayStatus b);

}  // namespace orvalo::service
