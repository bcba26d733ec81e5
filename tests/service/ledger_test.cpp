#include <fmt/format.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <functional>
#include <set>
#include <thread>

#include "service/ledger_check.h"
#include "service/running_service.h"
#include "service/secrets.h"
#include "support/small_disk.h"

namespace orvalo::test {
namespace {

void OnThreads(int count, const std::function<void(int)>& work) {
  std::vector<std::thread> threads;
  for (int i = 0; i < count; ++i) threads.emplace_back(work, i);
  for (auto& thread : threads) thread.join();
}

TEST(IdempotencyKeys, MakeARequestHappenOnce) {
  RunningService running;
  auto ann = running.Caller(), bob = running.Caller("bob");
  const auto key = NewKey();
  const auto first = ann.Message("27821110001", key);
  ASSERT_EQ(first.status, 200);
  EXPECT_EQ(ann.Message("27821110001", key).body, first.body);
  EXPECT_EQ(ann.Message("27821110002", key).code(), 206);
  EXPECT_EQ(ann.Post("/v1/batches", {{"text", "Hello"}}, key).code(), 206);
  const auto send = [&](const char* body, int count) {
    return ann.Send("POST", "/v1/messages", body, fmt::format("{:032x}", 0xabc00 + count),
                    "application/json");
  };
  const auto same = send(R"({"to":"27821110001","text":"A","type":0,"x":{"b":[1,2],"a":1}})", 1);
  for (const char* body :
       {R"( {"x" : {"a":1.0,"b":[1e0,2]}, "type":0, "text":"\u0041", "to":"27821110001"} )",
        R"({"to":"1","to":"27821110001","text":"A","type":0,"x":{"b":[1,2],"a":1}})"}) {
    EXPECT_EQ(send(body, 1).body, same.body) << body;
  }
  for (const char* body : {R"({"to":"27821110001","text":"A","type":0,"x":{"b":[2,1],"a":1}})",
                           R"({"to":"27821110001","text":"A","x":{"b":[1,2],"a":1}})",
                           R"({"to":"27821110001","text":"A","type":0,"x":{"b":[1,2],"a":"1"}})"}) {
    EXPECT_EQ(send(body, 1).code(), 206) << body;
  }
  // A key that an earlier version kept, with a digest of the bytes.
  constexpr const char* kEarlier = R"({"text":"A","to":"27821110001"})";
  const auto earlier = send(kEarlier, 2);
  const auto digest = service::Digest(std::string("POST /v1/messages\n") + kEarlier);
  running.service().database().Write([&](service::Connection& connection) {
    service::Query(connection,
                   "UPDATE submission SET request=? WHERE seq=(SELECT max(seq) FROM "
                   "submission)",
                   service::Blob{digest})
        .Run();
  });
  EXPECT_EQ(send(kEarlier, 2).body, earlier.body);
  EXPECT_EQ(send(R"({"text":"B","to":"27821110001"})", 2).code(), 206);
  EXPECT_NE(bob.Message("27821110001", key).body, first.body) << "keys belong to an account";
  running.Restart();
  running.clock.Advance(24 * 3600 * 1000 - 1000);
  auto later = running.Caller();
  EXPECT_EQ(later.Message("27821110001", key).body, first.body) << "a day and a restart later";
  EXPECT_EQ(running.Entries().size(), 4u);
  EXPECT_TRUE(running.LedgerAddsUp());
}

// The reply kept under a key, or the code of the refusal to tell it.
std::string KeptReply(GatewayCaller& caller, const std::string& key) {
  const auto reply = caller.Get("/v1/submissions/" + key);
  if (reply.status != 200) return std::to_string(reply.code());
  EXPECT_EQ(reply.body["key"], key);
  return reply.body["status"].dump() + reply.body["reply"].dump();
}

TEST(IdempotencyKeys, TellTheirAccountWhatBecameOfThem) {
  RunningService running;
  auto early = running.Caller();
  std::string keys[5];
  for (auto& key : keys) key = NewKey();
  const auto batch = early.Post("/v1/batches", {{"text", "Hello"}}, keys[0]);
  const auto path = "/v1/batches/" + batch.body.value("batch", "");
  const JsonReply replies[] = {
      batch, early.Post(path + "/recipients", {{"to", {"27821110001", "27829900", "1"}}}, keys[1]),
      early.Post(path + "/end", nlohmann::json::object(), keys[2]),
      early.Post(path + "/end", nlohmann::json::object(), keys[3]),  // refused
      early.Message("27821110001", keys[4])};
  EXPECT_EQ(replies[3].code(), 207);
  const auto first_time = running.clock.Now();
  running.Restart(31 * 24 * 3600);
  auto ann = running.Caller(), bob = running.Caller("bob");
  for (std::size_t i = 0; i < std::size(keys); ++i) {
    EXPECT_EQ(KeptReply(ann, keys[i]), std::to_string(replies[i].status) + replies[i].body.dump());
    EXPECT_EQ(KeptReply(bob, keys[i]), "209");
  }
  EXPECT_EQ(ann.Get("/v1/submissions/" + keys[0]).body["time"], first_time);
  for (const auto* bad : {"0", "x"}) EXPECT_EQ(KeptReply(ann, bad), "101") << bad;
  // Not kept: what would be refused again anyway.
  const auto malformed = NewKey();
  EXPECT_EQ(ann.Message("12", malformed).code(), 201);
  EXPECT_EQ(KeptReply(ann, malformed), "209");

  // From the 31st day on each submission takes older ones away, and no younger one.
  const auto young = NewKey();
  ann.Message("27821110001", young);
  const auto charged = ann.Balance();
  const auto count = [&] {
    return running.service().database().Read([](service::Connection& connection) {
      return connection.database().execAndGet("SELECT count(*) FROM submission").getInt();
    });
  };
  for (int i = 0; i < 20; ++i) ann.Post("/v1/batches", {{"text", ""}});
  EXPECT_EQ(count(), 26) << "not yet";
  running.clock.Advance(1'000);
  for (int i = 0; i < 20; ++i) ann.Post("/v1/batches", {{"text", ""}});
  EXPECT_EQ(count(), 41);
  for (const auto& key : keys) EXPECT_EQ(KeptReply(ann, key), "209");
  EXPECT_EQ(KeptReply(ann, young).substr(0, 3), "200");
  ann.Message("27821110001", young);
  EXPECT_EQ(ann.Balance(), charged);
}

// A service may be started with another carrier, or a later version be stricter.
TEST(IdempotencyKeys, AnswerAReplayAsBeforeThoughItWouldBeRefusedNow) {
  RunningService running;
  auto ann = running.Caller();
  const nlohmann::json message = {
      {"to", "27821110001"}, {"text", "Hello"}, {"sender", "No engine takes this name"}};
  const auto key = NewKey(), batch_key = NewKey();
  const auto first = ann.Post("/v1/messages", message, key);
  const auto batch = ann.Post("/v1/batches", message, batch_key);
  ASSERT_EQ(first.status, 200);
  running.options.kannel.emplace();
  running.options.kannel->urls = {"http://127.0.0.1:9/sendsms"};
  running.options.kannel->sender = "Orvalo";
  running.Restart();
  auto later = running.Caller();
  EXPECT_EQ(later.Post("/v1/messages", message).code(), 101);
  EXPECT_EQ(later.Post("/v1/messages", message, key).body, first.body);
  EXPECT_EQ(later.Post("/v1/batches", message, batch_key).body, batch.body);
}

TEST(IdempotencyKeys, AreTidiedFasterThanTheyCome) {
  RunningService running;
  auto ann = running.Caller();
  running.service().database().Write([&](service::Connection& connection) {
    connection.database().exec(
        "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i+1 FROM n WHERE i<500) "
        "INSERT INTO submission(account,key,request,status,reply,time) "
        "SELECT 9,randomblob(16),'',200,'{}',0 FROM n");
  });
  for (int i = 0; i < 300; ++i) ann.Post("/v1/batches", {{"text", ""}});
  running.service().database().Read([](service::Connection& connection) {
    EXPECT_EQ(connection.database()
                  .execAndGet("SELECT count(*) FROM submission WHERE account=9")
                  .getInt(),
              0);
  });
}

TEST(IdempotencyKeys, HoldWhenTheSameRequestComesManyTimesAtOnce) {
  RunningService running;
  auto ann = running.Caller();
  constexpr int kThreads = 8, kRounds = 25;
  std::vector<std::string> keys;
  for (int i = 0; i < kRounds; ++i) keys.push_back(NewKey());
  std::vector<std::vector<std::string>> ids(kThreads);
  OnThreads(kThreads, [&](int thread) {
    for (const auto& key : keys) {
      ids[thread].push_back(ann.Message("27821110001", key).body.value("id", "none"));
    }
  });
  for (const auto& other : ids) EXPECT_EQ(other, ids.front());
  std::set<std::string> entries;
  for (const auto& entry : running.Entries()) entries.insert(entry.message.id);
  EXPECT_EQ(entries, std::set<std::string>(ids[0].begin(), ids[0].end()));
  EXPECT_EQ(running.Entries().size(), std::size_t{kRounds});
  EXPECT_EQ(ann.Balance(), "80.0");
}

TEST(Ledger, TakesOverTheFileOfAnOlderVersion) {
  RunningService running;
  auto ann = running.Caller();
  const auto id = ann.Message("27821110001").body.value("id", "");
  running.service().database().Write([](service::Connection& connection) {
    connection.database().exec("DROP TABLE outbox; PRAGMA user_version=1");
  });
  running.Restart();
  auto again = running.Caller();
  EXPECT_EQ(again.Get("/v1/messages/" + id).status, 200);
  EXPECT_EQ(again.Balance(), "99.2");
  running.service().database().Read([](service::Connection& connection) {
    const auto check = service::CheckLedger(connection);
    EXPECT_EQ(check.messages, 1);
    EXPECT_TRUE(check.faults.empty());
  });
}

TEST(Credit, IsNeverOverdrawn) {
  RunningService running;
  auto bob = running.Caller("bob");  // 2.0, a part costs 0.8
  std::atomic<int> accepted = 0, short_of_credit = 0;
  OnThreads(8, [&](int) {
    const auto reply = bob.Message("27821110001");
    if (reply.status == 200) ++accepted;
    if (reply.code() == 202 && reply.status == 402) ++short_of_credit;
  });
  EXPECT_EQ(accepted, 2);
  EXPECT_EQ(short_of_credit, 6);
  EXPECT_EQ(bob.Balance(), "0.4");

  const auto key = NewKey();
  EXPECT_EQ(bob.Message("27821110001", key).code(), 202);
  running.service().accounts().AddCredit("bob", 10'000);
  EXPECT_EQ(bob.Message("27821110001", key).code(), 202) << "the same key gets the same reply";
  EXPECT_EQ(bob.Message("27821110001").status, 200);
  const auto two_parts = bob.Post(
      "/v1/messages", {{"to", "27821110001"}, {"text", std::string(200, 'x')}, {"concat", 3}});
  ASSERT_EQ(two_parts.status, 200);
  EXPECT_EQ(bob.Get("/v1/messages/" + two_parts.body.value("id", "")).body.value("charge", ""),
            "1.6");
  EXPECT_EQ(bob.Balance(), "8.0");
  EXPECT_TRUE(running.LedgerAddsUp());
}

TEST(Batches, AcceptEachRecipientOnItsOwn) {
  RunningService running;
  running.service().pricing().Set("49", 1'500);
  running.service().pricing().Set("4930", 100);
  auto ann = running.Caller(), bob = running.Caller("bob");
  const auto id = bob.Post("/v1/batches", {{"text", "Hi"}, {"sender", "Shop"}, {"unicode", true}})
                      .body.value("batch", "");
  const std::string path = "/v1/batches/" + id;
  EXPECT_EQ(ann.Post(path + "/recipients", {{"to", {"27821110001"}}}).code(), 205);

  const nlohmann::json numbers{"+4930123456", "004930123456", "27829900",
                               "0012",        "49891234",     "27821110001"};
  const auto key = NewKey();
  const auto reply = bob.Post(path + "/recipients", {{"to", numbers}}, key);
  ASSERT_EQ(reply.status, 200);
  const auto& results = reply.body["results"];
  ASSERT_EQ(results.size(), numbers.size());
  const int codes[] = {0, 0, 208, 201, 0, 202};  // 0.1, 0.1, nothing, nothing, 1.5, no 0.8 is left
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    EXPECT_EQ(results[i]["to"], numbers[i]);
    EXPECT_EQ(results[i].value("code", 0), codes[i]) << i;
    EXPECT_EQ(results[i].contains("id"), codes[i] == 0) << i;
  }
  EXPECT_EQ(bob.Balance(), "0.3");
  EXPECT_EQ(bob.Post(path + "/recipients", {{"to", numbers}}, key).body, reply.body);
  EXPECT_EQ(bob.Post(path + "/recipients", {{"to", {"4930123456"}}}).status, 200);
  EXPECT_EQ(bob.Post(path + "/end", nlohmann::json::object()).body.value("accepted", 0), 4);
  EXPECT_EQ(bob.Post(path + "/end", nlohmann::json::object()).code(), 207);
  EXPECT_EQ(bob.Post(path + "/recipients", {{"to", {"4930123456"}}}).code(), 207);

  const auto entries = running.Entries();
  ASSERT_EQ(entries.size(), 4u);
  for (const int i : {0, 1, 3}) EXPECT_EQ(entries[i].message.number, "4930123456") << "as priced";
  EXPECT_EQ(entries[0].key, key);
  EXPECT_EQ(entries[0].user, "bob");
  EXPECT_EQ(entries[2].message.sender, "Shop");
  EXPECT_TRUE(entries[2].message.unicode);
  EXPECT_EQ(entries[2].charge, 1'500);
  EXPECT_TRUE(running.LedgerAddsUp());
}

TEST(Prices, ChangeUnderARunningService) {
  RunningService running;
  auto ann = running.Caller();
  ann.Message("27821110001");
  {
    service::Database outside(running.options.folder);
    service::Pricing(outside).Set("2782", 10'000);
  }
  ann.Message("27821110001");
  EXPECT_EQ(ann.Balance(), "89.2");
}

TEST(Ledger, KeepsTextsAsTheyAre) {
  RunningService running;
  auto ann = running.Caller();
  using namespace std::string_literals;
  const auto text = "line\nquote\" back\\ nul\0 end ж 😀"s;
  EXPECT_EQ(ann.Post("/v1/messages", {{"to", "123"}, {"text", text}}).status, 200);
  EXPECT_EQ(
      ann.Post("/v1/messages",
               {{"to", "123"}, {"text", "0416D83DDE00"}, {"unicode", true}, {"encoded", true}})
          .status,
      200);
  const auto entries = running.Entries();
  ASSERT_EQ(entries.size(), 2u);
  EXPECT_EQ(entries[0].message.text, text);
  EXPECT_EQ(entries[1].message.text, "Ж😀");
}

TEST(Ledger, AcceptsNothingOnAFullDisk) {
  RunningService running;
  std::string log;
  running.options.report = [&log](const std::string& line) { log += line; };
  running.Restart();
  auto ann = running.Caller();
  const auto limit_pages = [&](int pages) {
    running.service().database().Write([&](service::Connection& connection) {
      connection.database().execAndGet(fmt::format("PRAGMA max_page_count={}", pages));
    });
  };
  limit_pages(1);  // SQLite takes the present size for it
  const nlohmann::json large{
      {"to", "27821110001"}, {"text", std::string(5'000, 'x')}, {"concat", 255}};
  std::string key;
  JsonReply reply{200, {}};
  int accepted = 0;
  for (; accepted < 50 && reply.status == 200; ++accepted) {
    key = NewKey();
    reply = ann.Post("/v1/messages", large, key);
  }
  EXPECT_EQ(reply.status, 500);
  EXPECT_EQ(reply.code(), 500);
  EXPECT_EQ(reply.body["error"]["message"],
            "The disk of the service is full; nothing was accepted");
  EXPECT_EQ(running.Entries().size(), static_cast<std::size_t>(accepted - 1));
  EXPECT_TRUE(running.LedgerAddsUp());
  EXPECT_NE(log.find("the disk that holds " + running.options.folder + " is full"), log.npos);
  limit_pages(100'000);
  EXPECT_EQ(ann.Post("/v1/messages", large, key).status, 200) << "the key may be tried again";
  EXPECT_TRUE(running.LedgerAddsUp());
}

// On a small disk of its own, which is full some pages later each time.
TEST(Ledger, NamesAFullDiskWhereverItIsMet) {
  const TemporaryFolder folder;
  const std::string disk = folder.File("disk"), data = disk + "/a/data";
  const auto met = OnSmallDisk(disk, 1 << 20, [&] {
    service::PrepareSecrets();
    FakeClock clock;
    service::ServiceOptions options;
    options.folder = data;
    int told = 0;
    bool opened = false;
    for (std::size_t pages = 6; pages < 254 && !opened; pages += 6) {
      Spill(disk + "/filler", std::string((255 - pages) * 4096, 'x'));
      try {
        opened = service::GatewayService(options, clock).accounts().Add("ann", "", "ann", 1);
      } catch (const std::exception& failure) {
        ASSERT_EQ(failure.what(), "the disk that holds " + data + " is full: make room there")
            << pages << " pages";
        ++told;
      }
    }
    EXPECT_TRUE(opened && told > 3) << told;
    Spill(disk + "/filler", "");
    service::Database database(data);
    service::Sessions sessions(database, clock);
    const auto token = sessions.Open(1, "");
    FillDisk(disk + "/rest");
    clock.Advance(600'000);
    EXPECT_EQ(sessions.AccountOf(token), 1) << "who only asks is answered";
    EXPECT_THROW(sessions.Open(1, ""), service::DiskFull);
  });
  if (!met) GTEST_SKIP() << "no disk can be made here";
  EXPECT_TRUE(*met);
}

TEST(Database, FoldsItsJournalWhileOthersReadAndWrite) {
  const TemporaryFolder folder;
  service::Database database(folder.path());
  std::atomic<bool> done = false;
  std::atomic<int> rows = 0;
  std::uintmax_t longest = 0;
  OnThreads(5, [&](int thread) {
    if (thread > 0) {
      while (!done) {
        database.Read([&](service::Connection& connection) {
          service::Query row(connection, "SELECT value FROM setting LIMIT 1");
          if (row.Step()) ++rows;
        });
      }
      return;
    }
    for (int i = 0; i < 400; ++i) {
      database.Write([&](service::Connection& connection) {
        service::Query(connection, "INSERT INTO setting VALUES(?,1)",
                       std::to_string(i) + std::string(60'000, 'x'))
            .Run();
      });
      longest = std::max(longest, std::filesystem::file_size(folder.File("gateway.db-wal")));
    }
    done = true;
  });
  EXPECT_GT(rows, 0);
  EXPECT_LT(longest, 6u << 20) << "of 24 MB that were written";
}

TEST(Database, UndoesAFailedWriteAndNoOther) {
  RunningService running;
  auto& database = running.service().database();
  std::atomic<int> failed = 0;
  OnThreads(8, [&](int thread) {
    for (int i = 0; i < 50; ++i) {
      try {
        database.Write([&](service::Connection& connection) {
          service::Query(connection, "INSERT INTO setting VALUES(?,?)",
                         fmt::format("{} {}", thread, i), thread)
              .Run();
          if (i % 2 == 0) throw std::runtime_error("changed its mind");
        });
      } catch (const std::runtime_error&) {
        ++failed;
      }
    }
  });
  EXPECT_EQ(failed, 200);
  const auto rows = database.Read([](service::Connection& connection) {
    service::Query row(connection, "SELECT count(*) FROM setting WHERE name LIKE '% %'");
    row.Step();
    return row.Int(0);
  });
  EXPECT_EQ(rows, 200);
}

}  // namespace
}  // namespace orvalo::test
