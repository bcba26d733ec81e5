#include "service/login_guard.h"

namespace orvalo::service {
namespace {

constexpr int kOfUser = 10, kOfAddress = 30;
constexpr std::int64_t kMinuteMs = 60'000;
constexpr std::size_t kMostKnown = 100'000;

std::string PlaceOf(const std::string& user, const std::string& address) {
  return address + "\n" + user;
}

}  // namespace

LoginGuard::LoginGuard(const platform::Clock& clock)
    : of_user_(clock, kOfUser, kMinuteMs),
      of_address_(clock, kOfAddress, kMinuteMs),
      of_place_(clock, kOfUser, kMinuteMs) {}

bool LoginGuard::Take(const std::string& user, const std::string& address) {
  const auto place = PlaceOf(user, address);
  if (IsKnown(place)) return of_place_.Take(place);
  if (of_user_.Exhausted(user) || !of_address_.Take(address)) return false;
  return of_user_.Take(user);
}

void LoginGuard::Succeeded(const std::string& user, const std::string& address) {
  const auto place = PlaceOf(user, address);
  if (IsKnown(place)) return of_place_.GiveBack(place);
  of_user_.GiveBack(user);
  of_address_.GiveBack(address);
  std::lock_guard guard(mutex_);
  if (known_.size() >= kMostKnown) known_.clear();
  known_.insert(place);
}

bool LoginGuard::IsKnown(const std::string& place) {
  std::lock_guard guard(mutex_);
  return known_.contains(place);
}

}  // namespace orvalo::service
