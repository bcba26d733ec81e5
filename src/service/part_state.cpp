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

}  // namespace

bool IsFree(PartState state) { return RowOf(state).is_free; }

const char* NameOf(PartState state) { return RowOf(state).name; }

GatewayStatus StatusOfPart(PartState state, std::int64_t due, std::int64_t now) {
  if (state == PartState::kWaiting && now < due) return GatewayStatus::kHeld;
  return RowOf(state).status;
}

GatewayStatus Worse(GatewayStatus a, GatewayStatus b) {
  return *std::find_if(kWorstFirst.begin(), kWorstFirst.end(),
                       [&](GatewayStatus status) { return status == a || status == b; });
}

}  // namespace orvalo::service
