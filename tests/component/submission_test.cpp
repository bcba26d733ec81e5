#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <set>
#include <thread>

#include "component_fixture.h"

namespace orvalo::test {
namespace {

using nlohmann::json;

const std::string kKey = "00112233445566778899aabbccddeeff";
const std::string kOtherKey(32, 'B');

class SubmissionTest : public ComponentTest {
 protected:
  SubmissionTest() { LogIn(); }

  bool PutKey(std::string_view key) {
    return platform::Succeeded(caller_.Put(u"smsSUBMISSION_KEY", Caller::Text(key)));
  }
  std::string LastKey() const { return Requests().back().header("idempotency-key"); }
  std::string Call(std::u16string_view name, std::string_view text) {
    return std::to_string((caller_.Call(name, {Caller::Text(text)}), caller_.Error()));
  }
  std::string Query(std::string_view key) {
    const auto text = caller_.Call(u"QuerySubmission", {Caller::Text(key)});
    return std::to_string(caller_.Error()) + " " + text;
  }
  static ScriptedReply Kept(const json& reply, int status = 200, const std::string& key = kKey) {
    return Json(
        json{{"key", key}, {"time", 1'700'000'000}, {"status", status}, {"reply", reply}}.dump());
  }
};

TEST_F(SubmissionTest, ThePutKeyIsThatOfTheNextCallOfItsThread) {
  Script({Json(R"({"id": ")" + kId + R"(", "batch": ")" + kId + R"(", "accepted": 0,
                   "results": [{"to": "1", "id": ")" +
               kId + "\"}]}")});
  const std::function<void()> calls[] = {
      [&] { caller_.Send("Hello", "27821110001"); },
      [&] { Call(u"StartBatch", "Hello"); },
      [&] { Call(u"QuickBatchSend", "1"); },
      [&] { caller_.Call(u"EndBatch"); },
      [&] {
        caller_.Call(u"SendSimpleSMS", {Caller::Text("Hello"), Caller::Text("1")});
      },
  };
  EXPECT_TRUE(PutKey(kOtherKey));
  for (const auto& call : calls) {
    EXPECT_TRUE(PutKey(kKey));
    for (const auto bad :
         {"", "0011", "0011223344556677 899aabbccddeeff", "z0112233445566778899aa"})
      EXPECT_FALSE(PutKey(bad)) << bad;
    EXPECT_EQ(caller_.Put(u"smsSUBMISSION_KEY", std::int32_t{1}), platform::kTypeMismatch);
    EXPECT_EQ(caller_.Invoke(u"smsSUBMISSION_KEY", platform::InvokeKind::kPropertyGet, {}, nullptr),
              platform::kMemberNotFound);
    std::thread([&] {
      caller_.Send("Hello", "27821110002");
      EXPECT_NE(LastKey(), kKey);
    }).join();
    caller_.Call(u"QueryBalance");
    caller_.Call(u"ResetSMS");
    call();
    EXPECT_EQ(LastKey(), kKey);
    const auto asked = Requests().size();
    call();
    // The batch has ended: refused before anything is sent.
    EXPECT_TRUE(Requests().size() == asked || LastKey() != kKey);
  }
}

TEST_F(SubmissionTest, ARefusedCallUsesTheKeyUpToo) {
  Script({Json(R"({"id": ")" + kId + "\"}")});
  const std::function<void()> refused[] = {
      [&] { EXPECT_EQ(Call(u"QuickBatchSend", "1"), "205"); },
      [&] { EXPECT_EQ(Call(u"SendMsg", "1"), "101"); },
      [&] {
        component_.Invoke(0, 0, platform::InvokeKind::kMethod, {}, nullptr);  // no submission
        EXPECT_EQ(caller_.Call(u"EndBatch").substr(0, 8), "ERR: 205");
      },
  };
  for (const auto& call : refused) {
    PutKey(kKey);
    call();
    caller_.Send("Hello", "27821110001");
    EXPECT_EQ(LastKey().size(), 32u);
    EXPECT_NE(LastKey(), kKey);
  }
}

TEST_F(SubmissionTest, TheRequestsOfALongListHaveKeysOfTheirOwnThatAreAlwaysTheSame) {
  Script({Json(R"({"batch": ")" + kId + "\"}")});
  Call(u"StartBatch", "Hello");
  std::map<std::string, std::string> kept;  // by key, as a service keeps them
  server_.SetScript([&](const RecordedRequest& request) {
    if (request.method == "GET") {
      const auto key = request.path.substr(request.path.rfind('/') + 1);
      return kept.contains(key) ? Kept(json::parse(kept[key]), 200, key)
                                : Refusal(404, 209, "No such submission");
    }
    const auto asked = json::parse(request.body);
    json reply;
    for (const auto& number : asked["to"])
      reply["results"].push_back({{"to", number}, {"id", kId}});
    return Json(kept[request.header("idempotency-key")] = reply.dump());
  });
  std::string numbers;
  for (int i = 0; i < 2'500; ++i) numbers += "," + std::to_string(1'000'000 + i);
  PutKey(kKey);
  const auto text = caller_.Call(u"QuickBatchSend", {Caller::Text(numbers)});
  // Keys that are on somebody's disk: a later version must derive the same.
  std::set<std::string> keys;
  for (const auto& [key, reply] : kept) keys.insert(key);
  EXPECT_EQ(keys, (std::set<std::string>{kKey, "33f35c56ce27861d256314f291ac626c",
                                         "583f4afbf55bd3e4632d033876fe37dd"}));
  PutKey(kKey);
  EXPECT_EQ(caller_.Call(u"QuickBatchSend", {Caller::Text(numbers)}), text);
  EXPECT_EQ(kept.size(), 3u);
  EXPECT_EQ(Query(kKey), "0 " + text);
  // The call broke off after its second request.
  kept.erase("583f4afbf55bd3e4632d033876fe37dd");
  const auto told = Query(kKey);
  EXPECT_EQ(std::count(told.begin(), told.end(), '\n'), 2'000);
  EXPECT_EQ(("0 " + text).substr(0, told.size()), told);
}

TEST_F(SubmissionTest, TellsWhatTheCallWasAnswered) {
  const json refusal = {{"error", {{"code", 202}, {"message", "Not enough credit"}}}};
  const json results = json::parse(R"([{"to": "+1", "id": ")" + kId + R"("},
                                       {"to": "2 x", "code": 208, "message": "No\nTo: 3"}])");
  const auto not_understood = "98 ERR: 98, The reply of the service cannot be understood";
  struct Case {
    ScriptedReply reply;
    std::string answer;
  };
  auto upper = kKey;
  std::transform(upper.begin(), upper.end(), upper.begin(),
                 [](char c) { return static_cast<char>(std::toupper(c)); });
  const Case cases[] = {
      {Kept({{"id", kId}}), "0 ID: " + kId},
      {Kept({{"id", kId}}, 200, upper), "0 ID: " + kId},
      {Kept({{"batch", kId}}), "0 OK"},
      {Kept({{"results", results}}), "0 ID: " + kId + " To: +1\nERR: 208, No To; 3 To: 2x\n"},
      {Kept({{"accepted", 2}}), "0 OK: 2 accepted"},
      {Kept(refusal, 402), "202 ERR: 202, Not enough credit"},
      {Refusal(404, 209, "No submission with this key"),
       "209 ERR: 209, No submission with this key"},
      {Refusal(404, 102, "No such path"), "102 ERR: 102, No such path"},
      {Json("<html>", 404), not_understood},
      {Kept({{"id", kId}}, 200, kOtherKey), not_understood},
      {Kept({{"id", "short"}}), not_understood},
      {Kept({{"batch", "short"}}), not_understood},
      {Kept({{"accepted", -1}}), not_understood},
      {Kept(json::object()), not_understood},
      {Kept("text"), not_understood},
      {Kept({{"id", kId}}, 302), not_understood},
      {Kept(refusal, 99), not_understood},
      {Kept({{"error", 7}}, 402), not_understood},
      {Json(R"({"id": ")" + kId + "\"}"), not_understood},
  };
  for (const auto& [reply, answer] : cases) {
    Script({reply});
    EXPECT_EQ(Query(kKey), answer) << reply.body;
    EXPECT_EQ(Requests().back().method + Requests().back().path, "GET/v1/submissions/" + kKey);
  }
  // Lines that cannot be read are nobody's success.
  for (const auto& bad : {json("text"), json::array({7}), json::array({{{"to", "1"}}})}) {
    Script({Kept({{"results", bad}})});
    EXPECT_EQ(Query(kKey).substr(0, 3), "98 ") << bad;
  }
  const auto asked = Requests().size();
  EXPECT_EQ(Query("../messages").substr(0, 4), "101 ");
  EXPECT_EQ(Requests().size(), asked);
  Script({Cut()});
  EXPECT_EQ(Query(kKey).substr(0, 11), "99 ERR: 99,");
}

TEST_F(SubmissionTest, ABatchThatTheKeyOpenedIsTheCurrentOne) {
  Script({Kept({{"batch", kId}}), Kept({{"batch", "short"}}), Refusal(404, 209, "None"),
          Json(R"({"results": [{"to": "1", "id": ")" + kId + "\"}]}")});
  EXPECT_EQ(Query(kKey), "0 OK");
  EXPECT_EQ(Query(kKey).substr(0, 2), "98");
  EXPECT_EQ(Query(kKey).substr(0, 3), "209");
  EXPECT_EQ(Call(u"QuickBatchSend", "1"), "0");
  EXPECT_EQ(Requests().back().path, "/v1/batches/" + kId + "/recipients");
}

TEST_F(SubmissionTest, ListsMessagesPageByPageAndBelievesNothingElse) {
  const json good = {{"id", kId},       {"key", kKey}, {"to", "27821110001"},      {"parts", 2},
                     {"charge", "1.6"}, {"status", 4}, {"accepted", 4'102'444'800}};
  const auto list = [&](std::string_view cursor, std::string_view since) {
    const auto text = caller_.Call(u"ListMessages", {Caller::Text(cursor), Caller::Text(since)});
    return std::to_string(caller_.Error()) + " " + text;
  };
  auto more = good;
  more["unheard_of"] = 1;
  Script({Json(json{{"messages", {more, good}}, {"next", "2-a"}, {"x", 1}}.dump())});
  const json page = {{"messages", {good, good}}, {"next", "2-a"}};
  EXPECT_EQ(list("", ""), "0 " + page.dump());
  EXPECT_EQ(Requests().back().path + "?" + Requests().back().query, "/v1/messages?limit=1000");
  EXPECT_EQ(list("1_b.", "1763900000"), "0 " + page.dump());
  EXPECT_EQ(Requests().back().query, "limit=1000&after=1_b.&since=1763900000");
  EXPECT_EQ(list("2-a", "").substr(0, 3), "98 ") << "would never end";
  Script({Json(R"({"messages": []})")});
  EXPECT_EQ(list("", ""), R"(0 {"messages":[]})");

  const std::pair<const char*, json> bad_members[] = {
      {"id", "short"},    {"key", 7},      {"to", "12\nx"},  {"parts", 0},     {"charge", 1.6},
      {"charge", "-1.6"}, {"status", "4"}, {"accepted", -1}, {"accepted", 1.5}};
  for (const auto& [name, value] : bad_members) {
    auto bad = good;
    bad[name] = value;
    Script({Json(json{{"messages", {good, bad}}}.dump())});
    EXPECT_EQ(list("", "").substr(0, 3), "98 ") << bad;
  }
  for (const char* bad : {"{}", R"({"messages": {}})", R"({"messages": [7]})",
                          R"({"messages": [], "next": 5})", R"({"messages": [], "next": "a b"})"}) {
    Script({Json(bad)});
    EXPECT_EQ(list("", "").substr(0, 3), "98 ") << bad;
  }
  Script({Refusal(405, 105, "Not with this method"), Refusal(404, 102, "No such path")});
  for (int i = 0; i < 2; ++i) EXPECT_EQ(list("", "").substr(0, 4), "102 ");
  Script({Json(R"({"balance": "87.2"})"), Json(R"({"balance": "87.2", "credits": "-1.0"})")});
  for (const int error : {102, 98}) {
    caller_.Call(u"QueryFunds");
    EXPECT_EQ(caller_.Error(), error);
  }
  const auto asked = Requests().size();
  for (const auto& [cursor, since] : {std::pair("a&b=", ""), {"", "now"}, {"", "-1"}}) {
    EXPECT_EQ(list(cursor, since).substr(0, 4), "101 ");
  }
  EXPECT_EQ(Requests().size(), asked);
}

}  // namespace
}  // namespace orvalo::test
