#include "gateway/gateway_client.h"

#include <gtest/gtest.h>

#include "support/fake_component.h"

namespace orvalo {
namespace {

TEST(GatewayClient, ArgumentsTravelInTheirKindsAndOrder) {
  test::FakeGateway fake;
  platform::ClassRegistry registry;
  fake.Register(registry);
  GatewayClient client(registry);
  ASSERT_TRUE(client.IsConnected());
  fake.On("SendMsg", "ID: 1", 5);

  std::u16string reply;
  EXPECT_EQ(client.Send(1, u"text", u"27821", &reply), platform::kOk);
  EXPECT_EQ(reply, u"ID: 1");
  EXPECT_EQ(client.LastError(), 5);
  const auto sent = fake.Calls("SendMsg").at(0).arguments;
  EXPECT_EQ(sent, (std::vector<platform::Variant>{platform::VariantFlag{1}, std::u16string(u"text"),
                                                  std::u16string(u"27821")}));

  client.ConfigureProxy(true, 4, u"host", u"8080", u"user", u"secret", &reply);
  EXPECT_EQ(fake.Calls("ConfigureProxyEx").at(0).arguments,
            (std::vector<platform::Variant>{platform::VariantFlag{1}, std::int32_t{4},
                                            std::u16string(u"host"), std::u16string(u"8080"),
                                            std::u16string(u"user"), std::u16string(u"secret")}));
  client.Version(&reply);
  EXPECT_EQ(fake.Calls("Version").at(0).arguments,
            (std::vector<platform::Variant>{platform::VariantFlag{0}}));
  client.SetUnicode(true);
  EXPECT_EQ(fake.Calls("smsUNICODE").at(0).arguments,
            (std::vector<platform::Variant>{platform::VariantFlag{-1}}));
}

TEST(GatewayClient, AnUnknownMethodGetsIdZeroAndTheOthersWork) {
  test::FakeGateway fake;
  fake.Forget("Ping");
  platform::ClassRegistry registry;
  fake.Register(registry);
  GatewayClient client(registry);
  ASSERT_TRUE(client.IsConnected());
  std::u16string reply = u"untouched";
  EXPECT_EQ(client.Ping(&reply), platform::kMemberNotFound);
  EXPECT_EQ(reply, u"untouched");
  EXPECT_EQ(client.EndBatch(&reply), platform::kOk);
}

TEST(GatewayClient, KeepsKeysWithAComponentThatHasBothMembersOnly) {
  std::u16string reply = u"untouched";
  for (const char* missing : {"smsSUBMISSION_KEY", "QuerySubmission", ""}) {
    SCOPED_TRACE(missing);
    test::FakeGateway fake;
    fake.KeepKeys();
    fake.Forget(missing);
    platform::ClassRegistry registry;
    fake.Register(registry);
    GatewayClient client(registry);
    const bool both = *missing == '\0';
    EXPECT_EQ(client.KeepsKeys(), both);
    EXPECT_EQ(client.SetSubmissionKey(u"0a"),
              missing == std::string("smsSUBMISSION_KEY") ? platform::kFail : platform::kOk);
    if (!both) continue;
    EXPECT_EQ(fake.Property("smsSUBMISSION_KEY"), "0a");
    fake.On("QuerySubmission", "ERR: 209, None", kNoSuchSubmission);
    EXPECT_EQ(client.QuerySubmission(u"0a", nullptr), platform::kFail);
    EXPECT_EQ(client.QuerySubmission(u"0b", &reply), platform::kOk);
    EXPECT_EQ(fake.Calls("QuerySubmission").back().Argument(0), "0b");
    EXPECT_EQ(client.LastError(), kNoSuchSubmission);
    EXPECT_EQ(reply, u"ERR: 209, None");
  }
  GatewayClient none{platform::ClassRegistry()};
  EXPECT_FALSE(none.KeepsKeys());
  EXPECT_EQ(none.SetSubmissionKey(u"0a"), platform::kFail);
  EXPECT_EQ(none.QuerySubmission(u"0a", &reply), platform::kFail);
}

TEST(GatewayClient, ListsMessagesWithAComponentThatDoes) {
  std::u16string page;
  for (const bool lists : {true, false}) {
    test::FakeGateway fake;
    if (lists) fake.TellMessages();
    fake.On("ListMessages", "{}");
    platform::ClassRegistry registry;
    fake.Register(registry);
    GatewayClient client(registry);
    EXPECT_EQ(client.ListsMessages(), lists);
    EXPECT_EQ(client.ListMessages(u"7", u"1763900000", &page),
              lists ? platform::kOk : platform::kFail);
    if (!lists) continue;
    EXPECT_EQ(fake.Calls("ListMessages").at(0).Argument(0), "7");
    EXPECT_EQ(fake.Calls("ListMessages").at(0).Argument(1), "1763900000");
    EXPECT_EQ(page, u"{}");
    EXPECT_EQ(client.QueryFunds(&page), platform::kOk);
    EXPECT_EQ(fake.Calls("QueryFunds").size(), 1u);
  }
}

TEST(GatewayClient, RefusesWithoutComponentNameOrPlace) {
  GatewayClient none{platform::ClassRegistry()};
  EXPECT_FALSE(none.IsConnected());
  std::u16string reply = u"untouched";
  std::int32_t code = 7;
  EXPECT_EQ(none.Send(1, u"a", u"b", &reply), platform::kFail);
  EXPECT_EQ(none.ErrorCode(&code), platform::kFail);
  EXPECT_EQ(none.SetSender(u"x"), platform::kFail);
  EXPECT_EQ(reply, u"untouched");
  EXPECT_EQ(code, 7);

  test::FakeGateway fake;
  platform::ClassRegistry registry;
  fake.Register(registry);
  GatewayClient client(registry);
  EXPECT_EQ(client.Ping(nullptr), platform::kFail);
  EXPECT_EQ(client.CallMethod(u"NoSuchMember", {}, &reply), platform::kFail);
  EXPECT_EQ(client.CallMethod(u"pING", {}, &reply), platform::kOk);
  EXPECT_TRUE(fake.Calls("NoSuchMember").empty());
}

}  // namespace
}  // namespace orvalo
