#include "service/refusal.h"

#include <algorithm>
#include <array>

namespace orvalo::service {
namespace {

struct RefusalRow {
  ErrorCode code;
  const char* name;
  int http;
  const char* message;
};

constexpr std::array kRefusals{
    RefusalRow{ErrorCode::kMalformed, "malformed", 400, "The request is malformed"},
    RefusalRow{ErrorCode::kNoSuchPath, "no_such_path", 404, "No such path"},
    RefusalRow{ErrorCode::kTooLarge, "too_large", 413, "The request is too large"},
    RefusalRow{ErrorCode::kNotJson, "not_json", 415, "The body is not JSON by its content type"},
    RefusalRow{ErrorCode::kNoSuchMethod, "no_such_method", 405,
               "This path is not served with this method"},
    RefusalRow{ErrorCode::kWrongPassword, "wrong_password", 401, "Unknown user or wrong password"},
    RefusalRow{ErrorCode::kNoSession, "no_session", 401,
               "No session, or it has ended: log in again"},
    RefusalRow{ErrorCode::kTooManyPasswords, "too_many_passwords", 429,
               "Too many wrong passwords: wait a minute"},
    RefusalRow{ErrorCode::kTooManyRequests, "too_many_requests", 429, "Too many requests"},
    RefusalRow{ErrorCode::kBadNumber, "bad_number", 422, "The number must have 3 to 16 digits"},
    RefusalRow{ErrorCode::kNoCredit, "no_credit", 402, "Not enough credit"},
    RefusalRow{ErrorCode::kTextTooLong, "text_too_long", 422, "The text is too long"},
    RefusalRow{ErrorCode::kBadType, "bad_type", 422,
               "The message type is not known or the text does not fit it"},
    RefusalRow{ErrorCode::kNoSuchMessage, "no_such_message", 404, "No such message or batch"},
    RefusalRow{ErrorCode::kKeyReused, "key_reused", 409,
               "The idempotency key was used with another request"},
    RefusalRow{ErrorCode::kBatchEnded, "batch_ended", 409, "The batch has ended"},
    RefusalRow{ErrorCode::kNumberRefused, "number_refused", 422,
               "The number is refused by the network"},
    RefusalRow{ErrorCode::kNoSuchSubmission, "no_such_submission", 404,
               "No submission with this key in this account"},
    RefusalRow{ErrorCode::kServiceFailed, "service_failed", 500,
               "The service failed; nothing was accepted"},
    RefusalRow{ErrorCode::kNetworkDown, "network_down", 503,
               "The phone network is not available now"},
    RefusalRow{ErrorCode::kNoSuchAddress, "no_such_address", 404,
               "No account has this user name and e-mail address"},
    RefusalRow{ErrorCode::kNoSuchVoucher, "no_such_voucher", 404, "No such voucher"},
    RefusalRow{ErrorCode::kVoucherUsed, "voucher_used", 409, "The voucher has been redeemed"},
};

const RefusalRow& RefusalRowOf(ErrorCode code) {
  return *std::find_if(kRefusals.begin(), kRefusals.end(),
                       [&](const RefusalRow& row) { return row.code == code; });
}

}  // namespace

Refusal Refuse(ErrorCode code) { return {code, RefusalRowOf(code).message}; }

std::vector<ErrorCode> AllErrorCodes() {
  std::vector<ErrorCode> codes;
  codes.reserve(std::size(kRefusals));
  for (const auto& row : kRefusals) codes.push_back(row.code);
  return codes;
}

const char* NameOf(ErrorCode code) { return RefusalRowOf(code).name; }

int HttpStatusOf(ErrorCode code) { return RefusalRowOf(code).http; }

}  // namespace orvalo::service
