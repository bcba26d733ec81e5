#include <gtest/gtest.h>

#include <set>
#include <sstream>
#include <thread>

#include "component/register_component.h"
#include "component_fixture.h"

namespace orvalo::test {
namespace {

using platform::InvokeKind;
using platform::VariantFlag;

// Names and argument kinds: T a text, F a flag, I an integer, in the order of the call.
constexpr char kMethods[] =
    "SendSimpleSMS/TT SendMsg/FTT Authenticate/ AuthenticateClient/TTT Ping/ QueryMsg/T "
    "QueryBalance/ ResetSMS/ RecoverPassword/TT TokenPay/T TokenPayWithURL/TT EncodeToUnicode/T "
    "StartBatch/T QuickBatchSend/T EndBatch/ SetBaseURL/T ConfigureProxy/ITTTT "
    "ConfigureProxyEx/FITTTT Version/F GetMsgCharge/FT QuerySubmission/T "
    "ListMessages/TT QueryFunds/";
constexpr char kPuttable[] =
    "smsUSER/T smsPASSWORD/T smsTEXT/T smsFROM/T smsTO/T smsMSG_TYPE/I smsCONCAT/I smsUNICODE/F "
    "smsDELIVERY_ACK/F smsDELIVERY_TIME/I";
constexpr char kReadOnly[] =
    "smsIsLoggedIn/ smsERROR/ smsSESSION_ID/ smsERROR_TEXT/ smsERROR_CAUSE/";
constexpr char kWriteOnly[] = "smsSUBMISSION_KEY/";

std::vector<std::pair<std::u16string, std::string>> Members(const std::string& list) {
  std::vector<std::pair<std::u16string, std::string>> members;
  std::istringstream words(list);
  for (std::string word; words >> word;) {
    const auto slash = word.find('/');
    members.emplace_back(platform::ToWide(word.substr(0, slash)), word.substr(slash + 1));
  }
  return members;
}

platform::Variant Sample(char kind) {
  if (kind == 'T') return Caller::Text("7");
  if (kind == 'F') return VariantFlag{-1};
  return std::int32_t{1};
}

std::vector<platform::Variant> Samples(const std::string& kinds) {
  std::vector<platform::Variant> samples;
  for (const char kind : kinds) samples.push_back(Sample(kind));
  return samples;
}

TEST(ComponentClass, IsCreatedByItsName) {
  platform::ClassRegistry registry;
  component::RegisterComponent(registry);
  const auto object = registry.Create("SMS_COMAPI.SMS");
  ASSERT_NE(object, nullptr);
  const auto version = Caller(*object).Call(u"Version", {Caller::Flag(0)});
  EXPECT_EQ(version.substr(0, 4), "COM ");
  EXPECT_NE(version.find('.'), version.npos);
}

TEST_F(ComponentTest, ResolvesEveryMemberToAnIdOfItsOwn) {
  std::set<platform::MemberId> ids = {0};  // 0 stands for a name that is not known
  const auto all = std::string(kMethods) + " " + kPuttable + " " + kReadOnly + " " + kWriteOnly;
  for (const auto& [name, kinds] : Members(all)) {
    platform::MemberId id = 0;
    EXPECT_EQ(component_.GetIdOfName(name, 0, &id), platform::kOk);
    EXPECT_TRUE(ids.insert(id).second) << platform::FromWide(name);
  }
  platform::MemberId lower = 0, upper = 0, none = 77;
  component_.GetIdOfName(u"sendmsg", 0, &lower);
  component_.GetIdOfName(u"SENDMSG", 0, &upper);
  EXPECT_EQ(lower, upper);
  EXPECT_EQ(component_.GetIdOfName(u"SendMsgs", 0, &none), platform::kUnknownName);
  EXPECT_EQ(none, 77);
}

TEST_F(ComponentTest, RefusesOtherArgumentsThanAMethodTakes) {
  for (const auto& [name, kinds] : Members(kMethods)) {
    SCOPED_TRACE(platform::FromWide(name));
    platform::Variant result = std::int32_t{77};
    EXPECT_EQ(caller_.Invoke(name, InvokeKind::kMethod, Samples(kinds + "T"), &result),
              platform::kBadParameterCount);
    for (std::size_t place = 0; place < kinds.size(); ++place) {
      auto wrong = Samples(kinds);
      wrong[place] = Sample(kinds[place] == 'T' ? 'I' : 'T');
      EXPECT_EQ(caller_.Invoke(name, InvokeKind::kMethod, wrong, &result), platform::kTypeMismatch);
    }
    EXPECT_EQ(result, platform::Variant(std::int32_t{77}));
    EXPECT_EQ(caller_.Error(), 101);
    EXPECT_EQ(caller_.Invoke(name, InvokeKind::kPropertyGet, {}, &result),
              platform::kMemberNotFound);
  }
  for (const platform::MemberId id : {0, -1, 1000}) {
    EXPECT_EQ(component_.Invoke(id, 0, InvokeKind::kMethod, {}, nullptr),
              platform::kMemberNotFound);
    EXPECT_EQ(caller_.Error(), 102);
  }
  EXPECT_TRUE(server_.requests().empty());
}

TEST_F(ComponentTest, KeepsWhatIsPutUntilItIsPutAgain) {
  for (const auto& [name, kinds] : Members(kPuttable)) {
    SCOPED_TRACE(platform::FromWide(name));
    const char kind = kinds.front();
    EXPECT_EQ(caller_.Put(name, Sample(kind)), platform::kOk);
    EXPECT_EQ(caller_.Put(name, Sample(kind == 'T' ? 'I' : 'T')), platform::kTypeMismatch);
    const bool secret = name == u"smsPASSWORD";
    EXPECT_EQ(caller_.Get(name), secret ? Caller::Text("") : Sample(kind));
    EXPECT_EQ(caller_.Invoke(name, InvokeKind::kPropertyGet, Samples("T"), nullptr),
              platform::kBadParameterCount);
  }
  EXPECT_EQ(caller_.Call(u"ResetSMS"), "OK");
  EXPECT_EQ(caller_.Get(u"smsFROM"), Caller::Text(""));
  EXPECT_EQ(caller_.Get(u"smsCONCAT"), platform::Variant(std::int32_t{0}));
  EXPECT_EQ(caller_.Get(u"smsUSER"), Caller::Text("7"));
  for (const auto& [name, kinds] : Members(kReadOnly)) {
    EXPECT_EQ(caller_.Put(name, Sample('I')), platform::kMemberNotFound);
  }
}

TEST_F(ComponentTest, TellsEachThreadTheErrorOfItsOwnLastCall) {
  LogIn();
  Script({Refusal(402, 202, "Not enough credit")});
  caller_.Send("Hello", "27821110001");
  std::thread other([&] {
    EXPECT_EQ(caller_.Error(), 0);
    EXPECT_EQ(caller_.Get(u"smsERROR_TEXT"), Caller::Text(""));
    caller_.Call(u"TokenPayWithURL", {Caller::Text("1"), Caller::Text("nowhere")});
    EXPECT_EQ(caller_.Error(), 101);
  });
  other.join();
  EXPECT_EQ(caller_.Error(), 202);
  EXPECT_EQ(caller_.Get(u"smsERROR_TEXT"), Caller::Text("Not enough credit"));
  component::Component second(clock_);
  EXPECT_EQ(Caller(second).Error(), 0);
}

TEST_F(ComponentTest, WorksForOneThreadWhileAnotherWaitsForTheService) {
  LogIn();
  std::mutex gate;
  gate.lock();
  ScriptedReply slow = Json(R"({"id": ")" + kId + "\"}");
  slow.wait = [&] { std::lock_guard wait(gate); };
  Script({slow, Json(R"({"balance": "87.2"})")});
  std::thread worker([&] { EXPECT_EQ(caller_.Send("Hello", "27821110001"), "ID: " + kId); });
  while (Requests().empty()) std::this_thread::yield();
  caller_.Put(u"smsFROM", Caller::Text("Other"));
  EXPECT_EQ(caller_.Call(u"QueryBalance"), "87.2");
  EXPECT_EQ(caller_.Get(u"smsIsLoggedIn"), platform::Variant(VariantFlag{-1}));
  gate.unlock();
  worker.join();
}

}  // namespace
}  // namespace orvalo::test
