#include "service/gateway_service.h"

#include <stdexcept>

#include "platform/file.h"
#include "service/settings.h"

namespace orvalo::service {
namespace {

std::unique_ptr<platform::NamedMutex> TakeFolder(const std::string& folder) {
  if (!platform::MakeFolder(folder)) {
    throw std::runtime_error("the folder " + folder + " cannot be made");
  }
  auto lock = platform::NamedMutex::Create(folder, "orvalo-gateway");
  if (!lock) throw std::runtime_error("the folder " + folder + " is being served already");
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

GatewayService::GatewayService(const ServiceOptions& options, platform::Clock& clock)
    : lock_(TakeFolder(options.folder)),
      database_(options.folder),
      accounts_(database_, clock),
      sessions_(database_, clock),
      pricing_(database_),
      vouchers_(database_, clock),
      carrier_(options.simulation, clock),
      ledger_(pricing_, carrier_, clock),
      submissions_(database_, clock, options.drop_replies),
      mail_(options.folder + "/mail", clock),
      account_calls_({accounts_, sessions_, submissions_, vouchers_, carrier_, mail_, clock}),
      message_calls_({database_, submissions_, ledger_, carrier_, clock}),
      account_page_({database_, sessions_, submissions_, vouchers_, carrier_, clock,
                     !options.http.certificate.empty()}),
      router_(MakeRouter(account_calls_, message_calls_, account_page_)),
      requests_(clock, options.rate_limit, 1000),
      api_(router_, sessions_, requests_, options.report),
      server_(options.http, api_) {
  SaveDeliverySeconds(database_, options.simulation.delivery_seconds);
}

}  // namespace orvalo::service
