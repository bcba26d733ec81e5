#pragma once
#include <chrono>
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
#include "service/voucher_desk.h"
#include "service/vouchers.h"

namespace orvalo::service {

struct ServiceOptions {
  std::string folder;
  HttpServerOptions http;
  int rate_limit = 2000;                          // requests of one account in a second
  std::chrono::milliseconds hold_refusals{1000};  // of those who are refused often
  SimulationOptions simulation;
  double drop_replies = 0;              // share of the submissions, 0 to 1
  std::optional<KannelOptions> kannel;  // the carrier; nothing: the simulated one
  // For the engine and for monitors; always there with a carrier that reports come back from.
  std::optional<HttpServerOptions> operations;
  std::function<void(const std::string&)> report = [](const std::string&) {};
};

// The whole service on one data folder. Construction makes everything ready and throws
// std::runtime_error when the folder cannot be had or is being served already; Listen opens the
// door, so that nobody comes before the accounts stand.
class GatewayService {
 public:
  GatewayService(const ServiceOptions& options, platform::Clock& clock);

  // Serves from here on, for as long as the object lives; once. Throws std::runtime_error when an
  // address cannot be had.
  void Listen();

  int port() const { return server_ ? server_->port() : 0; }  // 0: it does not listen yet
  int operations_port() const { return operations_ ? operations_->port() : 0; }  // 0: none
  Accounts& accounts() { return accounts_; }
  Vouchers& vouchers() { return vouchers_; }
  Pricing& pricing() { return pricing_; }
  Database& database() { return database_; }
  const Router& router() const { return router_; }
  const Router& operations_router() const { return operations_handler_.router(); }
  KannelCarrier* kannel() { return kannel_; }  // null: another carrier

 private:
  std::unique_ptr<Carrier> MakeCarrier(const ServiceOptions& options, platform::Clock& clock);
  void ListenForOperations(const HttpServerOptions& options);

  const std::optional<HttpServerOptions> operations_options_;
  const HttpServerOptions http_options_;
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
  VoucherDesk voucher_desk_;
  RecoveryMail mail_;
  AccountCalls account_calls_;
  MessageCalls message_calls_;
  AccountPage account_page_;
  Router router_;
  Attempts requests_;
  Api api_;
  OperationsHandler operations_handler_;
  std::unique_ptr<HttpServer> operations_;
  std::unique_ptr<HttpServer> server_;  // last: its requests need all the others
};

}  // namespace orvalo::service
