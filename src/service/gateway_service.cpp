#include "service/gateway_service.h"

#include <fmt/format.h>

#include <stdexcept>

#include "platform/file_replacement.h"
#include "platform/terminal.h"
#include "service/settings.h"

namespace orvalo::service {
namespace {

std::unique_ptr<platform::NamedMutex> TakeFolder(const std::string& folder) {
  using platform::NamedMutex;
  constexpr const char* kName = "orvalo-gateway";
  PrepareFolder(folder);
  auto outcome = NamedMutex::Outcome::kHeld;
  platform::FileError error;
  auto lock = NamedMutex::Create(folder, kName, &outcome, &error);
  if (outcome == NamedMutex::Outcome::kElsewhere) {
    throw std::runtime_error("the folder " + folder + " is being served already");
  }
  if (!lock && error.kind == platform::FileError::Kind::kFull) throw DiskFull(folder);
  if (!lock) {
    throw std::runtime_error(fmt::format(
        "{} cannot be locked by the user {}: {}. The folder must be this user's, and on a disk "
        "that can be written to",
        NamedMutex::PathOf(folder, kName), platform::UserName(), error.detail));
  }
  // What killed writes have left; nobody else works here now.
  platform::RemoveDeadTemporaries(folder);
  platform::RemoveDeadTemporaries(folder + "/mail");
  return lock;
}

Router MakeRouter(AccountCalls& account_calls, MessageCalls& message_calls,
                  AccountPage& account_page) {
  Router router;
  account_calls.Register(router);
  message_calls.Register(router);
  account_page.Register(router);
  return router;
}

}  // namespace

std::unique_ptr<Carrier> GatewayService::MakeCarrier(const ServiceOptions& options,
                                                     platform::Clock& clock) {
  if (!options.kannel) return std::make_unique<SimulatedCarrier>(options.simulation, clock);
  auto carrier = std::make_unique<KannelCarrier>(
      *options.kannel, KannelCarrier::Parts{database_, clock, metrics_, log_});
  kannel_ = carrier.get();
  return carrier;
}

GatewayService::GatewayService(const ServiceOptions& options, platform::Clock& clock)
    : operations_options_(options.operations),
      http_options_(options.http),
      lock_(TakeFolder(options.folder)),
      database_(options.folder),
      accounts_(database_, clock),
      sessions_(database_, clock),
      pricing_(database_),
      vouchers_(database_, clock),
      log_(clock, options.report),
      carrier_(MakeCarrier(options, clock)),
      ledger_(pricing_, *carrier_, clock),
      submissions_(database_, clock, options.drop_replies),
      voucher_desk_(submissions_, vouchers_, clock),
      mail_(options.folder + "/mail", clock),
      account_calls_({database_, accounts_, sessions_, voucher_desk_, *carrier_, mail_, clock}),
      message_calls_({database_, submissions_, ledger_, *carrier_, metrics_, clock}),
      account_page_(
          {database_, sessions_, voucher_desk_, *carrier_, clock, options.http.has_tls()}),
      router_(MakeRouter(account_calls_, message_calls_, account_page_)),
      requests_(clock, options.rate_limit, 1000),
      api_({router_, sessions_, requests_, metrics_, clock}, options.hold_refusals,
           [this](const std::string& line) {
             log_.Error("call_failed", {{"reason", line}});
           }),
      operations_handler_({database_, metrics_, log_, clock, *carrier_, kannel_}) {
  SaveDeliverySeconds(database_, options.simulation.delivery_seconds);
}

void GatewayService::Listen() {
  if (operations_options_) ListenForOperations(*operations_options_);
  server_ = std::make_unique<HttpServer>(http_options_, api_);
}

// Reports may come from the start; what is handed over from here on brings the first new ones.
void GatewayService::ListenForOperations(const HttpServerOptions& options) {
  operations_ = std::make_unique<HttpServer>(options, operations_handler_);
  if (kannel_ == nullptr) return;
  const bool v6 = options.address.find(':') != std::string::npos;
  kannel_->Start(fmt::format("{}://{}{}{}:{}", options.has_tls() ? "https" : "http", v6 ? "[" : "",
                             options.address, v6 ? "]" : "", operations_->port()));
}

}  // namespace orvalo::service
