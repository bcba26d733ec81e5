#include "service/account_page.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>
#include <utility>

#include "service/api_reply.h"
#include "service/message_request.h"
#include "service/page_text.h"
#include "service/secrets.h"

namespace orvalo::service {
namespace {

constexpr char kCookie[] = "orvalo_account";
constexpr int kShownMessages = 25;
constexpr std::size_t kKeyBytes = 16;

constexpr char kNoSession[] =
    "You are not signed in here, or half an hour has passed without a visit.";
constexpr char kTokenUsed[] = "This address has been used before or is no longer valid.";
constexpr char kForeignRequest[] = "This request came from another site and was not carried out.";

ServedReply Page(int status, std::string html) {
  ServedReply reply{status, std::move(html), {}, false, "text/html; charset=utf-8"};
  reply.headers = {{"Content-Security-Policy",
                    "default-src 'none'; style-src 'self'; form-action 'self'; base-uri 'none'; "
                    "frame-ancestors 'none'"},
                   {"X-Content-Type-Options", "nosniff"},
                   {"X-Frame-Options", "DENY"},
                   {"Referrer-Policy", "no-referrer"},
                   {"Cross-Origin-Opener-Policy", "same-origin"},
                   {"Cache-Control", "no-store"}};
  return reply;
}

ServedReply ToAccountPage() {
  auto reply = Page(303, "");
  reply.headers.emplace_back("Location", kAccountPath);
  return reply;
}

// Browsers say where a request comes from; older ones do not, and are left to the other checks.
bool ComesFromElsewhere(const ServedRequest& request) {
  const auto site = request.header("Sec-Fetch-Site");
  return !site.empty() && site != "none" && site != "same-origin";
}

std::string CookieOf(const ServedRequest& request) {
  return CookieValue(request.header("Cookie"), kCookie);
}

// Blanks and dashes help people to read a number; they are no part of it.
std::string DigitsOf(std::string number) {
  std::erase_if(number, [](char character) { return character == ' ' || character == '-'; });
  return number;
}

PageNotice VoucherNotice(const ServedReply& reply) {
  const auto body = ParseObject(reply.body);
  if (reply.status == 200 && body) {
    return {body->value("amount", "") + " credits have been added to your balance.", true};
  }
  switch (static_cast<ErrorCode>(body ? (*body)["error"].value("code", 0) : 0)) {
    case ErrorCode::kNoSuchVoucher:
      return {"There is no voucher with this number. Please compare the digits."};
    case ErrorCode::kVoucherUsed:
      return {"This voucher has already been redeemed."};
    case ErrorCode::kTooManyPasswords:
      return {"Too many tries. Please wait a minute."};
    default:
      return {"The voucher could not be redeemed. Please try again."};
  }
}

}  // namespace

AccountPage::AccountPage(const Parts& parts) : parts_(parts), visits_(parts.clock) {}

void AccountPage::Register(Router& router) {
  router.Add({"POST", "/v1/page-token", Access::kSession,
              [this](const Call& call) { return GiveToken(call); }});
  router.Add({"GET", kAccountPath, Access::kPage,
              [this](const Call& call) { return KeptToTls(call, ShowPage(call.request)); }});
  router.Add({"POST", kVoucherPath, Access::kPage,
              [this](const Call& call) { return KeptToTls(call, PostVoucher(call.request)); }});
  router.Add({"POST", kSignOutPath, Access::kPage,
              [this](const Call& call) { return KeptToTls(call, PostSignOut(call.request)); }});
  router.Add({"GET", kStylePath, Access::kPage, [](const Call&) {
                return ServedReply{
                    200,
                    kAccountPageStyle,
                    {{"X-Content-Type-Options", "nosniff"}, {"Cache-Control", "no-cache"}},
                    false,
                    "text/css; charset=utf-8"};
              }});
}

ServedReply AccountPage::GiveToken(const Call& call) {
  return {200, fmt::format(R"({{"token":"{}"}})", visits_.GiveToken(call.account)), {}, false};
}

ServedReply AccountPage::ShowPage(const ServedRequest& request) {
  if (const auto token = FormField(request.query, "session_id")) return HandOver(request, *token);
  const auto visit = VisitOf(request);
  if (!visit) return Page(403, ClosedPageHtml(kNoSession));
  AccountPageContent content;
  content.notice = visits_.TakeNotice(CookieOf(request));
  content.form_secret = visit->form_secret;
  content.form_number = ToHex(RandomBytes(kKeyBytes));
  const auto now = parts_.clock.Now();
  parts_.database.Read([&](Connection& connection) {
    const SQLite::Transaction one_view(connection.database());
    content.statement =
        ReadStatement(connection, visit->account, parts_.clock).value_or(Statement{});
    auto latest = Ledger::Latest(connection, visit->account, kShownMessages);
    content.messages.reserve(latest.size());
    for (auto& entry : latest) {
      const auto status = parts_.carrier.StatusOf(connection, entry.message, now);
      content.messages.push_back({std::move(entry), status});
    }
  });
  return Page(200, AccountPageHtml(content, parts_.clock));
}

// A link on another site must not put a browser into an account of that site's choosing.
ServedReply AccountPage::HandOver(const ServedRequest& request, const std::string& token) {
  if (ComesFromElsewhere(request)) return Page(403, ClosedPageHtml(kForeignRequest));
  auto account = visits_.TakeToken(token);
  if (!account) account = parts_.sessions.AccountOnce(token);
  if (!account) {
    return VisitOf(request) ? ToAccountPage() : Page(403, ClosedPageHtml(kTokenUsed));
  }
  auto mark = parts_.database.Read(
      [&](Connection& connection) { return AccountMark(connection, *account); });
  auto reply = ToAccountPage();
  reply.headers.emplace_back("Set-Cookie",
                             CookieHeader(request, visits_.Open(*account, std::move(mark))));
  return reply;
}

ServedReply AccountPage::PostVoucher(const ServedRequest& request) {
  const auto visit = SenderOf(request);
  if (!visit) return RefuseForm(request);
  visits_.Leave(CookieOf(request), Redeem(visit->account, request));
  return ToAccountPage();
}

ServedReply AccountPage::PostSignOut(const ServedRequest& request) {
  if (!SenderOf(request)) return RefuseForm(request);
  visits_.Close(CookieOf(request));
  auto reply = Page(200, ClosedPageHtml("You have signed out."));
  reply.headers.emplace_back("Set-Cookie", CookieHeader(request, "") + "; Max-Age=0");
  return reply;
}

std::optional<PageSessions::Visit> AccountPage::VisitOf(const ServedRequest& request) {
  const auto cookie = CookieOf(request);
  auto visit = visits_.Find(cookie);
  if (!visit) return std::nullopt;
  const auto mark = parts_.database.Read(
      [&](Connection& connection) { return AccountMark(connection, visit->account); });
  if (mark == visit->mark) return visit;
  visits_.Close(cookie);
  return std::nullopt;
}

std::optional<PageSessions::Visit> AccountPage::SenderOf(const ServedRequest& request) {
  if (ComesFromElsewhere(request)) return std::nullopt;
  auto visit = VisitOf(request);
  const auto secret = FormField(request.body, "form");
  if (!visit || !secret || !SameSecret(*secret, visit->form_secret)) return std::nullopt;
  return visit;
}

ServedReply AccountPage::RefuseForm(const ServedRequest& request) {
  const bool foreign = ComesFromElsewhere(request) || VisitOf(request);
  return Page(403, ClosedPageHtml(foreign ? kForeignRequest : kNoSession));
}

// A form that is sent twice is one request, and gets one answer.
PageNotice AccountPage::Redeem(std::int64_t account, const ServedRequest& request) {
  const auto number = DigitsOf(FormField(request.body, "number").value_or(""));
  if (!Vouchers::IsNumber(number)) return {"A voucher number has 16 digits."};
  const auto fingerprint = Digest(fmt::format(
      "{}\n{}\n{}", kVoucherPath, FormField(request.body, "once").value_or(""), number));
  return VoucherNotice(
      parts_.vouchers.Redeem({account, fingerprint.substr(0, kKeyBytes), fingerprint, ""}, number));
}

bool AccountPage::IsOverTls(const ServedRequest& request) const {
  return parts_.over_tls || request.header("X-Forwarded-Proto") == "https";
}

// A browser that has come over TLS once never comes without it again.
ServedReply AccountPage::KeptToTls(const Call& call, ServedReply reply) const {
  if (IsOverTls(call.request)) {
    reply.headers.emplace_back("Strict-Transport-Security", "max-age=31536000");
  }
  return reply;
}

std::string AccountPage::CookieHeader(const ServedRequest& request,
                                      const std::string& value) const {
  return fmt::format("{}={}; Path={}; HttpOnly; SameSite=Strict{}", kCookie, value, kAccountPath,
                     IsOverTls(request) ? "; Secure" : "");
}

}  // namespace orvalo::service
