#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <algorithm>
#include <atomic>
#include <map>

#include "service/engine_road.h"
#include "service/gsm_alphabet.h"
#include "service/secrets.h"
#include "support/raw_server.h"
#include "support/tls_certificate.h"

namespace orvalo::test {
namespace {

using testing::HasSubstr;

std::string Repeated(int count, const std::string& text) {
  std::string all;
  for (int i = 0; i < count; ++i) all += text;
  return all;
}

// Every character of the GSM alphabet, the escaped ones included.
std::string WholeAlphabet() {
  std::string septets;
  for (char code = 0; code < 0x7F; ++code) {
    if (code != service::kGsmEscape) septets += code;
  }
  septets += 0x7F;
  for (const char code : {0x0A, 0x14, 0x28, 0x29, 0x2F, 0x3C, 0x3D, 0x3E, 0x40, 0x65}) {
    septets += {service::kGsmEscape, code};
  }
  return septets;
}

class KannelTest : public testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(KannelEngine::IsInstalled()) << "the package kannel"; }
};

TEST_F(KannelTest, WritesWhatArrivesAtTheNetworkFieldByField) {
  EngineRoad road;
  ASSERT_TRUE(road.engine.Start()) << road.engine.Diagnosis();
  road.StartService();
  auto demo = road.Caller();
  struct Part {
    int esm_class, data_coding;
    std::string hex;
  };
  const auto alphabet = WholeAlphabet();
  const struct {
    nlohmann::json message;
    int source_ton;
    std::vector<Part> parts;
  } cases[] = {
      {{{"text", "Hello @ you"}}, 5, {{3, 0, service::ToHex(std::string("Hello \0 you", 11))}}},
      {{{"text", service::FromGsm(alphabet)}}, 5, {{3, 0, service::ToHex(alphabet)}}},
      {{{"text", Repeated(160, "x")}, {"sender", "12345"}}, 2, {{3, 0, Repeated(160, "78")}}},
      {{{"text", Repeated(76, "€") + Repeated(10, "y")}, {"concat", 2}, {"sender", "+31612345678"}},
       1,
       {{0x43, 0, "050003RR0201" + Repeated(76, "1b65") + "79"},
        {0x43, 0, "050003RR0202" + Repeated(9, "79")}}},
      {{{"text", "ж and 😀"}}, 5, {{3, 8, "0436002000610 06e00640020d83dde00"}}},
      {{{"text", Repeated(66, "ж") + "😀"}, {"unicode", true}, {"concat", 3}},
       5,
       {{3, 8, Repeated(66, "0436") + "d83dde00"}}},
      {{{"text", Repeated(66, "ж") + "😀" + Repeated(5, "d")}, {"unicode", true}, {"concat", 3}},
       5,
       {{0x43, 8, "050003RR0201" + Repeated(66, "0436")},
        {0x43, 8, "050003RR0202d83dde00" + Repeated(5, "0064")}}},
      {{{"text", "Now!"}, {"type", 1}}, 5, {{3, 0xF0, "4e6f7721"}}},
      {{{"text", "ж"}, {"type", 1}}, 5, {{3, 0x18, "0436"}}},
      {{{"text", "424547494E0D0A00FF"}, {"type", 8}},
       5,
       {{0x43, 0xF5, "06050423f40000424547494e0d0a00ff"}}},
      {{{"text", Repeated(134, "25")}, {"type", 9}},
       5,
       {{0x43, 0xF5, "0b050423f500000003RR0201" + Repeated(128, "25")},
        {0x43, 0xF5, "0b050423f500000003RR0202" + Repeated(6, "25")}}},
      {{{"text", "4d546864"}, {"type", 6}}, 5, {{0x43, 0xF5, "060504158100004d546864"}}},
      {{{"text", "474946"}, {"type", 5}}, 5, {{0x43, 0xF5, "060504158a0000474946"}}},
      {{{"text", "474946"}, {"type", 3}}, 5, {{0x43, 0xF5, "06050415820000474946"}}},
  };
  std::size_t parts = 0;
  std::vector<std::string> ids;
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    auto message = cases[i].message;
    message["to"] = "2782111" + std::to_string(1000 + i);
    message["ack"] = true;
    const auto reply = demo.Post("/v1/messages", message);
    ASSERT_EQ(reply.status, 200) << message << reply.body;
    ids.push_back(reply.body.value("id", ""));
    parts += cases[i].parts.size();
  }
  ASSERT_TRUE(road.network.Await(parts));
  auto arrived = ArrivedByNumber(road.network);
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    auto& sms = arrived["2782111" + std::to_string(1000 + i)];
    ASSERT_EQ(sms.size(), cases[i].parts.size()) << cases[i].message;
    for (std::size_t part = 0; part < sms.size(); ++part) {
      const auto& [esm_class, data_coding, hex] = cases[i].parts[part];
      auto expected = hex;
      std::erase(expected, ' ');
      const auto bytes = service::ToHex(sms[part].bytes);
      if (const auto at = expected.find("RR"); at != std::string::npos) {
        expected.replace(at, 2, service::ToHex(sms.front().bytes).substr(at, 2));
      }
      EXPECT_EQ(bytes, expected) << cases[i].message;
      EXPECT_EQ(sms[part].esm_class, esm_class) << cases[i].message;
      EXPECT_EQ(sms[part].data_coding, data_coding) << cases[i].message;
      EXPECT_EQ(sms[part].source_ton, cases[i].source_ton);
      EXPECT_EQ(sms[part].dest_ton, 1);
      EXPECT_EQ(sms[part].registered & 3, 1);
      EXPECT_FALSE(sms[part].validity.empty());
    }
  }
  for (const auto& id : ids) EXPECT_EQ(EngineRoad::AwaitStatus(demo, id, 4), 4);
  EXPECT_TRUE(road.AddsUp());
}

TEST_F(KannelTest, TellsWhatBecameOfEachPartAndChargesForWhatWasSent) {
  EngineRoad road;
  ASSERT_TRUE(road.engine.Start()) << road.engine.Diagnosis();
  ASSERT_EQ(road.Run({"price", "set", "2783", "0.5"}).status, 0);
  road.StartService();
  auto demo = road.Caller();
  const struct {
    const char* number;
    int parts, status;
    const char* charge;
  } cases[] = {
      {"2782111001", 1, 4, "0.8"},  {"2783111001", 2, 4, "1.0"},  // by the prefix, by the part
      {"2782111991", 1, 9, "0.0"},  {"2782111992", 1, 7, "0.8"}, {"2782111993", 1, 4, "0.8"},
      {"2782111994", 1, 10, "0.8"}, {"2782111995", 1, 7, "0.8"}, {"2782111996", 1, 3, "0.8"},
      {"2782111999", 1, 6, "0.8"},  {"9992111001", 1, 9, "0.0"},  // the engine has no way there
      {"2783111991", 2, 9, "0.0"},  {"2783111992", 2, 7, "1.0"},
  };
  std::vector<std::string> ids;
  for (const auto& one : cases) {
    const auto reply =
        demo.Post("/v1/messages",
                  {{"to", one.number}, {"text", std::string(one.parts * 150, 'x')}, {"concat", 3}});
    ids.push_back(reply.body.value("id", ""));
  }
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    EXPECT_EQ(EngineRoad::AwaitStatus(demo, ids[i], cases[i].status), cases[i].status)
        << cases[i].number;
  }
  // Both parts of a refused message are refunded, each once, whoever is told first.
  ASSERT_TRUE(EngineRoad::Await([&] { return demo.Balance() == "992.4"; })) << demo.Balance();
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    EXPECT_EQ(demo.Get("/v1/messages/" + ids[i]).body.value("charge", ""), cases[i].charge)
        << cases[i].number;
  }
  EXPECT_TRUE(road.AddsUp());

  const auto batch = demo.Post("/v1/batches", {{"text", "To all"}}).body.value("batch", "");
  const auto results =
      demo.Post("/v1/batches/" + batch + "/recipients",
                {{"to", {"+2782111001", "2782111001", "2782111991", "9992111001", "2782111002"}}})
          .body.at("results");
  for (const auto& [index, status] : {std::pair{0, 4}, {1, 4}, {2, 9}, {3, 9}, {4, 4}}) {
    EXPECT_EQ(EngineRoad::AwaitStatus(demo, results.at(index).at("id"), status), status) << index;
  }
  const auto refusals = {nlohmann::json{{"text", "x"}, {"sender", "far too long a name"}},
                         nlohmann::json{{"text", "x"}, {"sender", "nö"}},
                         nlohmann::json{{"text", Repeated(71, "ж")}},
                         nlohmann::json{{"text", Repeated(81, "€")}}};
  for (auto refused : refusals) {
    refused["to"] = "2782111001";
    EXPECT_GE(demo.Post("/v1/messages", refused).status, 400) << refused;
  }
  EXPECT_TRUE(road.AddsUp());
  const auto metrics = road.Operations("/metrics");
  EXPECT_THAT(metrics, HasSubstr("orvalo_reported_parts_total{state=\"delivered\"} 7"));
  EXPECT_THAT(metrics, HasSubstr("orvalo_engine_links_usable 1"));
  EXPECT_EQ(road.Operations("/ready"), "ready\n");
}

TEST_F(KannelTest, WaitsForAnEngineThatIsAwayAndFailsNothing) {
  EngineRoad road({.smsboxes = 2, .keeps_queue = true, .core = "", .smsc = ""});
  road.StartService();
  auto demo = road.Caller();
  std::vector<std::string> ids;
  const auto send = [&] { ids.push_back(demo.Message("2782111001").body.value("id", "")); };
  send();
  EXPECT_EQ(demo.Get("/v1/messages/" + ids[0]).body.value("status", 0), 2);
  EXPECT_EQ(demo.Get("/v1/health").status, 503);
  EXPECT_EQ(road.Operations("/ready"), "the network is not available\n");
  // In a ledger from a backup, what waits may have been sent since.
  const auto held =
      demo.Post("/v1/messages", {{"to", "2782111001"}, {"text", "Hi"}, {"delivery_minutes", 10}});
  EXPECT_EQ(road.Run({"outbox", "doubt"}).out, "1\n");
  EXPECT_EQ(demo.Get("/v1/messages/" + ids[0]).body.value("status", 0), 1);
  EXPECT_EQ(demo.Get("/v1/messages/" + held.body.value("id", "")).body.value("status", 0), 11);
  EXPECT_EQ(road.Run({"outbox", "settle", ids[0], "again"}).out, "1\n");
  ASSERT_TRUE(road.engine.Start()) << road.engine.Diagnosis();
  EXPECT_EQ(EngineRoad::AwaitStatus(demo, ids[0], 4), 4);
  road.engine.KillSmsbox(0);  // the other takes its place
  for (int i = 0; i < 6; ++i) send();
  for (const auto& id : ids) EXPECT_EQ(EngineRoad::AwaitStatus(demo, id, 4), 4);
  road.engine.KillAll();
  send();
  ASSERT_TRUE(road.engine.Start()) << road.engine.Diagnosis();
  EXPECT_EQ(EngineRoad::AwaitStatus(demo, ids.back(), 4), 4);
  EXPECT_TRUE(road.Doubts().empty());

  // A wrong password is no fault of a message: it waits, and goes when the password is right.
  Spill(road.folder.File("password"), "wrong\n");
  road.service->Stop(SIGTERM);
  road.StartService();
  auto again = road.Caller();
  const auto id = again.Message("2782111001").body.value("id", "");
  ASSERT_TRUE(EngineRoad::Await([&] {
    return Slurp(road.folder.File("err")).find("engine_login_refused") != std::string::npos;
  }));
  EXPECT_EQ(again.Get("/v1/messages/" + id).body.value("status", 0), 2);
  EXPECT_EQ(Slurp(road.folder.File("err")).find("wrong"), std::string::npos);
  Spill(road.folder.File("password"), "engine\n");
  road.service->Stop(SIGTERM);
  road.StartService();
  auto last = road.Caller();
  EXPECT_EQ(EngineRoad::AwaitStatus(last, id, 4), 4);
  EXPECT_EQ(road.network.count(), ids.size() + 1);
  EXPECT_TRUE(road.AddsUp());
}

TEST_F(KannelTest, SpeaksTlsBothWaysAndHandsNothingToWhomNobodyVouchesFor) {
  const TemporaryFolder keys;
  const TlsCertificate certificate, other;
  Spill(keys.File("key"), certificate.KeyText());
  Spill(keys.File("cert"), certificate.CertificateText());
  Spill(keys.File("other"), other.CertificateText());
  EngineRoad road(
      {.core = "", .smsc = "", .certificate = keys.File("cert"), .key = keys.File("key")});
  ASSERT_TRUE(road.engine.Start()) << road.engine.Diagnosis();
  const auto trusted = std::find(road.options.begin(), road.options.end(), "--kannel-ca") + 1;
  *trusted = keys.File("other");
  const auto told = [&](const char* event) {
    return EngineRoad::Await([&] {
      const auto log = Slurp(road.folder.File("err"));
      const auto at = log.find(event);
      return at != std::string::npos && log.find("certificate", at) != std::string::npos;
    });
  };
  road.StartService();
  auto demo = road.Caller();
  const auto id = demo.Message("2782111001").body.value("id", "");
  EXPECT_TRUE(told("engine_unusable")) << Slurp(road.folder.File("err"));
  EXPECT_EQ(road.Operations("/ready"), "the network is not available\n");
  road.service->Stop(SIGTERM);
  const auto options = road.options;  // without the status page, the smsbox itself is asked
  const auto status = std::find(road.options.begin(), road.options.end(), "--kannel-status-url");
  road.options.erase(status, status + 4);
  road.StartService();
  EXPECT_TRUE(told("smsbox_down")) << Slurp(road.folder.File("err"));
  EXPECT_EQ(road.Caller().Get("/v1/messages/" + id).body.value("status", 0), 2);
  EXPECT_EQ(road.network.count(), 0u);
  for (const char* secret : {"password", "watch", "Authorization"}) {
    EXPECT_EQ(Slurp(road.folder.File("err")).find(secret), std::string::npos) << secret;
  }

  road.service->Stop(SIGTERM);
  road.options = options;
  *(std::find(road.options.begin(), road.options.end(), "--kannel-ca") + 1) = keys.File("cert");
  road.StartService();
  auto again = road.Caller();
  EXPECT_EQ(EngineRoad::AwaitStatus(again, id, 4), 4) << "reports come back over TLS, too";
  EXPECT_EQ(road.network.count(), 1u);
  EXPECT_EQ(again.Balance(), "999.2");
  EXPECT_TRUE(road.AddsUp());
}

// An engine that takes requests and never answers stands for every lost reply.
TEST_F(KannelTest, NeverSendsAgainWhatMayHaveBeenSent) {
  std::atomic<int> asked = 0;
  std::string report;  // the address of the last one's reports
  GatewayProgram* dies = nullptr;
  RawServer engine([&](RawServer::Connection& connection) {
    const auto request = connection.ReadRequest();
    if (request.empty()) return;
    const auto at = request.find("/reports/");
    report = request.substr(at, 9 + 32);
    if (dies != nullptr) dies->Stop(SIGKILL);
    ++asked;
  });
  EngineRoad road;
  auto& options = road.options;
  *(std::find(options.begin(), options.end(), "--kannel-url") + 1) = engine.Url("/cgi-bin/sendsms");
  const auto status = std::find(options.begin(), options.end(), "--kannel-status-url");
  options.erase(status, status + 4);
  road.StartService();
  auto demo = road.Caller();
  std::vector<std::string> ids;
  for (int i = 0; i < 4; ++i) {
    ids.push_back(demo.Message("2782111001").body.value("id", ""));
    ASSERT_EQ(EngineRoad::AwaitStatus(demo, ids.back(), 1), 1);
  }
  EXPECT_EQ(asked, 4);
  EXPECT_EQ(road.Doubts().size(), 4u);
  EXPECT_EQ(demo.Balance(), "996.8");

  // A report settles one, whatever comes after it; a person the others.
  const auto tell = [&](const std::string& key, const std::string& number, const char* type) {
    platform::HttpClient client;
    platform::HttpRequest request;
    request.url = "http://127.0.0.1:" + std::to_string(road.service->operations_port()) + key +
                  "?type=" + type + "&to=" + number + "&detail=x";
    return client.Perform(request).status;
  };
  const auto forged = "/reports/" + std::string(32, '0');
  EXPECT_EQ(tell(forged, "2782111001", "1"), 200);
  EXPECT_EQ(tell(report, "2782111002", "1"), 200);
  EXPECT_EQ(tell(report, "2782111001", "99"), 404);
  EXPECT_EQ(demo.Get("/v1/messages/" + ids[3]).body.value("status", 0), 1);
  for (const char* type : {"1", "8", "1", "34"}) EXPECT_EQ(tell(report, "2782111001", type), 200);
  EXPECT_EQ(demo.Get("/v1/messages/" + ids[3]).body.value("status", 0), 4);
  EXPECT_EQ(road.Run({"outbox", "settle", ids[0], "not-sent"}).out, "1\n");
  EXPECT_EQ(road.Run({"outbox", "settle", ids[0], "not-sent"}).status, 1);
  EXPECT_EQ(road.Run({"outbox", "settle", ids[1] + "/1", "sent"}).out, "1\n");
  EXPECT_EQ(demo.Get("/v1/messages/" + ids[1]).body.value("status", 0), 3);
  EXPECT_EQ(demo.Balance(), "997.6");
  EXPECT_EQ(demo.Get("/v1/messages/" + ids[0]).body.value("status", 0), 6);
  EXPECT_EQ(road.Run({"outbox", "settle", "all", "again"}).out, "1\n");
  ASSERT_TRUE(EngineRoad::Await([&] { return asked == 5; }));
  EXPECT_EQ(EngineRoad::AwaitStatus(demo, ids[2], 1), 1);

  // The engine has the request in hand when the service is killed: in doubt, and asked for once.
  dies = road.service.get();
  demo.Message("2782111009");
  ASSERT_TRUE(EngineRoad::Await([&] { return asked == 6; }));
  dies = nullptr;
  road.StartService();
  auto last = road.Caller();
  ASSERT_EQ(EngineRoad::AwaitStatus(last, last.Message("2782111010").body.value("id", ""), 1), 1);
  EXPECT_EQ(asked, 7) << "what waited longer would have been asked first";
  const auto doubts = road.Doubts();
  ASSERT_EQ(doubts.size(), 3u);
  EXPECT_EQ(doubts[1].value("number", ""), "2782111009");
  const auto several = road.Run({"outbox", "settle", doubts[0].value("part", ""),
                                 doubts[1].value("part", ""), ids[3], "sent"});
  EXPECT_EQ(several.status, 1);
  EXPECT_EQ(several.out, "2\n");
  EXPECT_THAT(several.err, HasSubstr("nothing of \"" + ids[3] + "\" is in doubt"));
  EXPECT_EQ(road.Doubts().size(), 1u);
  EXPECT_TRUE(road.AddsUp());
}

// The engine is killed with more in its queue than the window has room for. What it had makes room
// for the rest and waits for its reports or for a person; nothing is handed over twice by itself.
TEST_F(KannelTest, GoesOnWithARestartedEngineAsSoonAsItIsBack) {
  constexpr std::size_t kMessages = 14, kWindow = 8;
  for (const bool keeps_queue : {false, true}) {
    EngineRoad road(
        {.smsboxes = 1, .keeps_queue = keeps_queue, .core = "", .smsc = "throughput = 2\n"},
        {"--kannel-window", std::to_string(kWindow)});
    ASSERT_TRUE(road.engine.Start()) << road.engine.Diagnosis();
    road.StartService();
    auto demo = road.Caller();
    road.network.HoldReceipts(true);  // an engine takes along those it has in hand
    std::vector<std::string> ids;
    for (std::size_t i = 0; i < kMessages; ++i) {
      ids.push_back(demo.Message(std::to_string(27821110001 + i)).body.value("id", ""));
    }
    ASSERT_TRUE(road.network.Await(2));
    ASSERT_TRUE(EngineRoad::Await([&] {
      return road.Operations("/metrics").find("orvalo_outbox_parts{state=\"taken\"} 8") !=
             std::string::npos;
    }));
    road.engine.KillAll();
    ASSERT_TRUE(road.engine.Start()) << road.engine.Diagnosis();
    road.network.HoldReceipts(false);
    const auto settled = [&] {
      const auto open = road.Run({"outbox", "list", "--json"}).out;
      return open.find("\"waiting\"") == std::string::npos &&
             open.find("\"taken\"") == std::string::npos;
    };
    EXPECT_TRUE(EngineRoad::Await(settled)) << road.Run({"outbox", "list"}).out;
    if (!keeps_queue) {
      EXPECT_GE(road.Doubts().size(), 6u);
      EXPECT_EQ(road.Run({"outbox", "settle", "all", "again"}).status, 0);
    }
    // A killed engine may take along the reports of what was at the network, with a store as well.
    const std::size_t sure = keeps_queue ? kMessages - kWindow : kMessages - 2;
    EXPECT_TRUE(EngineRoad::Await([&] {
      return std::count_if(ids.begin(), ids.end(), [&](const std::string& id) {
               return demo.Get("/v1/messages/" + id).body.value("status", 0) == 4;
             }) >= static_cast<std::ptrdiff_t>(sure);
    })) << road.Run({"outbox", "list"}).out;
    if (keeps_queue) {
      EXPECT_THAT(road.Operations("/metrics"),
                  HasSubstr("orvalo_engine_parts_total{answer=\"taken\"} 14\n"));
    }
    EXPECT_TRUE(road.AddsUp());
  }
}

// Everything dies over and over; every message is accounted for, and none arrives twice. (An engine
// that keeps its queue repeats what the network had not acknowledged.)
TEST_F(KannelTest, AccountsForEveryMessageWhenEverythingIsKilled) {
  EngineRoad road({.smsboxes = 1, .keeps_queue = false, .core = "", .smsc = ""});
  ASSERT_TRUE(road.engine.Start()) << road.engine.Diagnosis();
  road.StartService();
  constexpr int kMessages = 120;
  const auto number = [](int i) { return std::to_string(27820000 + i) + "00"; };
  for (int i = 0; i < kMessages; ++i) {
    if (i % 40 == 10) {
      road.service->Stop(SIGKILL);
      road.StartService();
    }
    if (i % 40 == 30) {
      road.engine.KillAll();
      ASSERT_TRUE(road.engine.Start()) << road.engine.Diagnosis();
    }
    auto demo = road.Caller();
    ASSERT_EQ(demo.Message(number(i)).status, 200);
  }
  const auto settled = [&] {
    return road.Run({"outbox", "list", "--json"}).out.find("\"waiting\"") == std::string::npos;
  };
  ASSERT_TRUE(EngineRoad::Await(settled));
  // Every message was at the network, or is still open here; what an engine took along falls in
  // doubt with time.
  std::map<std::string, int> seen;
  const auto accounted = [&] {
    const auto open = road.Run({"outbox", "list", "--json"}).out;
    seen.clear();
    for (const auto& sm : road.network.submitted()) ++seen[sm.dest];
    for (int i = 0; i < kMessages; ++i) {
      if (!seen.contains(number(i)) && open.find('"' + number(i) + '"') == std::string::npos) {
        return false;
      }
    }
    return true;
  };
  EXPECT_TRUE(EngineRoad::Await(accounted));
  for (const auto& [to, times] : seen) EXPECT_EQ(times, 1) << to;
  EXPECT_EQ(road.service->Ledger().size(), std::size_t{kMessages});
  EXPECT_TRUE(road.AddsUp());
}

}  // namespace
}  // namespace orvalo::test
