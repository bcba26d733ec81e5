#include "service/login_guard.h"

#include <vector>

#include "service/secrets.h"

namespace orvalo::service {
namespace {

constexpr int kOfUser = 10, kOfAddress = 30;
constexpr std::int64_t kMinuteMs = 60'000;
constexpr std::int64_t kDay = 24 * 3600, kKeepSeconds = 90 * kDay;

std::string PlaceOf(const std::string& user, const std::string& address) {
  return Digest(address + "\n" + user);
}

}  // namespace

LoginGuard::LoginGuard(Database& database, const platform::Clock& clock)
    : database_(database),
      clock_(clock),
      of_user_(clock, kOfUser, kMinuteMs),
      of_address_(clock, kOfAddress, kMinuteMs),
      of_place_(clock, kOfUser, kMinuteMs) {
  database_.Read([&](Connection& connection) {
    Query rows(connection, "SELECT place,last_login FROM login_place WHERE last_login>?",
               clock_.Now() - kKeepSeconds);
    while (rows.Step()) known_[rows.Text(0)] = rows.Int(1);
  });
}

bool LoginGuard::IsKnown(const std::string& user, const std::string& address) {
  return IsKnown(PlaceOf(user, address));
}

bool LoginGuard::Take(const std::string& user, const std::string& address) {
  const auto place = PlaceOf(user, address);
  if (IsKnown(place)) return of_place_.Take(place);
  if (of_user_.Exhausted(user) || !of_address_.Take(address)) return false;
  return of_user_.Take(user);
}

void LoginGuard::GiveBack(const std::string& user, const std::string& address) {
  const auto place = PlaceOf(user, address);
  if (IsKnown(place)) return of_place_.GiveBack(place);
  of_user_.GiveBack(user);
  of_address_.GiveBack(address);
}

void LoginGuard::Succeeded(const std::string& user, const std::string& address) {
  GiveBack(user, address);
  Remember(user, PlaceOf(user, address));
}

bool LoginGuard::IsKnown(const std::string& place) {
  std::lock_guard guard(mutex_);
  const auto known = known_.find(place);
  return known != known_.end() && known->second > clock_.Now() - kKeepSeconds;
}

// On the disk the last login is true to within a day.
void LoginGuard::Remember(const std::string& user, const std::string& place) {
  const auto now = clock_.Now();
  {
    std::lock_guard guard(mutex_);
    const auto known = known_.find(place);
    if (known != known_.end() && known->second > now - kDay) return;
  }
  std::vector<std::string> forgotten;
  database_.Write([&](Connection& connection) {
    forgotten.clear();
    Query(connection, "INSERT OR REPLACE INTO login_place(place,user,last_login) VALUES(?,?,?)",
          Blob{place}, user, now)
        .Run();
    Query rows(connection,
               "DELETE FROM login_place WHERE last_login<=?2 OR place IN (SELECT place FROM "
               "login_place WHERE user=?1 ORDER BY last_login DESC LIMIT -1 OFFSET 64) "
               "RETURNING place",
               user, now - kKeepSeconds);
    while (rows.Step()) forgotten.push_back(rows.Text(0));
  });
  std::lock_guard guard(mutex_);
  for (const auto& gone : forgotten) known_.erase(gone);
  known_[place] = now;
}

}  // namespace orvalo::service
