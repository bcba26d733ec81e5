#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "service/running_service.h"
#include "service/web_browser.h"

namespace orvalo::test {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

constexpr std::int64_t kMinute = 60'000;
constexpr char kVoucher[] = "1234567890123456";

// What a browser's side of the conversation comes to, byte by byte.
class Visitor {
 public:
  explicit Visitor(int port) : port_(port) {}

  // The whole reply, head and body. Keeps the cookie that it brings, and the page's form.
  std::string Send(const std::string& method, const std::string& target,
                   const std::string& body = "", const std::string& more_head = "") {
    const auto reply = RawExchange(
        port_, method + " " + target + " HTTP/1.1\r\nHost: localhost\r\nConnection: close\r\n" +
                   (cookie.empty() ? "" : "Cookie: other=1; orvalo_account=" + cookie + "\r\n") +
                   "Content-Type: application/x-www-form-urlencoded\r\nContent-Length: " +
                   std::to_string(body.size()) + "\r\n" + more_head + "\r\n" + body);
    const auto set = Between(reply, "Set-Cookie: orvalo_account=", ";");
    if (!set.empty()) cookie = set;
    const auto secret = Between(reply, "name=\"form\" value=\"", "\"");
    if (!secret.empty()) form = secret;
    const auto number = Between(reply, "name=\"once\" value=\"", "\"");
    if (!number.empty()) once = number;
    return reply;
  }
  std::string Get(const std::string& target = "/account") { return Send("GET", target); }
  std::string Redeem(const std::string& number) {
    return Send("POST", "/account/voucher", "form=" + form + "&once=" + once + "&number=" + number);
  }
  // The notice of the page that a browser comes to after a form.
  std::string NoticeAfter(const std::string& number) {
    EXPECT_THAT(Redeem(number), HasSubstr("\r\nLocation: /account\r\n"));
    return Between(Get(), "</span> ", "</p>");
  }

  static std::string Between(const std::string& text, const std::string& before,
                             const std::string& after) {
    const auto found = text.find(before);
    if (found == std::string::npos) return {};
    const auto start = found + before.size();
    return text.substr(start, text.find(after, start) - start);
  }

  std::string cookie, form, once;

 private:
  int port_;
};

bool IsRefused(const std::string& reply) {
  return reply.starts_with("HTTP/1.1 403 ") && reply.find("id=\"closed\"") != std::string::npos;
}

class AccountPageTest : public testing::Test {
 protected:
  AccountPageTest() { running_.service().vouchers().Add(kVoucher, 50'000); }
  int port() { return running_.service().port(); }
  std::string PageToken() {
    return ann_.Send("POST", "/v1/page-token", "", "").body.value("token", "");
  }
  // Ann's browser with the page open.
  Visitor Open() {
    Visitor visitor(port());
    visitor.Get("/account?session_id=" + PageToken());
    EXPECT_THAT(visitor.Get(), HasSubstr("HTTP/1.1 200 "));
    return visitor;
  }

  RunningService running_;
  GatewayCaller ann_ = running_.Caller();
};

TEST_F(AccountPageTest, IsHandedOverOnceAndKnownByACookieFromThenOn) {
  for (const bool session_token : {false, true}) {
    const auto token = session_token ? ann_.token : PageToken();
    Visitor visitor(port());
    const auto handed = visitor.Send("GET", "/account?a=1&session_id=" + token);
    EXPECT_THAT(handed, AllOf(HasSubstr("HTTP/1.1 303 "), HasSubstr("Cache-Control: no-store"),
                              HasSubstr("; HttpOnly; SameSite=Strict\r\n"), Not(HasSubstr(token))));
    EXPECT_NE(visitor.cookie, token);
    const auto page = visitor.Get();
    EXPECT_THAT(page, AllOf(HasSubstr("HTTP/1.1 200 "), HasSubstr("id=\"user\">ann<"),
                            HasSubstr("Content-Security-Policy: default-src 'none';"),
                            HasSubstr("Content-Type: text/html; charset=utf-8")));
    EXPECT_THAT(visitor.Get("/account?session_id=" + token), HasSubstr("HTTP/1.1 303 "))
        << "whoever is in already may load the address again";
    Visitor other(port());
    EXPECT_TRUE(IsRefused(other.Get("/account?session_id=" + token))) << "once";
    EXPECT_EQ(other.cookie, "");
  }
  EXPECT_EQ(ann_.Get("/v1/ping").status, 200) << "the session itself goes on";
  Visitor proxied(port());
  EXPECT_THAT(proxied.Send("GET", "/account?session_id=" + PageToken(), "",
                           "X-Forwarded-Proto: https\r\nSec-Fetch-Site: none\r\n"),
              AllOf(HasSubstr("; SameSite=Strict; Secure\r\n"),
                    HasSubstr("Strict-Transport-Security: max-age=")));
  EXPECT_THAT(proxied.Get(), Not(HasSubstr("Strict-Transport-Security")));
}

TEST_F(AccountPageTest, IsClosedToWhoeverHasNoPlaceThere) {
  const auto replaced = PageToken(), linked = PageToken();
  Visitor stranger(port());
  EXPECT_TRUE(IsRefused(stranger.Get()));
  EXPECT_TRUE(IsRefused(stranger.Get("/account?session_id=")));
  EXPECT_TRUE(IsRefused(stranger.Get("/account?session_id=" + std::string(64, 'a'))));
  EXPECT_TRUE(IsRefused(stranger.Get("/account?session_id=" + replaced)));
  EXPECT_TRUE(IsRefused(
      stranger.Send("GET", "/account?session_id=" + linked, "", "Sec-Fetch-Site: cross-site\r\n")));
  const auto late = PageToken();
  running_.clock.Advance(2 * kMinute);
  EXPECT_TRUE(IsRefused(stranger.Get("/account?session_id=" + late)));
}

TEST_F(AccountPageTest, ForgetsABrowserWhenItsTimeIsUp) {
  auto left = Open(), stays = Open();
  running_.clock.Advance(20 * kMinute);
  stays.Get();
  running_.clock.Advance(20 * kMinute);
  EXPECT_TRUE(IsRefused(left.Get())) << "half an hour without a visit";
  EXPECT_FALSE(IsRefused(stays.Get()));

  auto signs_out = Open();
  EXPECT_THAT(signs_out.Send("POST", "/account/sign-out", "form=" + signs_out.form),
              AllOf(HasSubstr("signed out"), HasSubstr("; Max-Age=0\r\n")));
  EXPECT_TRUE(IsRefused(signs_out.Get()));

  auto first = Open();
  for (int i = 0; i < 15; ++i) Open();
  EXPECT_FALSE(IsRefused(first.Get()));
  Open();
  EXPECT_TRUE(IsRefused(first.Get())) << "the seventeenth ends the oldest";
  auto last = Open();
  running_.service().accounts().SetPassword("ann", "new");
  EXPECT_TRUE(IsRefused(last.Get()));
}

TEST_F(AccountPageTest, RedeemsVouchersForItsOwnFormsOnly) {
  auto visitor = Open();
  const auto form = visitor.form, body = "&once=1&number=" + std::string(kVoucher);
  const struct {
    std::string body, more_head;
  } foreign[] = {{"form=" + std::string(64, 'a') + body, ""},
                 {body, ""},
                 {"form=" + form + body, "Sec-Fetch-Site: cross-site\r\n"},
                 {"form=" + form + body, "Sec-Fetch-Site: same-site\r\n"}};
  for (const auto& request : foreign) {
    EXPECT_TRUE(
        IsRefused(visitor.Send("POST", "/account/voucher", request.body, request.more_head)));
  }
  auto other = Open();
  EXPECT_TRUE(IsRefused(other.Send("POST", "/account/voucher", "form=" + form + body)))
      << "another browser's form";
  EXPECT_TRUE(IsRefused(other.Send("POST", "/account/sign-out", "form=" + form)));
  EXPECT_EQ(ann_.Balance(), "100.0");

  EXPECT_EQ(visitor.NoticeAfter("123"), "A voucher number has 16 digits.");
  EXPECT_THAT(visitor.Get(), Not(HasSubstr("id=\"notice\""))) << "a notice is shown once";
  EXPECT_THAT(visitor.NoticeAfter("1111111111111111"), HasSubstr("no voucher with this number"));
  const auto credited = "50.0 credits have been added to your balance.";
  const auto once = visitor.once;
  EXPECT_EQ(visitor.NoticeAfter("+1234+5678-9012%203456+"), credited);
  visitor.once = once;
  EXPECT_EQ(visitor.NoticeAfter(kVoucher), credited) << "the same form, sent twice";
  EXPECT_THAT(visitor.NoticeAfter(kVoucher), HasSubstr("already been redeemed"));
  EXPECT_EQ(ann_.Balance(), "150.0");
  EXPECT_TRUE(running_.LedgerAddsUp());

  for (int i = 2; i < 20; ++i) ann_.Post("/v1/vouchers", {{"number", "1111111111111111"}});
  EXPECT_THAT(visitor.NoticeAfter("1111111111111111"), HasSubstr("wait a minute"));
  running_.clock.Advance(kMinute);
  EXPECT_THAT(visitor.NoticeAfter("1111111111111111"), HasSubstr("no voucher"));
}

TEST_F(AccountPageTest, ShowsWhatTheLedgerHolds) {
  constexpr std::int64_t kDay = 24 * 60 * kMinute;
  const auto send = [&](const std::string& to, const std::string& text, int type, int minutes) {
    const auto reply =
        ann_.Post("/v1/messages",
                  {{"to", to}, {"text", text}, {"type", type}, {"delivery_minutes", minutes}});
    EXPECT_EQ(reply.status, 200);
  };
  ann_.Message("27821110001");  // on 2001-09-09, and too old for the statement in the end
  running_.clock.Advance(10 * kDay);
  ann_.LogIn("ann", "ann");
  ann_.Message("27821110001");
  ann_.Message("27821110001");
  running_.clock.Advance(20 * kDay);
  ann_.LogIn("ann", "ann");
  ann_.Post("/v1/vouchers", {{"number", kVoucher}});
  running_.clock.Advance(kMinute);
  const std::string hostile = "</td><script>alert(1)</script>&\"'\x01";
  send("27821110002", hostile, 0, 0);
  send("27821119907", "00FF", 5, 0);
  send("27821110003", "later", 0, 60);
  auto bob = running_.Caller("bob");
  bob.Message("27829999999");
  running_.clock.Advance(kMinute);

  const auto page = Open().Get();
  const auto rows = [&](const std::string& table) {
    std::string text = Visitor::Between(page, "id=\"" + table + "\"", "</table>");
    std::string plain;
    bool in_tag = true;
    for (const char character : text.substr(text.find("<tbody"))) {
      if (character == '<' && !plain.empty() && plain.back() != '|') plain += '|';
      if (character == '<') in_tag = true;
      if (!in_tag && character != '\n') plain += character;
      if (character == '>') in_tag = false;
    }
    return plain;
  };
  EXPECT_EQ(rows("statement"),
            "2001-10-09 01:46|Voucher 1234567890123456|+50.0|"
            "2001-10-09|3 messages|−2.4|2001-09-19|2 messages|−1.6|");
  EXPECT_EQ(
      rows("messages"),
      "2001-10-09 01:47|27821110003|later|…| Held for later (2001-10-09 02:47)|0.8|"
      "2001-10-09 01:47|27821119907|Picture|✕| Delivery error|0.8|"
      "2001-10-09 01:47|27821110002|&lt;/td&gt;&lt;script&gt;alert(1)&lt;/script&gt;&amp;&quot;"
      "&#39; |✓| Delivered|0.8|"
      "2001-09-19 01:46|27821110001|Hello|✓| Delivered|0.8|"
      "2001-09-19 01:46|27821110001|Hello|✓| Delivered|0.8|"
      "2001-09-09 01:46|27821110001|Hello|✓| Delivered|0.8|");
  EXPECT_THAT(page, AllOf(HasSubstr("id=\"balance\">145.2<"), HasSubstr("<dd>150.0</dd>"),
                          HasSubstr("<dd>4.8</dd>")));
}

TEST_F(AccountPageTest, WorksInARealBrowser) {
  ann_.Post("/v1/messages", {{"to", "27821110002"}, {"text", "<b>bold</b> & <script>x</script>"}});
  const auto address = "http://127.0.0.1:" + std::to_string(port()) + "/account";
  const TemporaryFolder folder;
  WebBrowser browser(folder.path(), 500, 900);
  ASSERT_TRUE(browser.Runs());
  browser.Open(address + "?session_id=" + ann_.token);
  EXPECT_EQ(browser.Address(), address) << "the token does not stay";
  EXPECT_EQ(browser.Text("#balance"), "99.2");
  EXPECT_EQ(browser.Text("#messages td.text"), "<b>bold</b> & <script>x</script>");
  EXPECT_EQ(browser.Evaluate("getComputedStyle(document.querySelector('.card')).borderRadius"),
            "12px")
      << "the style sheet is allowed by the page's own policy";
  EXPECT_EQ(browser.Evaluate("document.documentElement.scrollWidth <= innerWidth"), true);
  EXPECT_EQ(browser.Evaluate("document.cookie + document.referrer"), "");
  const auto cookies = browser.Cookies();
  ASSERT_EQ(cookies.size(), 1u);
  EXPECT_EQ(cookies[0].value("sameSite", ""), "Strict");

  browser.Type("#voucher", "1234 5678 9012 3456");
  browser.Click("#redeem");
  EXPECT_EQ(browser.Address(), address);
  EXPECT_THAT(browser.Text("#notice"), HasSubstr("50.0 credits have been added"));
  EXPECT_EQ(browser.Text("#balance"), "149.2");
  EXPECT_EQ(ann_.Balance(), "149.2");
  browser.Click("header button");
  EXPECT_THAT(browser.Text("#closed"), HasSubstr("signed out"));
  browser.Open(address + "?session_id=" + ann_.token);
  EXPECT_THAT(browser.Text("#closed"), HasSubstr("used before"));
}

}  // namespace
}  // namespace orvalo::test
