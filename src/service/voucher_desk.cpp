#include "service/voucher_desk.h"

#include <optional>

#include "service/api_reply.h"

namespace orvalo::service {
namespace {

constexpr int kWrongPerMinute = 20;
constexpr std::int64_t kMinuteMs = 60'000;

}  // namespace

VoucherDesk::VoucherDesk(Submissions& submissions, Vouchers& vouchers, const platform::Clock& clock)
    : submissions_(submissions), vouchers_(vouchers), tries_(clock, kWrongPerMinute, kMinuteMs) {}

ServedReply VoucherDesk::Redeem(const KeyedRequest& request, const std::string& number) {
  const auto account = std::to_string(request.account);
  bool tried = false;
  auto reply = submissions_.Once(
      request,
      [&]() -> std::optional<ServedReply> {
        tried = tries_.Take(account);
        if (tried) return std::nullopt;
        return ReplyOf({ErrorCode::kTooManyPasswords, "Too many wrong vouchers: wait a minute"});
      },
      [&](Connection& connection) {
        return ReplyOf(vouchers_.Redeem(connection, request.account, number));
      });
  if (tried && reply.status == 200) tries_.GiveBack(account);
  return reply;
}

}  // namespace orvalo::service
