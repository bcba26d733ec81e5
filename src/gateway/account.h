#pragma once
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace orvalo::platform {
class MessageBoxes;
}

namespace orvalo {

class AppSettings;
class GatewayClient;
class Texts;

// The operator's account at the gateway: logging in, balance, vouchers, password recovery. Called
// from the main thread and from the worker (keep-alive). Failures are reported to the operator
// where the operation says so.
class Account {
 public:
  // `wait_cursor` is told true before and false after a call that the operator waits for;
  // `logged_in` is called after every successful login. Both may be empty and may be called on
  // either thread.
  Account(AppSettings& settings, GatewayClient& gateway, const Texts& texts,
          platform::MessageBoxes& boxes, std::function<void(bool)> wait_cursor = {},
          std::function<void()> logged_in = {});

  // True when logged in; the balance is then fresh. Shows the no-connection message when the server
  // is unreachable.
  bool LoginToGateway(std::string_view user, std::string_view password);

  // The balance in tenths, asked of the gateway when online; the last known one when offline or
  // when the query fails.
  std::int32_t QueryBalanceTenths();

  // True when the gateway has sent a password to that address.
  bool RecoverPassword(std::string_view user, std::string_view email);

  // Redeems a complete voucher number (16 characters) and refreshes the balance. Every refusal is
  // shown to the operator: offline, incomplete number, unreachable, redeemed before, or the
  // gateway's own words.
  bool RedeemVoucher(std::string_view number);

  // The address of the account's web page, with the login token where the page can use it.
  std::string AccountPageAddress();

  // "Balance: 87.2", with "?" behind it while offline; from the string of the page that shows it.
  static constexpr int kComposeBalanceTextId = 1333;
  static constexpr int kOptionsBalanceTextId = 1398;
  std::string BalanceText(int text_id = kComposeBalanceTextId) const;

 private:
  AppSettings& settings_;
  GatewayClient& gateway_;
  const Texts& texts_;
  platform::MessageBoxes& boxes_;
  std::function<void(bool)> wait_cursor_;
  std::function<void()> logged_in_;
};

// A gateway's balance text in tenths: digits before the point, one decimal, further ones dropped.
struct BalanceValue {
  std::int32_t tenths = 0;
  bool with_fraction = false;  // the text had a decimal point
};
BalanceValue ParseBalance(std::string_view text);

}  // namespace orvalo
