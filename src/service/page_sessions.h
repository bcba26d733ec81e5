#pragma once
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "platform/clock.h"

namespace orvalo::service {

// One line of news for whoever looks at a page.
struct PageNotice {
  std::string text;  // empty: none
  bool good = false;
};

// The browsers that look at account pages. A browser gets in with a token that is good once, and is
// then known by a cookie until half an hour has passed without a visit; an account has at most 16
// of them (the oldest ends). All of it lives in memory only: after a restart the page must be
// opened anew. Secrets are kept as digests. Any thread.
class PageSessions {
 public:
  struct Visit {
    std::int64_t account = 0;
    std::string mark;         // as given to Open
    std::string form_secret;  // what a form of this browser's page carries
  };

  explicit PageSessions(const platform::Clock& clock) : clock_(clock) {}

  // A token for the account's page, 64 hexadecimal digits, good once and for two minutes. It ends
  // the one given before.
  std::string GiveToken(std::int64_t account);
  std::optional<std::int64_t> TakeToken(std::string_view token);

  // A new browser; returns its cookie, 64 hexadecimal digits. `mark` is handed back at each visit.
  std::string Open(std::int64_t account, std::string mark);
  // Prolongs the browser's time.
  std::optional<Visit> Find(std::string_view cookie);
  void Close(std::string_view cookie);

  // The notice is for the browser's next page only.
  void Leave(std::string_view cookie, PageNotice notice);
  PageNotice TakeNotice(std::string_view cookie);

 private:
  struct Token {
    std::string digest;
    std::int64_t ends = 0;  // by the clock's ticks, as everywhere here
  };
  struct Browser {
    Visit visit;
    std::int64_t number = 0;  // grows from browser to browser
    std::int64_t ends = 0;
    PageNotice notice;
  };
  void MakeRoom(std::int64_t account);  // with the lock held
  Browser* Living(std::string_view cookie);

  const platform::Clock& clock_;
  std::mutex mutex_;
  std::unordered_map<std::int64_t, Token> tokens_;     // by account
  std::unordered_map<std::string, Browser> browsers_;  // by the cookie's digest
  std::int64_t last_number_ = 0;
};

}  // namespace orvalo::service
