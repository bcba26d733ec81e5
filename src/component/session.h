#pragma once
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

namespace orvalo::component {

inline constexpr char kDefaultBaseAddress[] = "http://127.0.0.1:8480";

struct Credentials {
  std::string client_id;
  std::string user;
  std::string password;  // in memory only; in no text and no log
};

// Whose session it is and at which service. Any thread; every operation is short and none waits for
// the network, so what it hands out is a copy that may be out of date a moment later.
class Session {
 public:
  struct State {
    std::string base;   // without a trailing slash
    std::string token;  // empty without a session
  };

  State Current() const;
  std::optional<Credentials> credentials() const;  // of the last login that succeeded

  // False for an address that is no base address, which then changes nothing. Another address than
  // before ends the session and forgets the credentials: neither is shown to a different service.
  bool SetBase(std::string_view address);

  // A login at `base` succeeded. Nothing happens when the base address has changed meanwhile.
  void Begin(const std::string& base, const Credentials& credentials, const std::string& token);

  // A repeated login gave `fresh` in place of `stale`. Nothing happens when `stale` is no longer
  // the session's token: somebody else was faster.
  void Renew(const std::string& stale, const std::string& fresh);

  // A login as `user` is about to be tried: the session of anybody else ends.
  void Expect(const Credentials& credentials);

  void End();

 private:
  void EndLocked();

  mutable std::mutex mutex_;
  State state_{kDefaultBaseAddress, ""};
  std::optional<Credentials> credentials_;
};

// The address without trailing slashes; nothing unless it is http or https with a host, free of
// white space, control characters, a user, a query and a fragment.
std::optional<std::string> ReadBaseAddress(std::string_view address);

}  // namespace orvalo::component
