#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/clock.h"
#include "service/database.h"
#include "service/money.h"

namespace orvalo::service {

struct Account {
  std::int64_t id = 0;
  std::string user, email;
  Money balance = 0;
  Money credits = 0;  // all that was ever put in; less the charges it is the balance
};

// The accounts, their passwords and their credit. Any thread.
class Accounts {
 public:
  Accounts(Database& database, const platform::Clock& clock);

  // Why these cannot be an account's data, in a sentence; empty when they can.
  static std::string Problem(const std::string& user, const std::string& email,
                             const std::string& password);

  // False when the user name is taken.
  bool Add(const std::string& user, const std::string& email, const std::string& password,
           Money credit);
  // False when there is no such user. All sessions of the account end, and a temporary password.
  bool SetPassword(const std::string& user, const std::string& password);
  bool AddCredit(const std::string& user, Money amount);
  std::vector<Account> List();

  // The account that these open. A temporary password opens it as well. Takes as long for an
  // unknown user.
  std::optional<std::int64_t> Verify(const std::string& user, const std::string& password);

  struct Funds {
    Money balance = 0;
    Money credits = 0;  // all that was ever put in
  };
  std::optional<Funds> FundsOf(std::int64_t account);

  // Gives the account of this user and e-mail address (letter case does not count) a temporary
  // password, valid for 24 hours, in place of an earlier one, and returns it. Nothing when there is
  // no such account.
  std::optional<std::string> GiveTemporaryPassword(const std::string& user,
                                                   const std::string& email);

 private:
  Database& database_;
  const platform::Clock& clock_;
  const std::string nobodys_hash_;  // what an unknown user's password is tried against
};

}  // namespace orvalo::service
