#pragma once
#include <mutex>
#include <string>
#include <unordered_set>

#include "service/attempts.h"

namespace orvalo::service {

// Limits guesses at passwords within a minute: 10 of a user, 30 from an address. A user who has
// logged in from an address before has 10 of their own there, whatever others do: nobody can lock
// them out from elsewhere. Known places are forgotten at a restart. Any thread.
class LoginGuard {
 public:
  explicit LoginGuard(const platform::Clock& clock);

  // Before a try, which counts as wrong until it is told to have succeeded; so tries at the same
  // time are limited, too. False: not to be tried.
  bool Take(const std::string& user, const std::string& address);
  void Succeeded(const std::string& user, const std::string& address);

 private:
  bool IsKnown(const std::string& place);

  Attempts of_user_, of_address_, of_place_;
  std::mutex mutex_;
  std::unordered_set<std::string> known_;  // user and address
};

}  // namespace orvalo::service
