#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "component_fixture.h"

namespace orvalo::test {
namespace {

using nlohmann::json;

struct Exchange {
  std::u16string member;
  std::vector<platform::Variant> arguments;
  std::string reply;
  std::string method, path, body;  // what the service must be asked; the body "" or JSON
  std::string text;                // what the member must answer
};

platform::Variant T(std::string_view text) { return Caller::Text(text); }
platform::Variant F(std::int16_t flag) { return Caller::Flag(flag); }

TEST_F(ComponentTest, AsksTheServiceAndAnswersInItsOwnWords) {
  LogIn();
  const std::string id_reply = R"({"id": ")" + kId + R"(", "status": 4, "charge": "0.8"})";
  const std::string plain =
      R"(, "type": 0, "unicode": false, "concat": 0, "sender": "", "delivery_minutes": 0, "ack": false})";
  const Exchange exchanges[] = {
      {u"SendMsg",
       {F(1), T("Grüße \"du\""), T("+27821110001")},
       id_reply,
       "POST",
       "/v1/messages",
       R"({"to": "+27821110001", "text": "Grüße \"du\"")" + plain,
       "ID: " + kId},
      {u"SendSimpleSMS",
       {T("Hello"), T("27821110001")},
       id_reply,
       "POST",
       "/v1/messages",
       R"({"to": "27821110001", "text": "Hello")" + plain,
       "ID: " + kId},
      {u"StartBatch",
       {T("Hello")},
       R"({"batch": ")" + kId + "\"}",
       "POST",
       "/v1/batches",
       R"({"text": "Hello")" + plain,
       "OK"},
      {u"QuickBatchSend",
       {T("27821110001")},
       R"({"results": [{"to": "27821110001", "id": ")" + kId + "\"}]}",
       "POST",
       "/v1/batches/" + kId + "/recipients",
       R"({"to": ["27821110001"]})",
       "ID: " + kId + " To: 27821110001\n"},
      {u"EndBatch",
       {},
       R"({"accepted": 1})",
       "POST",
       "/v1/batches/" + kId + "/end",
       "{}",
       "OK: 1 accepted"},
      {u"GetMsgCharge",
       {F(1), T(kId)},
       id_reply,
       "GET",
       "/v1/messages/" + kId,
       "",
       "status: 004 charge: 0.8"},
      {u"QueryMsg", {T(kId)}, id_reply, "GET", "/v1/messages/" + kId, "", "status: 004"},
      {u"Ping", {}, R"({"ok": true})", "GET", "/v1/ping", "", "OK"},
      {u"QueryBalance", {}, R"({"balance": "87.2"})", "GET", "/v1/balance", "", "87.2"},
      {u"QueryFunds",
       {},
       R"({"balance": "87.2", "credits": "100.0", "x": 1})",
       "GET",
       "/v1/balance",
       "",
       R"({"balance":"87.2","credits":"100.0"})"},
      {u"TokenPay",
       {T("1234567890123456")},
       R"({"amount": "50.0", "balance": "137.2"})",
       "POST",
       "/v1/vouchers",
       R"({"number": "1234567890123456"})",
       "OK: 50.0"},
      {u"RecoverPassword",
       {T("demo"), T("demo@example.org")},
       R"({"ok": true})",
       "POST",
       "/v1/password-recovery",
       R"({"user": "demo", "email": "demo@example.org"})",
       "OK"},
  };
  std::string last_key;
  for (const auto& exchange : exchanges) {
    SCOPED_TRACE(platform::FromWide(exchange.member));
    Script({Json(exchange.reply)});
    const auto asked = Requests().size();
    EXPECT_EQ(caller_.Call(exchange.member, exchange.arguments), exchange.text);
    EXPECT_EQ(caller_.Error(), 0);
    const auto requests = Requests();
    ASSERT_EQ(requests.size(), asked + 1);
    const auto& request = requests.back();
    EXPECT_EQ(request.method + " " + request.path, exchange.method + " " + exchange.path);
    EXPECT_EQ(request.body.empty() ? json() : json::parse(request.body),
              exchange.body.empty() ? json() : json::parse(exchange.body));
    const bool recovery = exchange.path == "/v1/password-recovery";
    EXPECT_EQ(request.header("authorization"), recovery ? "" : "Bearer " + kToken);
    const auto key = request.header("idempotency-key");
    EXPECT_EQ(key.size(), exchange.method == "POST" && !recovery ? 32u : 0u);
    if (!key.empty()) {
      EXPECT_NE(key, std::exchange(last_key, key));
    }
  }
}

TEST_F(ComponentTest, SendsThePutProperties) {
  LogIn();
  Script({Json(R"({"id": ")" + kId + "\"}")});
  caller_.Put(u"smsCONCAT", std::int32_t{3});
  caller_.Put(u"smsMSG_TYPE", std::int32_t{1});
  caller_.Put(u"smsFROM", T("Orvalo"));
  caller_.Put(u"smsDELIVERY_ACK", F(-1));
  caller_.Put(u"smsDELIVERY_TIME", std::int32_t{90});
  caller_.Send("Hello", "27821110001");
  caller_.Put(u"smsDELIVERY_TIME", std::int32_t{-5});
  caller_.Send("Hello", "27821110001");
  const auto requests = Requests();
  auto expected = json::parse(
      R"({"to": "27821110001", "text": "Hello", "type": 1, "unicode": false, "concat": 3,
          "sender": "Orvalo", "delivery_minutes": 90, "ack": true})");
  EXPECT_EQ(json::parse(requests.at(0).body), expected);
  expected["delivery_minutes"] = 0;
  EXPECT_EQ(json::parse(requests.at(1).body), expected);
}

TEST_F(ComponentTest, MarksOnlyItsOwnEncodingAsEncoded) {
  LogIn();
  Script({Json(R"({"id": ")" + kId + "\"}")});
  const auto sent_as_encoded = [&](std::string_view text) {
    caller_.Send(text, "27821110001");
    return json::parse(Requests().back().body).value("encoded", false);
  };
  caller_.Put(u"smsUNICODE", F(-1));
  EXPECT_FALSE(sent_as_encoded("00410042"));
  EXPECT_EQ(caller_.Call(u"EncodeToUnicode", {T("Aä€😀")}), "004100E420ACD83DDE00");
  EXPECT_EQ(caller_.Error(), 0);
  EXPECT_TRUE(sent_as_encoded("004100E420ACD83DDE00"));
  EXPECT_TRUE(sent_as_encoded("004100E420ACD83DDE00"));  // to a second recipient
  EXPECT_FALSE(sent_as_encoded("00410042"));
  std::thread other([&] { EXPECT_FALSE(sent_as_encoded("004100E420ACD83DDE00")); });
  other.join();
  caller_.Put(u"smsUNICODE", F(0));
  EXPECT_FALSE(sent_as_encoded("004100E420ACD83DDE00"));
}

TEST_F(ComponentTest, TalksThroughTheProxyItIsGiven) {
  Script({Json(R"({"ok": true})"), Json("<html>", 407)});
  const auto configure = [&](std::int16_t test, std::int32_t type, std::string_view host,
                             std::string_view port) {
    caller_.Call(u"ConfigureProxyEx", {F(test), type, T(host), T(port), T("user"), T("secret")});
    return caller_.Error();
  };
  EXPECT_EQ(configure(0, 1, "", ""), 0);
  EXPECT_TRUE(server_.requests().empty());
  EXPECT_EQ(configure(1, 1, "", ""), 0);
  EXPECT_EQ(Requests().back().path, "/v1/health");
  // The server stands in for a proxy, too.
  EXPECT_EQ(configure(1, 4, "127.0.0.1", std::to_string(server_.port())), 96);
  EXPECT_EQ(configure(1, 4, "127.0.0.1", "1"), 95);
  EXPECT_EQ(configure(0, 4, "", "8080"), 95);
  EXPECT_EQ(configure(0, 4, "127.0.0.1", "65536"), 95);
  EXPECT_EQ(configure(0, 5, "127.0.0.1", "8080"), 101);
  const auto text = caller_.Call(
      u"ConfigureProxyEx", {F(1), std::int32_t{4}, T("127.0.0.1"), T("1"), T("user"), T("secret")});
  EXPECT_EQ(text.substr(0, 8), "ERR: 95,");
  EXPECT_EQ(text.find("secret"), text.npos) << text;
}

}  // namespace
}  // namespace orvalo::test
