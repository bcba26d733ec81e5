#pragma once
#include <optional>
#include <string>

#include "platform/clock.h"
#include "service/account_page_view.h"
#include "service/carrier.h"
#include "service/database.h"
#include "service/page_sessions.h"
#include "service/router.h"
#include "service/sessions.h"
#include "service/voucher_desk.h"

namespace orvalo::service {

// The account's page for a browser: balance, statement, recent messages, and a form for vouchers.
//
// The program that opens it puts a token into the address, which anybody may read there. The token
// is good once: the page answers it with a cookie that only this service gets to see, and sends the
// browser on to the address without it. Whatever another site makes a browser do here is refused:
// by the cookie (SameSite), by what the browser says of where a request comes from, and by the
// secret in every form. Any thread.
class AccountPage {
 public:
  struct Parts {
    Database& database;
    Sessions& sessions;
    VoucherDesk& vouchers;
    Carrier& carrier;
    const platform::Clock& clock;
    bool over_tls;  // the service speaks TLS itself
  };

  explicit AccountPage(const Parts& parts);

  void Register(Router& router);

 private:
  ServedReply GiveToken(const Call& call);
  ServedReply ShowPage(const ServedRequest& request);
  ServedReply HandOver(const ServedRequest& request, const std::string& token);
  ServedReply PostVoucher(const ServedRequest& request);
  ServedReply PostSignOut(const ServedRequest& request);

  // The browser behind a request, while its account's password is what it was.
  std::optional<PageSessions::Visit> VisitOf(const ServedRequest& request);
  // The same for what a form sends: nothing either unless it is one of this browser's own.
  std::optional<PageSessions::Visit> SenderOf(const ServedRequest& request);
  ServedReply RefuseForm(const ServedRequest& request);
  PageNotice Redeem(std::int64_t account, const ServedRequest& request);
  bool IsOverTls(const ServedRequest& request) const;
  ServedReply KeptToTls(const Call& call, ServedReply reply) const;
  std::string CookieHeader(const ServedRequest& request, const std::string& value) const;

  Parts parts_;
  PageSessions visits_;
};

}  // namespace orvalo::service
