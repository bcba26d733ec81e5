#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "platform/clock.h"
#include "service/database.h"
#include "service/money.h"
#include "service/refusal.h"

namespace orvalo::service {

// Vouchers: each puts its amount into one account, once. Any thread.
class Vouchers {
 public:
  struct Voucher {
    std::string number;
    Money amount = 0;
    std::string redeemed_by;  // a user name; empty while it is unused
  };
  struct Redeemed {
    Money amount = 0;
    Money balance = 0;  // the account's, afterwards
  };

  Vouchers(Database& database, const platform::Clock& clock) : database_(database), clock_(clock) {}

  static bool IsNumber(std::string_view number);  // 16 digits

  bool Add(const std::string& number, Money amount);  // false when the number exists
  std::vector<Voucher> List();

  // Within a write.
  std::variant<Redeemed, Refusal> Redeem(Connection& connection, std::int64_t account,
                                         const std::string& number);

 private:
  Database& database_;
  const platform::Clock& clock_;
};

}  // namespace orvalo::service
