#include "service/submissions.h"

#include <fmt/format.h>

#include <cmath>
#include <tuple>

#include "service/api_reply.h"
#include "service/secrets.h"

namespace orvalo::service {
namespace {

constexpr std::int64_t kKeepSeconds = 31 * 24 * 3600;
// In steps that nobody feels, and faster than rows can come.
constexpr int kTidyEvery = 16;
constexpr int kTidyAtOnce = 2 * kTidyEvery;

// "1", "1.0" and "1e0" are one value. (The names of members are in order already.)
void UnifyNumbers(nlohmann::json& value) {
  constexpr double kExact = 9'007'199'254'740'992.0;
  if (value.is_structured()) {
    for (auto& member : value) UnifyNumbers(member);
  } else if (value.is_number_float()) {
    const auto number = value.get<double>();
    if (std::abs(number) <= kExact && number == std::trunc(number)) {
      value = static_cast<std::int64_t>(number);
    }
  }
}

}  // namespace

KeyedRequest KeyedRequestOf(const Call& call) {
  const auto& [method, path] = std::tie(call.request.method, call.request.path);
  auto body = call.body;
  UnifyNumbers(body);
  return {call.account, call.key,
          Digest(fmt::format("members\n{} {}\n{}", method, path, body.dump())),
          Digest(fmt::format("{} {}\n{}", method, path, call.request.body))};
}

Submissions::Submissions(Database& database, const platform::Clock& clock, double drop_replies)
    : database_(database), clock_(clock), drop_replies_(drop_replies) {}

ServedReply Submissions::Once(const KeyedRequest& request,
                              const std::function<std::optional<ServedReply>()>& admit,
                              const std::function<ServedReply(Connection&)>& work) {
  auto reply = database_.Read([&](Connection& connection) { return Kept(connection, request); });
  if (!reply) {
    if (auto away = admit()) return *away;
    database_.Write([&](Connection& connection) {
      reply = Kept(connection, request);  // the same request may have come twice at once
      if (reply) return;
      reply = work(connection);
      Keep(connection, request, *reply);
    });
  }
  reply->drop = DropsThis();
  return *reply;
}

std::optional<Submissions::KeptReply> Submissions::Find(std::int64_t account,
                                                        std::string_view key) {
  return database_.Read([&](Connection& connection) -> std::optional<KeptReply> {
    Query row(connection, "SELECT time,status,reply FROM submission WHERE account=? AND key=?",
              account, Blob{key});
    if (!row.Step()) return std::nullopt;
    return KeptReply{row.Int(0), static_cast<int>(row.Int(1)), row.Text(2)};
  });
}

std::optional<ServedReply> Submissions::Kept(Connection& connection, const KeyedRequest& request) {
  Query row(connection, "SELECT request,status,reply FROM submission WHERE account=? AND key=?",
            request.account, Blob{request.key});
  if (!row.Step()) return std::nullopt;
  if (const auto kept = row.Text(0);
      kept != request.fingerprint && kept != request.earlier_fingerprint) {
    return ReplyOf(Refuse(ErrorCode::kKeyReused));
  }
  ServedReply reply{static_cast<int>(row.Int(1)), row.Text(2), {}, false};
  reply.headers.emplace_back("Idempotent-Replay", "true");
  return reply;
}

void Submissions::Keep(Connection& connection, const KeyedRequest& request,
                       const ServedReply& reply) {
  const auto now = clock_.Now();
  Query(connection,
        "INSERT INTO submission(account,key,request,status,reply,time) VALUES(?,?,?,?,?,?)",
        request.account, Blob{request.key}, Blob{request.fingerprint}, reply.status, reply.body,
        now)
      .Run();
  if (++since_tidied_ < kTidyEvery) return;
  since_tidied_ = 0;
  Tidy(connection, now);
}

// Rows stand in the order of their time, so the old ones are found without an index.
void Submissions::Tidy(Connection& connection, std::int64_t now) {
  Query(connection,
        "DELETE FROM submission WHERE time<? AND seq IN "
        "(SELECT seq FROM submission ORDER BY seq LIMIT ?)",
        now - kKeepSeconds, kTidyAtOnce)
      .Run();
}

bool Submissions::DropsThis() {
  if (drop_replies_ <= 0) return false;
  std::lock_guard guard(dice_mutex_);
  return dice_() < drop_replies_ * 4294967296.0;
}

}  // namespace orvalo::service
