#include "service/sessions.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "service/secrets.h"

namespace orvalo::service {
namespace {

constexpr std::int64_t kLifeSeconds = 24 * 3600;
constexpr std::int64_t kSaveSeconds = 300;
constexpr std::int64_t kLookMs = 1000;
constexpr std::size_t kTokenDigits = 64;

}  // namespace

Sessions::Sessions(Database& database, const platform::Clock& clock)
    : database_(database), clock_(clock), next_look_(clock.Tick() + kLookMs) {
  Load();
}

std::string Sessions::Open(std::int64_t account, const std::string& client) {
  const auto token = ToHex(RandomBytes(kTokenDigits / 2));
  const auto digest = Digest(token);
  const auto now = clock_.Now();
  std::vector<std::string> ended;
  database_.Write([&](Connection& connection) {
    ended.clear();
    Query(connection,
          "INSERT INTO session(token,account,client,number,last_call) VALUES(?1,?2,?3,"
          "(SELECT COALESCE(MAX(number),0)+1 FROM session WHERE account=?2),?4)",
          Blob{digest}, account, client, now)
        .Run();
    Query(connection, "DELETE FROM session WHERE account=? AND last_call<?", account,
          now - kLifeSeconds)
        .Run();
    Query oldest(connection,
                 "DELETE FROM session WHERE token IN (SELECT token FROM session WHERE account=? "
                 "ORDER BY number DESC LIMIT -1 OFFSET 16) RETURNING token",
                 account);
    while (oldest.Step()) ended.push_back(oldest.Text(0));
  });
  std::lock_guard guard(mutex_);
  for (const auto& gone : ended) sessions_.erase(gone);
  sessions_[digest] = {account, now, now, false};
  return token;
}

std::optional<std::int64_t> Sessions::AccountOf(std::string_view token) {
  if (token.size() != kTokenDigits) return std::nullopt;
  Refresh();
  const auto digest = Digest(token);
  const auto now = clock_.Now();
  std::int64_t account = 0;
  {
    std::lock_guard guard(mutex_);
    // The table tells by its timing at most how a digest begins, which tells nothing of a token.
    const auto place = sessions_.find(digest);
    if (place == sessions_.end() || !SameSecret(place->first, digest)) return std::nullopt;
    auto& session = place->second;
    if (now - session.last_call > kLifeSeconds) {
      sessions_.erase(place);
      return std::nullopt;
    }
    session.last_call = std::max(session.last_call, now);
    account = session.account;
    if (now - session.saved < kSaveSeconds) return account;
    session.saved = now;
  }
  try {
    database_.Write([&](Connection& connection) {
      Query(connection, "UPDATE session SET last_call=? WHERE token=?", now, Blob{digest}).Run();
    });
  } catch (const DiskFull&) {
    // Who only asks needs nothing written; the next call in five minutes tries again.
  }
  return account;
}

std::optional<std::int64_t> Sessions::AccountOnce(std::string_view token) {
  const auto account = AccountOf(token);
  if (!account) return std::nullopt;
  std::lock_guard guard(mutex_);
  const auto place = sessions_.find(Digest(token));
  if (place == sessions_.end() || std::exchange(place->second.shown, true)) return std::nullopt;
  return account;
}

// Notices password changes and the like made by another process.
void Sessions::Refresh() {
  auto look = next_look_.load();
  const auto now = clock_.Tick();
  if (now >= look && next_look_.compare_exchange_strong(look, now + kLookMs)) {
    database_.Write([](Connection&) {});
  }
  if (database_.ForeignChanges() != seen_changes_.load()) Load();
}

void Sessions::Load() {
  std::lock_guard guard(mutex_);
  seen_changes_ = database_.ForeignChanges();
  std::unordered_map<std::string, Session> loaded;
  database_.Read([&](Connection& connection) {
    Query rows(connection, "SELECT token,account,last_call FROM session");
    while (rows.Step()) loaded[rows.Text(0)] = {rows.Int(1), rows.Int(2), rows.Int(2), false};
  });
  for (auto& [digest, session] : loaded) {
    const auto known = sessions_.find(digest);
    if (known == sessions_.end()) continue;
    session.last_call = known->second.last_call;
    session.shown = known->second.shown;
  }
  sessions_ = std::move(loaded);
}

}  // namespace orvalo::service
