#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "component_fixture.h"

namespace orvalo::test {
namespace {

class BatchTest : public ComponentTest {
 protected:
  void Start() {
    LogIn();
    Script({Json(R"({"batch": ")" + kId + "\"}")});
    ASSERT_EQ(caller_.Call(u"StartBatch", {Caller::Text("Hello")}), "OK");
  }
  std::string SendTo(std::string_view numbers, ScriptedReply reply) {
    Script({std::move(reply)});
    return caller_.Call(u"QuickBatchSend", {Caller::Text(numbers)});
  }
};

TEST_F(BatchTest, AnswersForEachRecipient) {
  Start();
  EXPECT_EQ(
      SendTo(
          "27821110001,,27821119900,",
          Json(R"({"results": [{"to": "27821110001", "id": ")" + kId +
               R"("}, {"to": "27821119900", "code": 208, "message": "Refused by the network"}]})")),
      "ID: " + kId + " To: 27821110001\nERR: 208, Refused by the network To: 27821119900\n");
  EXPECT_EQ(caller_.Error(), 0);
  EXPECT_EQ(nlohmann::json::parse(Requests().back().body)["to"].size(), 2u);
}

TEST_F(BatchTest, LosesNoRecipientWhenAnythingIsWrong) {
  Start();
  const std::string good = R"({"to": "1", "id": ")" + kId + "\"}";
  const std::string failed = "ERR: 98, The reply of the service cannot be understood";
  const std::string none = failed + " To: 1\n" + failed + " To: 2\n";
  const std::string one = "ID: " + kId + " To: 1\n" + failed + " To: 2\n";
  struct Case {
    ScriptedReply reply;
    int error;
    std::string text;
  };
  const Case cases[] = {
      {Json("{}"), 98, none},
      {Json(R"({"results": {}})"), 98, none},
      {Json(R"({"results": [)" + good + "]}"), 98, none},
      {Json(R"({"results": [)" + good + ", 5]}"), 98, one},
      {Json(R"({"results": [)" + good + ", " + good + "]}"), 98, one},
      {Json(R"({"results": [)" + good + R"(, {"to": "2", "id": "short"}]})"), 98, one},
      {Json(R"({"results": [)" + good + R"(, {"to": "2", "code": -1}]})"), 98, one},
      {Refusal(402, 202, "Not enough credit"), 202,
       "ERR: 202, Not enough credit To: 1\nERR: 202, Not enough credit To: 2\n"},
  };
  for (const auto& [reply, error, text] : cases) {
    EXPECT_EQ(SendTo("1,2", reply), text) << reply.body;
    EXPECT_EQ(caller_.Error(), error) << reply.body;
  }
}

TEST_F(BatchTest, LetsNoTextOfTheServiceLookLikeARecipient) {
  Start();
  EXPECT_EQ(SendTo("1", Json(R"({"results": [{"to": "1", "code": 208,
                                 "message": "no\nID: 77 to:2 Err:\tTo:"}]})")),
            "ERR: 208, no ID; 77 to;2 Err; To; To: 1\n");
  EXPECT_EQ(SendTo("1\nID:7 To: 2", Json("{}")),
            "ERR: 98, The reply of the service cannot be understood To: 1ID:7To:2\n");
}

TEST_F(BatchTest, CutsLongListsIntoRequests) {
  Start();
  std::string numbers;
  for (int i = 0; i < 2'500; ++i) numbers += "," + std::to_string(1'000'000 + i);
  server_.SetScript([](const RecordedRequest& request) {
    const auto asked = nlohmann::json::parse(request.body);
    nlohmann::json reply;
    for (const auto& number : asked["to"]) {
      reply["results"].push_back({{"to", number}, {"id", kId}});
    }
    EXPECT_LE(reply["results"].size(), 1'000u);
    return Json(reply.dump());
  });
  const auto text = caller_.Call(u"QuickBatchSend", {Caller::Text(numbers.substr(1))});
  EXPECT_EQ(caller_.Error(), 0);
  EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 2'500);
  EXPECT_EQ(text.substr(text.size() - 9), " 1002499\n");
}

TEST_F(BatchTest, NeedsABatchThatHasStartedAndNotEnded) {
  const auto send_error = [&](ScriptedReply reply) {
    SendTo("1", std::move(reply));
    return caller_.Error();
  };
  const auto good = Json(R"({"results": [{"to": "1", "id": ")" + kId + "\"}]}");
  Start();
  EXPECT_EQ(send_error(good), 0);
  // A start that fails leaves no older batch behind.
  Script({Refusal(422, 203, "Too long")});
  caller_.Call(u"StartBatch", {Caller::Text("Other")});
  EXPECT_EQ(caller_.Error(), 203);
  const auto asked = Requests().size();
  EXPECT_EQ(send_error(good), 205);
  caller_.Call(u"EndBatch");
  EXPECT_EQ(caller_.Error(), 205);
  EXPECT_EQ(Requests().size(), asked);
  Start();
  Script({Refusal(503, 503, "Not now")});
  caller_.Call(u"EndBatch");
  EXPECT_EQ(caller_.Error(), 503);
  Script({Json(R"({"accepted": 0})")});
  EXPECT_EQ(caller_.Call(u"EndBatch"), "OK: 0 accepted");
  EXPECT_EQ(send_error(good), 205);
}

}  // namespace
}  // namespace orvalo::test
