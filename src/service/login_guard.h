#pragma once
#include <cstdint>
#include <mutex>
#include <string>
#include <unordered_map>

#include "service/attempts.h"
#include "service/database.h"

namespace orvalo::service {

// Limits guesses at passwords within a minute: 10 of a user, 30 from an address. A user who has
// logged in from an address before has 10 of their own there, whatever others do: nobody can lock
// them out from elsewhere. Such places are kept in the data file, as digests, so that a restart
// amid guesses locks nobody out: 64 of a user, each for 90 days after the last login. Any thread.
class LoginGuard {
 public:
  LoginGuard(Database& database, const platform::Clock& clock);

  bool IsKnown(const std::string& user, const std::string& address);
  // Before a try, which counts as wrong until it is told to have succeeded; so tries at the same
  // time are limited, too. False: not to be tried.
  bool Take(const std::string& user, const std::string& address);
  void GiveBack(const std::string& user, const std::string& address);  // it was not tried
  // Throws what Database does; nothing but the place's memory is lost then.
  void Succeeded(const std::string& user, const std::string& address);

 private:
  bool IsKnown(const std::string& place);
  void Remember(const std::string& user, const std::string& place);

  Database& database_;
  const platform::Clock& clock_;
  Attempts of_user_, of_address_, of_place_;
  std::mutex mutex_;
  std::unordered_map<std::string, std::int64_t> known_;  // digest of user and address; last login
};

}  // namespace orvalo::service
