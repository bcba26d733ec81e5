#pragma once
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <random>
#include <string>
#include <string_view>

#include "platform/clock.h"
#include "service/database.h"
#include "service/http_message.h"
#include "service/router.h"

namespace orvalo::service {

// A request that changes something, under its idempotency key.
struct KeyedRequest {
  std::int64_t account = 0;
  std::string key;          // 16 bytes
  std::string fingerprint;  // a digest of method, path, and the body's members in any order
  // As earlier versions made it, of the bytes as they came; "": there was none.
  std::string earlier_fingerprint;
};

KeyedRequest KeyedRequestOf(const Call& call);

// Does each keyed request at most once: what it did and the reply to it are kept in one
// transaction, and the same request gets the same reply again, for 31 days at least. Any thread.
class Submissions {
 public:
  struct KeptReply {
    std::int64_t time = 0;  // when it was first given, in seconds since 1970 UTC
    int status = 0;
    std::string body;
  };

  // `drop_replies` is the share (0 to 1) of replies that are thrown away, with the work done, to
  // try clients out; which ones is the same in every run.
  Submissions(Database& database, const platform::Clock& clock, double drop_replies);

  // `admit` runs first (not for a replay: what has been done is answered as it was, even if it
  // would be refused today) and may send the client away with a reply that is not kept; `work` then
  // runs in the transaction.
  ServedReply Once(const KeyedRequest& request,
                   const std::function<std::optional<ServedReply>()>& admit,
                   const std::function<ServedReply(Connection&)>& work);

  // The reply that is kept under an account's key (16 bytes); nothing when there is none.
  std::optional<KeptReply> Find(std::int64_t account, std::string_view key);

 private:
  static std::optional<ServedReply> Kept(Connection& connection, const KeyedRequest& request);
  void Keep(Connection& connection, const KeyedRequest& request, const ServedReply& reply);
  void Tidy(Connection& connection, std::int64_t now);
  bool DropsThis();

  Database& database_;
  const platform::Clock& clock_;
  const double drop_replies_;
  std::mutex dice_mutex_;
  std::mt19937 dice_{20'480};
  int since_tidied_ = 0;  // the writer's
};

}  // namespace orvalo::service
