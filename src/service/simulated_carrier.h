#pragma once
#include <atomic>

#include "platform/clock.h"
#include "service/attempts.h"
#include "service/carrier.h"

namespace orvalo::service {

struct SimulationOptions {
  std::int64_t delivery_seconds = 2;  // from acceptance (or the delivery time) to the final status
  std::int64_t latency_ms = 0;        // each submission takes at least this long
  int throttle = 0;                   // submissions in a second, 0 for no limit
  std::int64_t fail_after = 0;        // accepted recipients, then it is out of order; 0 for never
};

// A phone network that is none: what becomes of a message follows from its number and the time
// alone, as docs/gateway-protocol.md lists it, so that every run can be repeated.
class SimulatedCarrier : public Carrier {
 public:
  SimulatedCarrier(const SimulationOptions& options, platform::Clock& clock);

  std::optional<Refusal> Admit() override;
  std::optional<Refusal> Fit(MessageContent&) override { return std::nullopt; }
  bool TakesNumber(std::string_view number) override;
  void Record(Connection&, const CarriedMessage&, Money) override {}
  void Submit(const CarriedMessage& message) override;
  GatewayStatus StatusOf(Connection&, const CarriedMessage& message, std::int64_t now) override;
  bool IsHealthy() override;

 private:
  const SimulationOptions options_;
  platform::Clock& clock_;
  Attempts throttle_;
  std::atomic<std::int64_t> accepted_{0};
};

}  // namespace orvalo::service
