#pragma once
#include <atomic>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "platform/clock.h"
#include "service/database.h"

namespace orvalo::service {

// Who is logged in. A session ends after 24 hours without a call, when its account's password
// changes (the change deletes its rows), or when the account opens its seventeenth (the oldest
// ends). Tokens are kept as digests only. Any thread.
//
// Checks are answered from memory; what another process changed is noticed within a second or so.
// The time of the last call is kept on the disk to within five minutes.
class Sessions {
 public:
  Sessions(Database& database, const platform::Clock& clock);

  // A new session's token, 64 hexadecimal digits.
  std::string Open(std::int64_t account, const std::string& client);

  // The account of a live session, whose life this call prolongs.
  std::optional<std::int64_t> AccountOf(std::string_view token);

  // The same, once for each token while this object lives: for a token that was shown where others
  // may have read it.
  std::optional<std::int64_t> AccountOnce(std::string_view token);

 private:
  struct Session {
    std::int64_t account = 0;
    std::int64_t last_call = 0;
    std::int64_t saved = 0;  // the last call as it stands on the disk
    bool shown = false;      // AccountOnce has told whose it is
  };
  void Refresh();
  void Load();

  Database& database_;
  const platform::Clock& clock_;
  std::atomic<std::int64_t> next_look_;
  std::atomic<std::uint64_t> seen_changes_;
  std::mutex mutex_;
  std::unordered_map<std::string, Session> sessions_;  // by the token's digest
};

}  // namespace orvalo::service
