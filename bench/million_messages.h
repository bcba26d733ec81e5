#pragma once

#include <cstdint>

#include "store/sms_status.h"

namespace orvalo::bench {

// Fills the message table of an empty store with a million messages, by the SQLite interface.
inline constexpr const char* kFillMessages = R"(
WITH RECURSIVE Numbers(n) AS (SELECT 1 UNION ALL SELECT n + 1 FROM Numbers WHERE n < 1000000),
  Mixed(n, a, b, c) AS (SELECT n, n * 7919 % 1000003, n * 104729 % 997, n * 15485863 % 991
                        FROM Numbers)
INSERT INTO SMS SELECT n, 1700000000 + a * 37, a % 18, 0, n, ',2782' || (1000000 + a),
  char(65 + b % 26) || 'n' || char(97 + b / 26) || 'a ' || char(65 + c % 26) || 'e'
    || char(97 + c / 26) || 'mark ' || a,
  'Dear customer, your order ' || a || ' has left our house and will be with you on Friday.',
  ',ID: 0123456789abcdef0123456789abcdef', 0, 'Orvalo', 0, 0, 0, '1.' || b % 10, '', '' FROM Mixed;
CREATE INDEX BY_TIME ON SMS(Time);
)";

// The status that one of them has.
inline SmsStatus StatusOfMessage(std::int32_t id) {
  return static_cast<SmsStatus>(std::int64_t{id} * 7919 % 1'000'003 % 18);
}

}  // namespace orvalo::bench
