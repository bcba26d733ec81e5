#pragma once
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/clock.h"
#include "platform/named_mutex.h"
#include "service/account_calls.h"
#include "service/account_page.h"
#include "service/accounts.h"
#include "service/api.h"
#include "service/attempts.h"
#include "service/database.h"
#include "service/http_server.h"
#include "service/kannel_carrier.h"
#include "service/ledger.h"
#include "service/message_calls.h"
#include "service/operations_handler.h"
#include "service/pricing.h"
#include "service/recovery_mail.h"
#include "service/router.h"
#include "service/sessions.h"
#include "service/simulated_carrier.h"
#include "service/submissions.h"
#include "service/vouchers.h"

namespace orvalo::service {

struct ServiceOptions {
  std::string folder;
  HttpServerOptions http;
  int rate_limit = 2000;  // requests of one account in a second
  SimulationOptions simulation;
  double drop_replies = 0;              // share of the submissions, 0 to 1
  std::optional<KannelOptions> kannel;  // the carrier; nothing: the simulated one
  // For the engine and for monitors; always there with a carrier that reports come back from.
  std::optional<HttpServerOptions> operations;
  std::function<void(const std::string&)> report = [](const std::string&) {};
};

// The whole service on one data folder, serving for as long as it lives. Construction throws
// std::runtime_error when the folder or the address cannot be had, or the folder is being served
// already.
class GatewayService {
 public:
  GatewayService(const ServiceOptions& options, platform::Clock& clock);

  int port() const { return server_.port(); }
  int operations_port() const { return operations_ ? operations_->port() : 0; }  // 0: none
  Accounts& accounts() { return accounts_; }
  Vouchers& vouchers() { return vouchers_; }
  Pricing& pricing() { return pricing_; }
  Database& database() { return database_; }
  KannelCarrier* kannel() { return kannel_; }  // null: another carrier

 private:
  std::unique_ptr<Carrier> MakeCarrier(const ServiceOptions& options, platform::Clock& clock);
  std::unique_ptr<HttpServer> ServeOperations(const ServiceOptions& options);

  std::unique_ptr<platform::NamedMutex> lock_;
  Database database_;
  Accounts accounts_;
  Sessions sessions_;
  Pricing pricing_;
  Vouchers vouchers_;
  EventLog log_;
  Metrics metrics_;
  KannelCarrier* kannel_ = nullptr;
  std::unique_ptr<Carrier> carrier_;
  Ledger ledger_;
  Submissions submissions_;
  RecoveryMail mail_;
  AccountCalls account_calls_;
  MessageCalls message_calls_;
  AccountPage account_page_;
  Router router_;
  Attempts requests_;
  Api api_;
  OperationsHandler operations_handler_;
  std::unique_ptr<HttpServer> operations_;
  HttpServer server_;  // last: requests come as soon as it is there
};

}  // namespace orvalo::service
