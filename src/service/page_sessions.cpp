#include "service/page_sessions.h"

#include <algorithm>

#include "service/secrets.h"

namespace orvalo::service {
namespace {

constexpr std::int64_t kTokenMs = 2 * 60'000;
constexpr std::int64_t kIdleMs = 30 * 60'000;
constexpr int kBrowsersOfAnAccount = 16;
constexpr std::size_t kSecretBytes = 32;

}  // namespace

std::string PageSessions::GiveToken(std::int64_t account) {
  auto token = ToHex(RandomBytes(kSecretBytes));
  std::lock_guard guard(mutex_);
  tokens_[account] = {Digest(token), clock_.Tick() + kTokenMs};
  return token;
}

std::optional<std::int64_t> PageSessions::TakeToken(std::string_view token) {
  const auto digest = Digest(token);
  std::lock_guard guard(mutex_);
  const auto place = std::find_if(tokens_.begin(), tokens_.end(), [&](const auto& given) {
    return SameSecret(given.second.digest, digest);
  });
  if (place == tokens_.end()) return std::nullopt;
  const auto [account, taken] = *place;
  tokens_.erase(place);
  if (clock_.Tick() >= taken.ends) return std::nullopt;
  return account;
}

std::string PageSessions::Open(std::int64_t account, std::string mark) {
  auto cookie = ToHex(RandomBytes(kSecretBytes));
  std::lock_guard guard(mutex_);
  MakeRoom(account);
  browsers_[Digest(cookie)] = {{account, std::move(mark), ToHex(RandomBytes(kSecretBytes))},
                               ++last_number_,
                               clock_.Tick() + kIdleMs,
                               {}};
  return cookie;
}

std::optional<PageSessions::Visit> PageSessions::Find(std::string_view cookie) {
  std::lock_guard guard(mutex_);
  auto* browser = Living(cookie);
  if (!browser) return std::nullopt;
  browser->ends = clock_.Tick() + kIdleMs;
  return browser->visit;
}

void PageSessions::Close(std::string_view cookie) {
  std::lock_guard guard(mutex_);
  browsers_.erase(Digest(cookie));
}

void PageSessions::Leave(std::string_view cookie, PageNotice notice) {
  std::lock_guard guard(mutex_);
  if (auto* browser = Living(cookie)) browser->notice = std::move(notice);
}

PageNotice PageSessions::TakeNotice(std::string_view cookie) {
  std::lock_guard guard(mutex_);
  auto* browser = Living(cookie);
  return browser ? std::exchange(browser->notice, {}) : PageNotice{};
}

void PageSessions::MakeRoom(std::int64_t account) {
  const auto now = clock_.Tick();
  std::erase_if(browsers_, [&](const auto& entry) { return now >= entry.second.ends; });
  int count = 0;
  auto oldest = browsers_.end();
  for (auto place = browsers_.begin(); place != browsers_.end(); ++place) {
    if (place->second.visit.account != account) continue;
    ++count;
    if (oldest == browsers_.end() || place->second.number < oldest->second.number) oldest = place;
  }
  if (count >= kBrowsersOfAnAccount) browsers_.erase(oldest);
}

PageSessions::Browser* PageSessions::Living(std::string_view cookie) {
  const auto place = browsers_.find(Digest(cookie));
  if (place == browsers_.end() || clock_.Tick() >= place->second.ends) return nullptr;
  return &place->second;
}

}  // namespace orvalo::service
