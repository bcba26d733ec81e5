#include "service/part_state.h"

#include <algorithm>
#include <array>

namespace orvalo::service {
namespace {

struct StateRow {
  PartState state;
  const char* name;
  GatewayStatus status;
  bool is_free;
};

// The table of docs/gateway-service.md, "What the statuses mean".
constexpr std::array kStates{
    StateRow{PartState::kWaiting, "waiting", GatewayStatus::kQueued, false},
    StateRow{PartState::kAsked, "asked", GatewayStatus::kQueued, false},
    StateRow{PartState::kInDoubt, "in_doubt", GatewayStatus::kNotKnown, false},
    StateRow{PartState::kTaken, "taken", GatewayStatus::kQueued, false},
    StateRow{PartState::kAtNetwork, "at_network", GatewayStatus::kHandedOver, false},
    StateRow{PartState::kDelivered, "delivered", GatewayStatus::kDelivered, false},
    StateRow{PartState::kUndelivered, "undelivered", GatewayStatus::kDeliveryError, false},
    StateRow{PartState::kExpired, "expired", GatewayStatus::kExpired, false},
    StateRow{PartState::kDeleted, "deleted", GatewayStatus::kCancelled, false},
    StateRow{PartState::kRefused, "refused", GatewayStatus::kMessageError, true},
    StateRow{PartState::kUnroutable, "unroutable", GatewayStatus::kRoutingError, true},
    StateRow{PartState::kBadMessage, "bad_message", GatewayStatus::kMessageError, true},
    StateRow{PartState::kOutdated, "outdated", GatewayStatus::kExpired, true},
    StateRow{PartState::kWithdrawn, "withdrawn", GatewayStatus::kCancelled, true},
    StateRow{PartState::kWrittenOff, "written_off", GatewayStatus::kCancelled, true},
};

const StateRow& RowOf(PartState state) { return kStates.at(static_cast<std::size_t>(state)); }

// From the worst to the best. A message with one failed part has failed, whatever the others do.
constexpr std::array kWorstFirst{
    GatewayStatus::kMessageError,  GatewayStatus::kRoutingError, GatewayStatus::kDeliveryError,
    GatewayStatus::kExpired,       GatewayStatus::kCancelled,    GatewayStatus::kNotKnown,
    GatewayStatus::kHeld,          GatewayStatus::kQueued,       GatewayStatus::kHandedOver,
    GatewayStatus::kNoFurtherNews, GatewayStatus::kDelivered};

bool Holds(std::string_view text, std::string_view piece) {
  return text.find(piece) != std::string_view::npos;
}

// A receipt quotes the beginning of the message after "text:": what its writer put there says
// nothing.
std::string_view WithoutQuote(std::string_view detail) {
  return detail.substr(0, detail.find(" text:"));
}

// The refusals that speak of the number; all others speak of the message or of the account at the
// network. (SMPP 3.4, 5.1.3: 0x0B is an invalid destination address.)
bool IsRefusalOfNumber(std::string_view detail) {
  return Holds(detail, "0x0000000b") || Holds(detail, "no SMSC");
}

}  // namespace

bool SaysNoRoute(int bits, std::string_view detail) {
  return bits == kReportRefused && Holds(detail, "no SMSC");
}

bool IsFree(PartState state) { return RowOf(state).is_free; }

const char* NameOf(PartState state) { return RowOf(state).name; }

PartState AfterReport(PartState state, int bits, std::string_view detail) {
  if (bits & kReportDelivered) return PartState::kDelivered;
  if (state == PartState::kDelivered) return state;
  if (bits & kReportExpired) return PartState::kExpired;
  detail = WithoutQuote(detail);
  if (bits & kReportUndelivered) {
    // Only from some networks does a receipt say so in the bits.
    if (Holds(detail, "stat:EXPIRED")) return PartState::kExpired;
    return Holds(detail, "stat:DELETED") ? PartState::kDeleted : PartState::kUndelivered;
  }
  // The rest are steps on the way; what has ended does not begin again, unless it was a person or
  // a clock that ended it.
  const bool presumed = state == PartState::kOutdated || state == PartState::kWithdrawn ||
                        state == PartState::kWrittenOff;
  if (static_cast<int>(state) > kLastOpenState && !presumed) return state;
  if (bits & kReportRefused) {
    if (Holds(detail, "validity expired")) return PartState::kOutdated;  // still in the engine
    return IsRefusalOfNumber(detail) ? PartState::kUnroutable : PartState::kRefused;
  }
  return bits & (kReportAccepted | kReportBuffered) ? PartState::kAtNetwork : state;
}

GatewayStatus StatusOfPart(PartState state, std::int64_t due, std::int64_t now) {
  if (state == PartState::kWaiting && now < due) return GatewayStatus::kHeld;
  return RowOf(state).status;
}

GatewayStatus Worse(GatewayStatus a, GatewayStatus b) {
  return *std::find_if(kWorstFirst.begin(), kWorstFirst.end(),
                       [&](GatewayStatus status) { return status == a || status == b; });
}

}  // namespace orvalo::service
