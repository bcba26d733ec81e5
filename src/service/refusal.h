#pragma once
#include <string>
#include <vector>

namespace orvalo::service {

// Why the service refuses. The numbers travel and never change.
enum class ErrorCode : int {
  kMalformed = 101,
  kNoSuchPath = 102,
  kTooLarge = 103,
  kNotJson = 104,
  kNoSuchMethod = 105,
  kWrongPassword = 110,
  kNoSession = 111,
  kTooManyPasswords = 112,
  kTooManyRequests = 113,
  kBadNumber = 201,
  kNoCredit = 202,
  kTextTooLong = 203,
  kBadType = 204,
  kNoSuchMessage = 205,
  kKeyReused = 206,
  kBatchEnded = 207,
  kNumberRefused = 208,
  kNoSuchSubmission = 209,
  kServiceFailed = 500,
  kNetworkDown = 503,
  kNoSuchAddress = 601,
  kNoSuchVoucher = 606,
  kVoucherUsed = 607,
};

struct Refusal {
  ErrorCode code;
  std::string message;  // English, for a person; clients decide by the code
};

// The refusal with its usual message.
Refusal Refuse(ErrorCode code);

// All there are.
std::vector<ErrorCode> AllErrorCodes();

// A word for it, for metrics: "no_credit".
const char* NameOf(ErrorCode code);

// The HTTP status that a refusal travels with.
int HttpStatusOf(ErrorCode code);

}  // namespace orvalo::service
