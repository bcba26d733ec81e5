#include <fmt/format.h>
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <set>

#include "service/ledger.h"
#include "service/running_service.h"

namespace orvalo::test {
namespace {

using nlohmann::json;

// All pages from `query` on, each of at most `limit`; `between` runs after each.
std::vector<json> Walk(
    GatewayCaller& caller, const std::string& query, int limit,
    const std::function<void()>& between = [] {}) {
  std::vector<json> all;
  std::string after;
  do {
    const auto reply = caller.Get(fmt::format("/v1/messages?limit={}{}{}", limit, query,
                                              after.empty() ? "" : "&after=" + after));
    EXPECT_EQ(reply.status, 200);
    const auto& messages = reply.body["messages"];
    EXPECT_LE(messages.size(), static_cast<std::size_t>(limit));
    all.insert(all.end(), messages.begin(), messages.end());
    const auto next = reply.body.value("next", "");
    EXPECT_TRUE(next.empty() || (next != after && messages.size() == std::size_t(limit)));
    after = next;
    between();
  } while (!after.empty());
  return all;
}

TEST(MessageList, TellsTheOwnAccountsMessagesAndNoOthers) {
  RunningService running;
  running.service().pricing().Set("49", 100);
  auto ann = running.Caller(), bob = running.Caller("bob");
  const auto key = NewKey(), other_key = NewKey();
  const auto id = ann.Message("+27821110001", key).body.value("id", "");
  bob.Message("27821110002");
  const auto text = json{{"to", "4915112345678"}, {"text", std::string(200, 'x')}, {"concat", 2}};
  const auto second = ann.Post("/v1/messages", text, other_key).body.value("id", "");
  EXPECT_EQ(ann.Message("27829900").code(), 208);  // nothing to list
  running.clock.Advance(10'000);
  const auto accepted = running.clock.Now() - 10;
  const auto list = ann.Get("/v1/messages").body;
  const json expected = {{"messages",
                          {{{"id", id},
                            {"key", key},
                            {"to", "27821110001"},
                            {"parts", 1},
                            {"charge", "0.8"},
                            {"status", 4},
                            {"accepted", accepted}},
                           {{"id", second},
                            {"key", other_key},
                            {"to", "4915112345678"},
                            {"parts", 2},
                            {"charge", "0.2"},
                            {"status", 4},
                            {"accepted", accepted}}}}};
  EXPECT_EQ(list, expected);
  for (const char* bad : {"limit=0", "limit=1001", "limit=", "limit=x", "after=-1", "after=x",
                          "after=99999999999999999999", "since=-1", "since=1.5", "limit=5%"}) {
    EXPECT_EQ(ann.Get(std::string("/v1/messages?") + bad).code(), 101) << bad;
  }
  EXPECT_EQ(ann.Get("/v1/messages?after=999").body, json::parse(R"({"messages":[]})"));
  EXPECT_EQ(ann.Get(fmt::format("/v1/messages?since={}", accepted + 1)).body["messages"].size(),
            0u);
}

TEST(MessageList, MissesNothingAndTellsNothingTwiceWhileMessagesCome) {
  RunningService running;
  running.service().accounts().AddCredit("ann", 1'000'000);
  running.service().pricing().Set("49", 100);
  running.service().pricing().Set("48", 2'000);
  auto ann = running.Caller(), bob = running.Caller("bob");
  std::vector<std::string> sent;
  const auto send = [&](const char* number) {
    sent.push_back(ann.Message(number).body.value("id", "none"));
    bob.Message("27821110002");
  };
  const auto ids = [](const std::vector<json>& messages) {
    std::vector<std::string> all;
    for (const auto& message : messages) all.push_back(message["id"]);
    return all;
  };
  for (int second = 0; second < 4; ++second) {
    for (const char* number : {"27821110001", "48151123456", "49151123456"}) send(number);
    running.clock.Advance(1'000);
  }
  for (const int limit : {1, 2, 5, 12, 500}) EXPECT_EQ(ids(Walk(ann, "", limit)), sent) << limit;
  const auto from_the_third_second = fmt::format("&since={}", running.clock.Now() - 2);
  EXPECT_EQ(ids(Walk(ann, from_the_third_second, 4)),
            std::vector<std::string>(sent.begin() + 6, sent.end()));

  // Others come meanwhile, cheaper and dearer ones, and with a clock that was set back.
  int rounds = 0;
  const auto walked = ids(Walk(ann, "", 5, [&] {
    if (++rounds > 2) return;
    running.clock.Advance(-7'000);
    for (const char* number : {"49151123456", "48151123456"}) send(number);
  }));
  EXPECT_EQ(walked, sent);
}

TEST(MessageList, CostsNoMoreThanItsRows) {
  RunningService running;
  running.service().database().Read([](service::Connection& connection) {
    const auto steps_of = [&](const std::string& sql) {
      SQLite::Statement plan(connection.database(), "EXPLAIN QUERY PLAN " + sql);
      std::string steps;
      while (plan.executeStep()) steps += plan.getColumn(3).getString() + "; ";
      return steps;
    };
    std::vector<std::string> used;
    const auto trace = [](unsigned, void* list, void* statement, void*) {
      static_cast<std::vector<std::string>*>(list)->emplace_back(
          sqlite3_sql(static_cast<sqlite3_stmt*>(statement)));
      return 0;
    };
    auto* const handle = connection.database().getHandle();
    sqlite3_trace_v2(handle, SQLITE_TRACE_STMT, trace, &used);
    service::Ledger::After(connection, 1, 0, 10);
    service::Ledger::RowBefore(connection, 1, 5);
    sqlite3_trace_v2(handle, 0, nullptr, nullptr);
    ASSERT_EQ(used.size(), 2u);
    EXPECT_EQ(steps_of(used[0]),
              "SEARCH message USING INDEX message_list (account=? AND rowid>?); ");
    const auto since = steps_of(used[1]);
    EXPECT_EQ(since.find("SCAN"), since.npos) << since;
    EXPECT_NE(since.find("(account=? AND accepted=?)"), since.npos) << since;
    EXPECT_NE(since.find("(account=? AND accepted>?)"), since.npos) << since;
  });
}

}  // namespace
}  // namespace orvalo::test
