#pragma once
#include <string>
#include <vector>

#include "platform/clock.h"
#include "service/carrier.h"
#include "service/ledger.h"
#include "service/page_sessions.h"
#include "service/statement.h"

namespace orvalo::service {

// The account's page as HTML. Nothing here that came from a person reaches the page unescaped, and
// the page runs no script and loads nothing but its style sheet. Pure functions, any thread.

struct AccountPageContent {
  struct Message {
    Ledger::Entry entry;
    GatewayStatus status = GatewayStatus::kNotKnown;
  };
  Statement statement;
  std::vector<Message> messages;  // newest first
  PageNotice notice;
  std::string form_secret;
  std::string form_number;  // another one for each page that is shown
};

// Where the page stands and where its forms go.
inline constexpr char kAccountPath[] = "/account";
inline constexpr char kVoucherPath[] = "/account/voucher";
inline constexpr char kSignOutPath[] = "/account/sign-out";
inline constexpr char kStylePath[] = "/account/style.css";

std::string AccountPageHtml(const AccountPageContent& content, const platform::Clock& clock);

// The page for whoever has not come with a session: how to open it.
std::string ClosedPageHtml(const std::string& why);

// The style sheet, light and dark as the reader's system is.
extern const char kAccountPageStyle[];

}  // namespace orvalo::service
