#pragma once
#include <cstddef>
#include <string_view>

#include "service/part_state.h"

namespace orvalo::service {

// All that can happen to a part of a message after it was accepted.
enum class PartEvent : int {
  kAsk,        // the engine is about to be asked to take it
  kRestart,    // the service has begun anew: nobody waits for an engine's answer any more
  kOldLedger,  // the ledger is of the past: whatever waits in it may have been sent since

  // The engine's answers. Only who asks is answered: one that comes after a report says nothing.
  kAnswerTaken,
  kAnswerNotSent,    // surely not; it may be asked again
  kAnswerNoWay,      // no way to the number
  kAnswerMalformed,  // refused as malformed
  kAnswerUnclear,    // it has the part perhaps

  // Delivery reports, which may be late, repeated, or before their time.
  kReportAtNetwork,
  kReportDelivered,
  kReportUndelivered,
  kReportExpired,
  kReportDeleted,
  kReportRefused,   // by the network, because of the message
  kReportNoNumber,  // by the network, because of the number
  kReportNoRoute,   // the engine knew no way to the number. It says so twice: in its answer, too
  kReportNoLink,    // the same while a link is down that may be the way
  kReportOutdated,  // its validity passed in the engine's queue

  // What time brings.
  kValidityPassed,
  kEngineLost,     // an engine that took it has it no longer, and has not reported it
  kNetworkSilent,  // the network has not reported it an hour past its validity

  // A person's decisions about what is in doubt.
  kDecidedSent,
  kDecidedNotSent,
  kDecidedAgain,

  kSiblingFailed,  // another part of its message costs nothing any more
};
constexpr std::size_t kPartEvents = static_cast<std::size_t>(PartEvent::kSiblingFailed) + 1;

// What then is to be done about the other parts of the message.
enum class Siblings {
  kLeave,
  kWithdraw,  // kSiblingFailed happens to each of them
  kJoin,      // when one of them costs nothing, kSiblingFailed happens to this part in turn
};

struct PartFate {
  PartState state;  // from now on; the old one when the event means nothing to it
  bool refund;      // its price goes back to the account
  Siblings siblings;
};

// The one place that decides what becomes of a part, and of its price. `refunded`: its price has
// gone back before.
PartFate FateOf(PartState state, bool refunded, PartEvent event);

// A word for people, "report_delivered".
const char* NameOf(PartEvent event);

// The bits of a delivery report's type (the engine's parameter "dlr-mask").
enum ReportBit : int {
  kReportBitDelivered = 1,
  kReportBitUndelivered = 2,
  kReportBitBuffered = 4,
  kReportBitAccepted = 8,
  kReportBitRefused = 16,
  kReportBitExpired = 32,
};
constexpr int kAllReportBits = 63;

// What a report of these bits (one at least) says. Of several, what says more about the phone.
// `detail` is the engine's text: the receipt of the network with "stat:", or "NACK/" and the
// refusal. Never kReportNoLink: the text does not tell.
PartEvent EventOfReport(int bits, std::string_view detail);

}  // namespace orvalo::service
