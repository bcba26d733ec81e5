#pragma once
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>

namespace orvalo::platform {
class MessageBoxes;
}

namespace orvalo {

class AppSettings;
class GatewayClient;
class Log;
class Texts;
struct GatewayFailure;

// The operator's account at the gateway: logging in, balance, vouchers, password recovery. Called
// from the main thread and from the worker (keep-alive). Failures are reported to the operator
// where the operation says so.
class Account {
 public:
  // `log`, which may be null, gets the refusals. `wait_cursor` is told true before and false after
  // a call that the operator waits for; `logged_in` is called after every successful login. Both
  // may be empty and may be called on either thread.
  Account(AppSettings& settings, GatewayClient& gateway, const Texts& texts,
          platform::MessageBoxes& boxes, Log* log = nullptr,
          std::function<void(bool)> wait_cursor = {}, std::function<void()> logged_in = {});

  // True when logged in; the balance has then been asked for. Shows the no-connection message when
  // the server is unreachable. Whether the program works online from now on is the caller's to set,
  // after the login and never before: the engine sends as soon as it does.
  bool LoginToGateway(std::string_view user, std::string_view password);

  // Why the last login failed, in words for the operator; empty when it did not.
  std::string LoginFailure() const;

  // The balance in tenths, asked of the gateway when online; the last known one when offline or
  // when the query fails.
  std::int32_t QueryBalanceTenths();

  // Why the gateway did not tell its balance when it was asked last, in words for the operator;
  // empty when it did, or has not been asked.
  std::string BalanceFailure() const;

  // The balance in the gateway's own digits, when it has told it at the last question; else empty.
  std::string BalanceAsTold() const;

  // True when the gateway has sent a password to that address; `why` is told what else has
  // happened, in words for the operator.
  bool RecoverPassword(std::string_view user, std::string_view email, std::string* why = nullptr);

  // Redeems a complete voucher number (16 characters) and refreshes the balance. Every refusal is
  // shown to the operator: offline, incomplete number, unreachable, redeemed before, or the
  // gateway's own words.
  bool RedeemVoucher(std::string_view number);

  // The address of the account's web page, with the login token where the page can use it.
  std::string AccountPageAddress();

  // "Balance: 87.2", with "?" behind it while offline and after a query that failed; from the
  // string of the page that shows it.
  static constexpr int kComposeBalanceTextId = 1333;
  static constexpr int kOptionsBalanceTextId = 1398;
  std::string BalanceText(int text_id = kComposeBalanceTextId) const;
  // What there is to say about a balance that is not the account's own word; else empty.
  std::string BalanceHint() const;

 private:
  // The failure in words for the operator; the log gets the gateway's own.
  std::string Explain(const char* what, const GatewayFailure& failure);
  std::int32_t AskBalance();

  AppSettings& settings_;
  GatewayClient& gateway_;
  const Texts& texts_;
  platform::MessageBoxes& boxes_;
  Log* const log_;
  std::function<void(bool)> wait_cursor_;
  std::function<void()> logged_in_;

  mutable std::mutex mutex_;  // guards what follows
  std::string login_failure_, balance_failure_, balance_told_;
};

// A gateway's balance text in tenths: digits before the point, one decimal, further ones dropped.
struct BalanceValue {
  std::int32_t tenths = 0;
  bool with_fraction = false;  // the text had a decimal point
};
BalanceValue ParseBalance(std::string_view text);

}  // namespace orvalo
