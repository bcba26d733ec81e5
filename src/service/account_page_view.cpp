#include "service/account_page_view.h"

#include <fmt/format.h>

#include "service/message_request.h"
#include "service/page_text.h"

namespace orvalo::service {
namespace {

constexpr std::size_t kShownCharacters = 90;  // of a message's text

// A status in words. The sign stands beside them so that the colour is not the only difference.
struct StatusLook {
  const char* style;
  const char* sign;
  const char* words;
};

StatusLook LookOf(GatewayStatus status) {
  switch (status) {
    case GatewayStatus::kNotKnown:
      return {"wait", "?", "Not known yet"};
    case GatewayStatus::kQueued:
      return {"wait", "…", "Queued"};
    case GatewayStatus::kHandedOver:
      return {"wait", "→", "On its way"};
    case GatewayStatus::kDelivered:
      return {"good", "✓", "Delivered"};
    case GatewayStatus::kMessageError:
      return {"bad", "✕", "Error with the message"};
    case GatewayStatus::kCancelled:
      return {"bad", "✕", "Cancelled"};
    case GatewayStatus::kDeliveryError:
      return {"bad", "✕", "Delivery error"};
    case GatewayStatus::kNoFurtherNews:
      return {"good", "→", "Accepted by the network"};
    case GatewayStatus::kRoutingError:
      return {"bad", "✕", "Routing error"};
    case GatewayStatus::kExpired:
      return {"bad", "✕", "Expired"};
    case GatewayStatus::kHeld:
      return {"wait", "…", "Held for later"};
  }
  return {"wait", "?", "Not known yet"};
}

std::string ContentText(const CarriedMessage& message) {
  if (!IsBinaryType(message.type)) return Shortened(message.text, kShownCharacters);
  switch (message.type) {
    case 3:
      return "Operator logo";
    case 5:
      return "Picture";
    case 6:
      return "Ringtone";
    case 8:
      return "Contact card";
    default:
      return "Calendar entry";
  }
}

std::string Document(const std::string& title, const std::string& body) {
  return fmt::format(
      R"(<!DOCTYPE html>
<html lang="en"><head><meta charset="utf-8"><title>{}</title>
<meta name="viewport" content="width=device-width, initial-scale=1">
<meta name="color-scheme" content="light dark"><meta name="robots" content="noindex">
<link rel="stylesheet" href="{}"></head>
<body>
{}</body></html>
)",
      title, kStylePath, body);
}

std::string Secret(const AccountPageContent& content) {
  return fmt::format(R"(<input type="hidden" name="form" value="{}">)", content.form_secret);
}

std::string Header(const AccountPageContent& content) {
  return fmt::format(
      R"(<header><div class="wrap"><p class="brand">Orvalo</p>
<form method="post" action="{}">{}<span class="who">Signed in as <bdi id="user">{}</bdi></span>
<button class="quiet">Sign out</button></form></div></header>
)",
      kSignOutPath, Secret(content), EscapeHtml(content.statement.user));
}

std::string NoticeLine(const PageNotice& notice) {
  if (notice.text.empty()) return {};
  return fmt::format(
      R"(<p id="notice" class="notice {}" role="{}"><span aria-hidden="true">{}</span> {}</p>
)",
      notice.good ? "good" : "bad", notice.good ? "status" : "alert", notice.good ? "✓" : "✕",
      EscapeHtml(notice.text));
}

std::string BalanceCard(const Statement& statement) {
  return fmt::format(
      R"(<section class="card balance" aria-labelledby="balance-title">
<h2 id="balance-title">Balance</h2>
<p class="amount"><span id="balance">{}</span> <small>credits</small></p>
<dl><div><dt>Credited in all</dt><dd>{}</dd></div><div><dt>Spent on messages</dt><dd>{}</dd></div></dl>
</section>
)",
      MoneyText(statement.balance), MoneyText(statement.credits),
      MoneyText(statement.credits - statement.balance));
}

std::string VoucherCard(const AccountPageContent& content) {
  return fmt::format(
      R"(<section class="card" aria-labelledby="voucher-title">
<h2 id="voucher-title">Redeem a voucher</h2>
<form method="post" action="{}">{}<input type="hidden" name="once" value="{}">
<label for="voucher">Voucher number, 16 digits</label>
<div class="row"><input id="voucher" name="number" inputmode="numeric" autocomplete="off" required
 maxlength="40" placeholder="0000 0000 0000 0000"><button id="redeem">Redeem</button></div></form>
</section>
)",
      kVoucherPath, Secret(content), EscapeHtml(content.form_number));
}

std::string StatementRow(const Statement::Entry& entry, const platform::Clock& clock) {
  const auto when = clock.ToLocal(entry.time);
  if (entry.messages == 0) {
    return fmt::format(R"(<tr><td>{}</td><td>Voucher {}</td><td class="number plus">+{}</td></tr>
)",
                       MinuteText(when), EscapeHtml(entry.voucher), MoneyText(entry.amount));
  }
  return fmt::format(R"(<tr><td>{}</td><td>{} {}</td><td class="number">−{}</td></tr>
)",
                     DayText(when), entry.messages, entry.messages == 1 ? "message" : "messages",
                     MoneyText(-entry.amount));
}

std::string StatementCard(const Statement& statement, const platform::Clock& clock) {
  std::string rows;
  for (const auto& entry : statement.entries) rows += StatementRow(entry, clock);
  if (rows.empty()) rows = "<tr><td class=\"none\" colspan=\"3\">Nothing in this time.</td></tr>\n";
  return fmt::format(
      R"(<section class="card" aria-labelledby="statement-title">
<h2 id="statement-title">Statement, last {} days</h2>
<div class="scroll"><table id="statement"><thead><tr><th scope="col">When</th><th scope="col">What</th>
<th scope="col" class="number">Credits</th></tr></thead><tbody>
{}</tbody></table></div></section>
)",
      kStatementDays, rows);
}

std::string MessageTableRow(const AccountPageContent::Message& shown,
                            const platform::Clock& clock) {
  const auto& message = shown.entry.message;
  const auto look = LookOf(shown.status);
  std::string status = look.words;
  if (shown.status == GatewayStatus::kHeld && message.due > message.accepted) {
    status += " (" + MinuteText(clock.ToLocal(message.due)) + ")";
  }
  return fmt::format(
      R"(<tr><td>{}</td><td class="phone">{}</td><td class="text"><bdi>{}</bdi></td>
<td><span class="status {}"><span aria-hidden="true">{}</span> {}</span></td><td class="number">{}</td></tr>
)",
      MinuteText(clock.ToLocal(message.accepted)), EscapeHtml(message.number),
      EscapeHtml(ContentText(message)), look.style, look.sign, status,
      MoneyText(shown.entry.charge));
}

std::string MessagesCard(const AccountPageContent& content, const platform::Clock& clock) {
  std::string rows;
  for (const auto& message : content.messages) rows += MessageTableRow(message, clock);
  if (rows.empty()) {
    rows = "<tr><td class=\"none\" colspan=\"5\">No message has been sent yet.</td></tr>\n";
  }
  return fmt::format(
      R"(<section class="card wide" aria-labelledby="messages-title">
<h2 id="messages-title">Recent messages</h2>
<div class="scroll"><table id="messages"><thead><tr><th scope="col">Accepted</th><th scope="col">To</th>
<th scope="col">Message</th><th scope="col">Status</th><th scope="col" class="number">Charge</th></tr></thead><tbody>
{}</tbody></table></div></section>
)",
      rows);
}

}  // namespace

std::string AccountPageHtml(const AccountPageContent& content, const platform::Clock& clock) {
  const auto body = fmt::format(
      R"({}<main class="wrap"><h1>Your account</h1>
{}{}{}{}{}</main>
<footer class="wrap">As of {}, by the service's clock. Load the page again for news.</footer>
)",
      Header(content), NoticeLine(content.notice), BalanceCard(content.statement),
      VoucherCard(content), StatementCard(content.statement, clock), MessagesCard(content, clock),
      MinuteText(clock.ToLocal(clock.Now())));
  return Document("Your Orvalo account", body);
}

std::string ClosedPageHtml(const std::string& why) {
  return Document("Orvalo account",
                  fmt::format(
                      R"(<header><div class="wrap"><p class="brand">Orvalo</p></div></header>
<main class="wrap closed"><section class="card"><h1>Your account</h1>
<p id="closed">{}</p>
<p>To open this page, choose “Buy Credits” on the Options page of Orvalo while you are online. Each time the program
hands over a new key that works once.</p></section></main>
)",
                      EscapeHtml(why)));
}

}  // namespace orvalo::service
