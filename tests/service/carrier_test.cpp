#include <gtest/gtest.h>

#include "service/running_service.h"

namespace orvalo::test {
namespace {

TEST(SimulatedCarrier, MovesMessagesAsTheirNumbersSay) {
  RunningService running({.delivery_seconds = 4});
  auto ann = running.Caller();
  struct Case {
    const char* number;
    int at_once, after_2, after_4;
    std::string id = {};
  };
  std::vector<Case> cases{
      {"27821110001", 2, 3, 4}, {"27829901", 1, 1, 1},  {"27829902", 2, 2, 2},
      {"27829903", 2, 3, 3},    {"27829904", 2, 3, 4},  {"27829905", 2, 3, 5},
      {"27829906", 2, 3, 6},    {"27829907", 2, 3, 7},  {"+27829908", 2, 3, 8},
      {"27829909", 2, 3, 9},    {"27829910", 2, 3, 10}, {"27829911", 11, 11, 11},
      {"27829912", 2, 3, 4},    {"990", 2, 3, 4}};
  const auto status = [&](const std::string& id) {
    return ann.Get("/v1/messages/" + id).body.value("status", 0);
  };
  for (auto& one : cases) one.id = ann.Message(one.number).body.value("id", "");
  const auto later =
      ann.Post("/v1/messages", {{"to", "27829905"}, {"text", "Hi"}, {"delivery_minutes", 1}})
          .body.value("id", "");
  for (const auto& one : cases) EXPECT_EQ(status(one.id), one.at_once) << one.number;
  running.clock.Advance(1000);
  for (const auto& one : cases) EXPECT_EQ(status(one.id), one.at_once) << one.number;
  running.clock.Advance(1000);
  for (const auto& one : cases) EXPECT_EQ(status(one.id), one.after_2) << one.number;
  running.clock.Advance(2000);
  for (const auto& one : cases) EXPECT_EQ(status(one.id), one.after_4) << one.number;
  running.clock.Advance(100'000'000);
  auto again = running.Caller();
  for (const auto& one : cases) {
    const auto reply = again.Get("/v1/messages/" + one.id).body;
    EXPECT_EQ(reply.value("status", 0), one.after_4) << one.number;
    EXPECT_EQ(reply.value("charge", ""), "0.8");
  }
  EXPECT_EQ(again.Get("/v1/messages/" + later).body.value("status", 0), 5);
}

TEST(SimulatedCarrier, HoldsALaterDelivery) {
  RunningService running;
  auto ann = running.Caller();
  const auto id =
      ann.Post("/v1/messages", {{"to", "27821110001"}, {"text", "Hi"}, {"delivery_minutes", 10}})
          .body.value("id", "");
  const struct { int seconds, status; } steps[] = {{0, 11}, {599, 11}, {1, 2}, {1, 3}, {1, 4}};
  for (const auto& [seconds, status] : steps) {
    running.clock.Advance(seconds * 1000);
    EXPECT_EQ(ann.Get("/v1/messages/" + id).body.value("status", 0), status);
  }
}

TEST(SimulatedCarrier, SendsAwayWhatIsTooMuch) {
  RunningService running({.throttle = 2});
  auto ann = running.Caller();
  const auto key = NewKey();
  EXPECT_EQ(ann.Message("27821110001").status, 200);
  EXPECT_EQ(ann.Message("27821110001").status, 200);
  EXPECT_EQ(ann.Message("27821110001", key).code(), 113);
  EXPECT_EQ(ann.Get("/v1/ping").status, 200);
  running.clock.Advance(1000);
  EXPECT_EQ(ann.Message("27821110001", key).status, 200) << "the same key may be tried again";
  EXPECT_EQ(running.Entries().size(), 3u);
}

TEST(SimulatedCarrier, FailsAfterItsNumberOfRecipients) {
  RunningService running({.fail_after = 3});
  auto ann = running.Caller();
  const auto key = NewKey();
  const auto first = ann.Message("27821110001", key);
  const auto batch = ann.Post("/v1/batches", {{"text", "Hi"}}).body.value("batch", "");
  const std::string recipients = "/v1/batches/" + batch + "/recipients";
  EXPECT_EQ(ann.Get("/v1/health").status, 200);
  EXPECT_EQ(ann.Post(recipients, {{"to", {"123", "12", "456"}}}).status, 200);
  EXPECT_EQ(ann.Message("27821110001").code(), 503);
  EXPECT_EQ(ann.Post(recipients, {{"to", {"789"}}}).code(), 503);
  EXPECT_EQ(ann.Get("/v1/health").status, 503);
  EXPECT_EQ(ann.Message("27821110001", key).body, first.body)
      << "what was accepted before stays accepted";
  EXPECT_EQ(running.Entries().size(), 3u);
}

TEST(LostReplies, NeverMakeAMessageTwice) {
  RunningService running({}, 0.5);
  auto ann = running.Caller();
  constexpr int kMessages = 40;
  int lost = 0;
  for (int i = 0; i < kMessages; ++i) {
    const auto key = NewKey();
    JsonReply reply;
    for (int attempt = 0; attempt < 50 && reply.status == 0; ++attempt) {
      reply = ann.Message("27821110001", key);
      if (reply.status == 0) ++lost;
    }
    EXPECT_EQ(reply.status, 200);
  }
  EXPECT_GT(lost, kMessages / 4);
  EXPECT_EQ(running.Entries().size(), std::size_t{kMessages});
  EXPECT_TRUE(running.LedgerAddsUp());
}

}  // namespace
}  // namespace orvalo::test
