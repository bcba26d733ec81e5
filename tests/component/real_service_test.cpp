#include <gtest/gtest.h>

#include <map>
#include <nlohmann/json.hpp>
#include <set>

#include "component_fixture.h"
#include "service/demo_data.h"
#include "service/gateway_service.h"
#include "support/temporary_folder.h"

namespace orvalo::test {
namespace {

service::ServiceOptions InFolder(const std::string& folder) {
  service::ServiceOptions options;
  options.folder = folder;
  options.http.threads = 4;
  return options;
}

// The two ends of the protocol, which know each other through its description alone.
TEST(RealService, UnderstandsTheComponentAndIsUnderstood) {
  TemporaryFolder folder;
  FakeClock clock;
  service::GatewayService gateway(InFolder(folder.path()), clock);
  service::LayOutDemoData(gateway.accounts(), gateway.vouchers());
  gateway.Listen();
  component::Component component(clock);
  Caller caller(component);
  const auto text = [](std::string_view bytes) { return Caller::Text(bytes); };
  const auto call = [&](std::u16string_view name, std::vector<platform::Variant> arguments = {}) {
    auto answer = caller.Call(name, std::move(arguments));
    return std::to_string(caller.Error()) + " " + answer;
  };
  call(u"SetBaseURL", {text("http://127.0.0.1:" + std::to_string(gateway.port()))});
  EXPECT_EQ(call(u"AuthenticateClient", {text("Orvalo"), text("demo"), text("no")}).substr(0, 9),
            "110 ERR: ");
  EXPECT_EQ(call(u"AuthenticateClient", {text("Orvalo"), text("demo"), text("demo")}), "0 OK");
  EXPECT_EQ(call(u"Ping"), "0 OK");
  EXPECT_EQ(call(u"QueryBalance"), "0 1000.0");

  const auto sent = caller.Send("Hello", "27821110001");
  ASSERT_EQ(sent.substr(0, 4), "ID: ");
  clock.Advance(10'000);
  const auto charge = call(u"GetMsgCharge", {Caller::Flag(1), text(sent.substr(4))});
  EXPECT_EQ(charge.substr(0, 23), "0 status: 004 charge: 0") << charge;
  caller.Put(u"smsUNICODE", Caller::Flag(-1));
  EXPECT_EQ(caller.Send(caller.Call(u"EncodeToUnicode", {text("Grüße")}), "27821110001").size(),
            36u);
  EXPECT_EQ(caller.Send("00ZZ", "27821110001").size(), 36u);

  EXPECT_EQ(call(u"StartBatch", {text("Hello")}), "0 OK");
  const auto lines = call(u"QuickBatchSend", {text("27821110002,27821119900")});
  EXPECT_EQ(lines.substr(0, 6), "0 ID: ");
  EXPECT_NE(lines.find(" To: 27821110002\nERR: 208, "), lines.npos) << lines;
  EXPECT_EQ(call(u"EndBatch"), "0 OK: 1 accepted");

  // With keys of the caller's own: what is asked later is what was answered.
  std::map<std::string, std::string> answers;
  const auto keyed = [&](char digit, std::u16string_view name,
                         std::vector<platform::Variant> arguments) {
    const std::string key(32, digit);
    caller.Put(u"smsSUBMISSION_KEY", text(key));
    return answers[key] = call(name, std::move(arguments));
  };
  keyed('1', u"SendMsg", {Caller::Flag(1), text("Hello"), text("27821110003")});
  keyed('2', u"SendMsg", {Caller::Flag(1), text("Hello"), text("27821119900")});
  keyed('3', u"StartBatch", {text("Hello")});
  std::string many;
  for (int i = 0; i < 1'200; ++i) many += "27821" + std::to_string(100'000 + i) + ",";
  keyed('4', u"QuickBatchSend", {text(many)});
  const auto balance = call(u"QueryBalance");
  EXPECT_EQ(call(u"StartBatch", {text("Other")}), "0 OK");
  for (const auto& [key, answer] : answers) {
    EXPECT_EQ(call(u"QuerySubmission", {text(key)}), answer) << key;
  }
  // The batch that was asked about is the current one again: the same list is a repetition.
  EXPECT_EQ(answers[std::string(32, '4')], keyed('4', u"QuickBatchSend", {text(many)}));
  EXPECT_EQ(call(u"QueryBalance"), balance);
  keyed('5', u"EndBatch", {});
  EXPECT_EQ(answers[std::string(32, '5')].substr(0, 5), "0 OK:");
  EXPECT_EQ(keyed('5', u"EndBatch", {}).substr(0, 4), "205 ");
  EXPECT_EQ(call(u"QuerySubmission", {text(std::string(32, '5'))}).substr(0, 5), "0 OK:");
  EXPECT_EQ(call(u"QuerySubmission", {text(std::string(32, '6'))}).substr(0, 4), "209 ");

  std::set<std::string> listed;
  std::string cursor;
  double charged = 0;
  do {
    const auto page =
        nlohmann::json::parse(call(u"ListMessages", {text(cursor), text("")}).substr(2));
    for (const auto& message : page["messages"]) {
      listed.insert(message["id"].get<std::string>());
      charged += std::stod(message["charge"].get<std::string>());
    }
    cursor = page.value("next", "");
  } while (!cursor.empty());
  EXPECT_EQ(listed.size(), 3u + 1u + 1u + 1'200u);
  EXPECT_TRUE(listed.contains(sent.substr(4)));
  const auto funds = nlohmann::json::parse(call(u"QueryFunds").substr(2));
  EXPECT_EQ("0 " + funds.value("balance", ""), balance);
  EXPECT_NEAR(std::stod(funds.value("credits", "")) - charged, std::stod(balance.substr(2)), 1e-6);
  EXPECT_EQ(call(u"TokenPay", {text("1234567890123456")}), "0 OK: 50.0");
  EXPECT_EQ(call(u"TokenPay", {text("1234567890123456")}).substr(0, 9), "607 ERR: ");
  EXPECT_EQ(call(u"RecoverPassword", {text("demo"), text("demo@example.org")}), "0 OK");
  clock.Advance(25 * 3600 * 1000);  // the session ends meanwhile
  EXPECT_EQ(call(u"Ping"), "0 OK");
}

TEST(RealService, ChargesOnceForAMessageWhoseReplyGotLost) {
  TemporaryFolder folder;
  FakeClock clock;
  auto options = InFolder(folder.path());
  options.drop_replies = 0.3;
  service::GatewayService gateway(options, clock);
  service::LayOutDemoData(gateway.accounts(), gateway.vouchers());
  gateway.Listen();
  component::Component component(clock);
  Caller caller(component);
  caller.Call(u"SetBaseURL", {Caller::Text("http://127.0.0.1:" + std::to_string(gateway.port()))});
  caller.Call(u"AuthenticateClient",
              {Caller::Text("Orvalo"), Caller::Text("demo"), Caller::Text("demo")});
  for (int i = 0; i < 20; ++i) EXPECT_EQ(caller.Send("Hello", "27821110001").size(), 36u);
  EXPECT_EQ(caller.Call(u"QueryBalance"), "984.0");
}

}  // namespace
}  // namespace orvalo::test
