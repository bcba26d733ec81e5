#include "service/refusal.h"

#include <algorithm>
#include <array>

namespace orvalo::service {
namespace {

struct RefusalRow {
  ErrorCode code;
  int http;
  const char* message;
};

constexpr std::array kRefusals{
    RefusalRow{ErrorCode::kMalformed, 400, "The request is malformed"},
    RefusalRow{ErrorCode::kNoSuchPath, 404, "No such path"},
    RefusalRow{ErrorCode::kTooLarge, 413, "The request is too large"},
    RefusalRow{ErrorCode::kNotJson, 415, "The body is not JSON by its content type"},
    RefusalRow{ErrorCode::kWrongPassword, 401, "Unknown user or wrong password"},
    RefusalRow{ErrorCode::kNoSession, 401, "No session, or it has ended: log in again"},
    RefusalRow{ErrorCode::kTooManyPasswords, 429, "Too many wrong passwords: wait a minute"},
    RefusalRow{ErrorCode::kTooManyRequests, 429, "Too many requests"},
    RefusalRow{ErrorCode::kBadNumber, 422, "The number must have 3 to 16 digits"},
    RefusalRow{ErrorCode::kNoCredit, 402, "Not enough credit"},
    RefusalRow{ErrorCode::kTextTooLong, 422, "The text is too long"},
    RefusalRow{ErrorCode::kBadType, 422,
               "The message type is not known or the text does not fit it"},
    RefusalRow{ErrorCode::kNoSuchMessage, 404, "No such message or batch"},
    RefusalRow{ErrorCode::kKeyReused, 409, "The idempotency key was used with another request"},
    RefusalRow{ErrorCode::kBatchEnded, 409, "The batch has ended"},
    RefusalRow{ErrorCode::kNumberRefused, 422, "The number is refused by the network"},
    RefusalRow{ErrorCode::kServiceFailed, 500, "The service failed; nothing was accepted"},
    RefusalRow{ErrorCode::kNetworkDown, 503, "The phone network is not available now"},
    RefusalRow{ErrorCode::kNoSuchAddress, 404, "No account has this user name and e-mail address"},
    RefusalRow{ErrorCode::kNoSuchVoucher, 404, "No such voucher"},
    RefusalRow{ErrorCode::kVoucherUsed, 409, "The voucher has been redeemed"},
};

const RefusalRow& RefusalRowOf(ErrorCode code) {
  return *std::find_if(kRefusals.begin(), kRefusals.end(),
                       [&](const RefusalRow& row) { return row.code == code; });
}

}  // namespace

Refusal Refuse(ErrorCode code) { return {code, RefusalRowOf(code).message}; }

int HttpStatusOf(ErrorCode code) { return RefusalRowOf(code).http; }

}  // namespace orvalo::service
