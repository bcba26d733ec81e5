#pragma once
#include <string>

#include "platform/clock.h"
#include "service/accounts.h"
#include "service/attempts.h"
#include "service/carrier.h"
#include "service/hashing_pace.h"
#include "service/login_guard.h"
#include "service/recovery_mail.h"
#include "service/router.h"
#include "service/sessions.h"
#include "service/voucher_desk.h"

namespace orvalo::service {

// The calls about the account and the service itself: session, ping, balance, vouchers, password
// recovery, version, health. Any thread.
class AccountCalls {
 public:
  struct Parts {
    Database& database;
    Accounts& accounts;
    Sessions& sessions;
    VoucherDesk& vouchers;
    Carrier& carrier;
    RecoveryMail& mail;
    platform::Clock& clock;
  };

  explicit AccountCalls(const Parts& parts);

  void Register(Router& router);

 private:
  ServedReply OpenSession(const Call& call);
  ServedReply GetBalance(const Call& call);
  ServedReply RedeemVoucher(const Call& call);
  ServedReply RecoverPassword(const Call& call);
  ServedReply GetHealth();

  Parts parts_;
  LoginGuard logins_;
  HashingPace strangers_;
  Attempts recoveries_of_user_, recoveries_of_address_;
};

}  // namespace orvalo::service
