#include "service/simulated_carrier.h"

namespace orvalo::service {
namespace {

constexpr std::string_view kSpecialEndings = "99";

// The last two digits when the number ends in 99 and two more, else -1.
int SpecialEnding(std::string_view number) {
  if (number.size() < 4 || number.substr(number.size() - 4, 2) != kSpecialEndings) return -1;
  const auto last = number.substr(number.size() - 2);
  return (last[0] - '0') * 10 + (last[1] - '0');
}

// The status that a message to this number ends at.
GatewayStatus FinalStatus(int ending) {
  const bool special = (ending >= 1 && ending <= 3) || (ending >= 5 && ending <= 11);
  return special ? static_cast<GatewayStatus>(ending) : GatewayStatus::kDelivered;
}

}  // namespace

SimulatedCarrier::SimulatedCarrier(const SimulationOptions& options, platform::Clock& clock)
    : options_(options), clock_(clock), throttle_(clock, options.throttle, 1000) {}

std::optional<Refusal> SimulatedCarrier::Admit() {
  if (!IsHealthy()) return Refuse(ErrorCode::kNetworkDown);
  if (options_.throttle > 0 && !throttle_.Take("")) return Refuse(ErrorCode::kTooManyRequests);
  if (options_.latency_ms > 0) clock_.Sleep(options_.latency_ms);
  return std::nullopt;
}

bool SimulatedCarrier::TakesNumber(std::string_view number) { return SpecialEnding(number) != 0; }

void SimulatedCarrier::Submit(const CarriedMessage&) { ++accepted_; }

GatewayStatus SimulatedCarrier::StatusOf(Connection&, const CarriedMessage& message,
                                         std::int64_t now) {
  const auto last = FinalStatus(SpecialEnding(message.number));
  // These three are where such a message stays from the start.
  if (last == GatewayStatus::kNotKnown || last == GatewayStatus::kQueued ||
      last == GatewayStatus::kHeld) {
    return last;
  }
  if (now < message.due) return GatewayStatus::kHeld;
  const auto elapsed = now - message.due;
  if (elapsed >= options_.delivery_seconds) return last;
  return elapsed * 2 < options_.delivery_seconds ? GatewayStatus::kQueued
                                                 : GatewayStatus::kHandedOver;
}

bool SimulatedCarrier::IsHealthy() {
  return options_.fail_after == 0 || accepted_.load() < options_.fail_after;
}

}  // namespace orvalo::service
