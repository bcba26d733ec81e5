#pragma once
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "platform/http.h"
#include "service/gateway_service.h"
#include "support/fake_clock.h"
#include "support/temporary_folder.h"

namespace orvalo::test {

struct JsonReply {
  int status = 0;  // 0: there was no reply
  nlohmann::json body;

  int code() const;  // of the error in the body; 0 when there is none
};

// Speaks the protocol to a gateway service on this machine. Any thread.
class GatewayCaller {
 public:
  // Logs in unless the user is "". Over TLS when there is a file of authorities.
  GatewayCaller(int port, const std::string& user, const std::string& authorities = "");

  // Bodies that are texts go out as they are; keys are drawn anew unless given.
  JsonReply Send(const std::string& method, const std::string& path, const std::string& body,
                 const std::string& key, const std::string& content_type = "application/json");
  JsonReply Get(const std::string& path) { return Send("GET", path, "", ""); }
  JsonReply Post(const std::string& path, const nlohmann::json& body, const std::string& key = "");

  bool LogIn(const std::string& user, const std::string& password);  // keeps the token
  std::string Balance() { return Get("/v1/balance").body.value("balance", "none"); }
  JsonReply Message(const std::string& number, const std::string& key = "");

  std::string token;
  platform::HttpClient client;

 private:
  std::string url_;
};

std::string NewKey();  // 32 hexadecimal digits that no call before has given

// A service in this process on a fresh data folder and a clock of ours, with the accounts "ann"
// (credit 100) and "bob" (credit 2), whose passwords are their names.
class RunningService {
 public:
  explicit RunningService(const service::SimulationOptions& simulation = {},
                          double drop_replies = 0);
  ~RunningService();

  void Restart(std::int64_t seconds_away = 0);
  GatewayCaller Caller(const std::string& user = "ann");  // logged in
  std::vector<service::Ledger::Entry> Entries();
  // Credits less charges, as the accounts have it and as the ledger adds up: must be the same.
  bool LedgerAddsUp();
  service::GatewayService& service() { return *service_; }

  FakeClock clock;
  TemporaryFolder folder;
  service::ServiceOptions options;

 private:
  void Stop();
  std::unique_ptr<service::GatewayService> service_;
};

// Sends the bytes to a port of this machine, then as many blanks, one every 50 ms until a reply
// begins, and returns what comes back until the end. `sent`: the blanks that went out.
std::string RawExchange(int port, const std::string& bytes, int blanks = 0, int* sent = nullptr);

}  // namespace orvalo::test
