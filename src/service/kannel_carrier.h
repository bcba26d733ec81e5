#pragma once
#include <atomic>

#include "platform/http.h"
#include "service/carrier.h"
#include "service/outbox_sender.h"
#include "service/outbox_warden.h"

namespace orvalo::service {

// Brings messages to real phones: through the outbox to a Kannel engine, and back from there as
// delivery reports.
class KannelCarrier : public Carrier {
 public:
  struct Parts {
    Database& database;
    platform::Clock& clock;
    Metrics& metrics;
    const EventLog& log;
  };

  KannelCarrier(KannelOptions options, const Parts& parts);
  ~KannelCarrier() override;

  // Begins to hand over. `report_url` is where the engine reaches this service, unless the options
  // name it.
  void Start(const std::string& report_url);

  std::optional<Refusal> Admit() override;
  std::optional<Refusal> Fit(MessageContent& content) override;
  bool TakesNumber(std::string_view) override { return true; }
  void Record(Connection& connection, const CarriedMessage& message, Money charge) override;
  void Submit(const CarriedMessage& message) override;
  GatewayStatus StatusOf(Connection& connection, const CarriedMessage& message,
                         std::int64_t now) override;
  bool IsHealthy() override { return watch_.CanSend(); }

  // A delivery report: nothing when it is about nothing that is known here. On the disk when this
  // returns.
  std::optional<outbox::Reported> TakeReport(std::string_view key, std::string_view number,
                                             int bits, std::string_view detail);

  const EngineWatch& watch() const { return watch_; }
  OutboxWarden& warden() { return warden_; }

 private:
  KannelOptions options_;
  const Parts parts_;
  platform::HttpClient client_;
  EngineWatch watch_;
  OutboxSender sender_;
  OutboxWarden warden_;
  std::atomic<std::uint32_t> reference_;
  std::atomic<std::int64_t> next_count_{0}, waiting_{0};  // a tick, and what was counted then
};

}  // namespace orvalo::service
