#pragma once
#include <string>

#include "platform/clock.h"
#include "service/attempts.h"
#include "service/http_message.h"
#include "service/submissions.h"
#include "service/vouchers.h"

namespace orvalo::service {

// Where accounts redeem vouchers, whichever way they come: each request at most once under its key,
// and 20 wrong numbers of an account in a minute. Any thread.
class VoucherDesk {
 public:
  VoucherDesk(Submissions& submissions, Vouchers& vouchers, const platform::Clock& clock);

  // The reply: what the voucher brought, or the refusal.
  ServedReply Redeem(const KeyedRequest& request, const std::string& number);

 private:
  Submissions& submissions_;
  Vouchers& vouchers_;
  Attempts tries_;
};

}  // namespace orvalo::service
