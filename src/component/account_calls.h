#pragma once
#include <cstdint>
#include <string>

#include "component/gateway_protocol.h"
#include "platform/http.h"

namespace orvalo::component {

// What a member answers with: the error that smsERROR then tells, and the text; when it failed,
// also why, for smsERROR_TEXT and smsERROR_CAUSE.
struct Answer {
  int error = 0;
  std::string text;
  std::string reason = "";  // in words
  platform::HttpObstacle obstacle = platform::HttpObstacle::kNotKnown;
};

// "ERR: …" of an outcome that is not ok().
Answer RefusalAnswer(const Outcome& outcome);

// The members about the account and the connection. Any thread; all but SetBase and ConfigureProxy
// without a test talk to the service and block as GatewayProtocol says.
class AccountCalls {
 public:
  // All three must outlive this object.
  AccountCalls(GatewayProtocol& protocol, Session& session, platform::HttpClient& http);

  Answer LogIn(const Credentials& credentials);  // "OK"
  Answer Ping();                                 // "OK"
  Answer QueryBalance();                         // "87.2"
  // As JSON, {"balance": "87.2", "credits": "100.0"}: what there is, and all that was ever put in;
  // the difference is what all messages have cost. Error 102: the service does not tell.
  Answer QueryFunds();
  Answer RecoverPassword(const std::string& user, const std::string& email);   // "OK"
  Answer RedeemVoucher(const std::string& number);                             // "OK: 50.0"
  Answer RedeemVoucherAt(const std::string& number, const std::string& base);  // the same
  // A token for the account's page, for an address that others may get to see: one that opens the
  // page once and nothing else. The session's own when the service gives none such; "" without a
  // session.
  std::string PageToken();
  Answer SetBase(const std::string& base);  // "OK"; error 101 changes nothing

  // Sets the proxy from the next request on; `type` is a platform::ProxyMode by number, any other
  // is error 101 and changes nothing. A named proxy without a host or a proper port is error 95 at
  // once. With `test` set, asks for the service's health through it: error 95 as well when a named
  // proxy breaks off, 96 when it asks for a password or answers in the service's place. "OK".
  Answer ConfigureProxy(bool test, std::int32_t type, platform::ProxyConfig config);

 private:
  GatewayProtocol& protocol_;
  Session& session_;
  platform::HttpClient& http_;
};

}  // namespace orvalo::component
