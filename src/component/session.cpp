#include "component/session.h"

#include <algorithm>
#include <utility>

namespace orvalo::component {
namespace {

constexpr std::size_t kLongestAddress = 2000;

bool BelongsInAddress(char c) {
  const auto byte = static_cast<unsigned char>(c);
  constexpr std::string_view kForbidden = "@?#\"<>\\^`{|}";
  return byte > ' ' && byte < 0x7f && kForbidden.find(c) == kForbidden.npos;
}

bool TakeScheme(std::string_view* address, std::string_view scheme) {
  const auto same = [](char a, char s) { return (a >= 'A' && a <= 'Z' ? a + 32 : a) == s; };
  if (address->size() < scheme.size() || !std::equal(scheme.begin(), scheme.end(), address->begin(),
                                                     [&](char s, char a) { return same(a, s); })) {
    return false;
  }
  address->remove_prefix(scheme.size());
  return true;
}

}  // namespace

std::optional<std::string> ReadBaseAddress(std::string_view address) {
  while (!address.empty() && address.back() == '/') address.remove_suffix(1);
  std::string_view rest = address;
  if (address.size() > kLongestAddress ||
      (!TakeScheme(&rest, "http://") && !TakeScheme(&rest, "https://"))) {
    return std::nullopt;
  }
  const bool has_host = !rest.empty() && rest.front() != '/' && rest.front() != ':';
  if (!has_host || !std::all_of(rest.begin(), rest.end(), BelongsInAddress)) return std::nullopt;
  return std::string(address);
}

Session::State Session::Current() const {
  std::lock_guard guard(mutex_);
  return state_;
}

std::optional<Credentials> Session::credentials() const {
  std::lock_guard guard(mutex_);
  return credentials_;
}

bool Session::SetBase(std::string_view address) {
  auto base = ReadBaseAddress(address);
  if (!base) return false;
  std::lock_guard guard(mutex_);
  if (*base == state_.base) return true;
  EndLocked();
  state_.base = std::move(*base);
  return true;
}

void Session::Begin(const std::string& base, const Credentials& credentials,
                    const std::string& token) {
  std::lock_guard guard(mutex_);
  if (base != state_.base) return;
  state_.token = token;
  credentials_ = credentials;
}

void Session::Renew(const std::string& stale, const std::string& fresh) {
  std::lock_guard guard(mutex_);
  if (state_.token == stale) state_.token = fresh;
}

void Session::Expect(const Credentials& credentials) {
  std::lock_guard guard(mutex_);
  if (credentials_ && credentials_->user != credentials.user) EndLocked();
}

void Session::End() {
  std::lock_guard guard(mutex_);
  EndLocked();
}

void Session::EndLocked() {
  state_.token.clear();
  credentials_.reset();
}

}  // namespace orvalo::component
