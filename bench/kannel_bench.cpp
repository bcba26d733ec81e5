// The road through a real SMS gateway engine, measured against the engine alone on the same
// messages in the same run, with delivery reports on; and the same road under kill -9.
//
//   kannel_bench [--rounds N] [--size N] [--window N] [--connections N ...]
//                                                 accepted messages a second, at 1, 4 and 16
//                                                 connections; the ratios are medians
//   kannel_bench --kills 10 --size 100000 [--window N] [--store]
//                                                 kills the service and the engine, each so often,
//                                                 while the messages go through, and accounts for
//                                                 every one of them

#include <CLI/CLI.hpp>
#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <deque>
#include <filesystem>
#include <functional>
#include <map>
#include <mutex>
#include <nlohmann/json.hpp>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "platform/http.h"
#include "service/http_server.h"
#include "support/gateway_program.h"
#include "support/kannel_engine.h"
#include "support/scoped_variable.h"
#include "support/smpp_stand_in.h"
#include "support/temporary_folder.h"

namespace orvalo::bench {
namespace {

using Time = std::chrono::steady_clock;

double SecondsSince(Time::time_point begin) {
  return std::chrono::duration<double>(Time::now() - begin).count();
}

double Median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

void OnThreads(int count, const std::function<void(int)>& work) {
  std::vector<std::thread> threads;
  threads.reserve(static_cast<std::size_t>(count));
  for (int i = 0; i < count; ++i) threads.emplace_back(work, i);
  for (auto& thread : threads) thread.join();
}

void Await(const char* what, const std::function<bool()>& ready, int seconds = 300) {
  const auto begin = Time::now();
  while (!ready()) {
    if (SecondsSince(begin) > seconds) throw std::runtime_error(std::string("in vain: ") + what);
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
}

// Clear of the endings for which the network does something special.
std::string Number(int i) { return std::to_string(27820000000LL + i) + "00"; }
std::string TextOf(int i) { return "Your parcel " + std::to_string(i) + " is ready."; }

// Takes the engine's reports when no service does.
class ReportSink : public service::HttpHandler {
 public:
  service::ServedReply Handle(const service::ServedRequest& request) override {
    if (request.query.find("type=1&") != std::string_view::npos) ++delivered;
    return {};
  }
  service::ServedReply Malformed(int status) override { return {status, "", {}, false}; }
  std::atomic<int> delivered{0};
};

class Road {
 public:
  explicit Road(int window, const test::KannelEngine::Options& engine = {})
      : engine_(folder_.File("engine"), network_.port(), engine) {
    test::Spill(folder_.File("password"), "engine");
    test::Spill(folder_.File("status"), "watch");
    options_ = {"--rate-limit",
                "100000000",
                "--carrier",
                "kannel",
                "--operations-listen",
                "127.0.0.1:" + std::to_string(test::UnusedPort()),
                "--kannel-url",
                engine_.sendsms_url(),
                "--kannel-user",
                "orvalo",
                "--kannel-password-file",
                folder_.File("password"),
                "--kannel-status-url",
                engine_.status_url(),
                "--kannel-status-password-file",
                folder_.File("status"),
                "--kannel-sender",
                "Orvalo",
                "--kannel-window",
                std::to_string(window),
                "--silence-minutes",
                "1"};
    const test::ScopedVariable password("ORVALO_PASSWORD", "bench");
    if (Run({"account", "add", "bench", "--credit", "100000000"}).status != 0) {
      throw std::runtime_error("the service took no account");
    }
    if (!engine_.Start()) throw std::runtime_error("no engine:\n" + engine_.Diagnosis());
    StartService();
  }

  void StartService() {
    service_.reset();
    service_ = std::make_unique<test::GatewayProgram>(folder_.path(), options_);
    if (service_->port() == 0) throw std::runtime_error("no service");
    port_ = service_->port();
  }
  void KillService() {
    port_ = 0;
    service_->Stop(SIGKILL);
  }

  test::ProgramResult Run(std::vector<std::string> words) {
    words.insert(words.end(), {"--data", folder_.File("data")});
    return test::RunGateway(std::move(words));
  }

  // The value of a line of /metrics; 0 when it is not there.
  double Metric(const std::string& name) {
    platform::HttpRequest request;
    request.url = "http://127.0.0.1:" + std::to_string(service_->operations_port()) + "/metrics";
    const auto text = "\n" + client_.Perform(request).body;
    const auto at = text.find("\n" + name + " ");
    return at == std::string::npos ? 0 : std::atof(text.c_str() + at + name.size() + 2);
  }

  test::SmppStandIn& network() { return network_; }
  test::KannelEngine& engine() { return engine_; }
  int port() const { return port_; }  // of the service; 0 while it is dead

 private:
  test::TemporaryFolder folder_;
  test::SmppStandIn network_{{.port = 0, .receipt_delay_ms = 20, .keeps_all = false}};
  test::KannelEngine engine_;
  std::vector<std::string> options_;
  std::unique_ptr<test::GatewayProgram> service_;
  std::atomic<int> port_{0};
  platform::HttpClient client_;
};

// One connection to the service, logged in.
class ServiceClient {
 public:
  explicit ServiceClient(const Road& road) : road_(road) {}

  // The message's id; "" when there is no reply, which may be tried again with the same key.
  std::string Send(int i, const std::string& key) {
    if (token_.empty() && !LogIn()) return "";
    platform::HttpRequest request;
    request.method = "POST";
    request.url = Url("/v1/messages");
    request.headers = {{"Content-Type", "application/json"},
                       {"Authorization", "Bearer " + token_},
                       {"Idempotency-Key", key}};
    request.body = nlohmann::json{{"to", Number(i)}, {"text", TextOf(i)}}.dump();
    const auto reply = client_.Perform(request);
    if (reply.status != 200) return "";
    return nlohmann::json::parse(reply.body).at("id").get<std::string>();
  }

 private:
  std::string Url(const std::string& path) const {
    return "http://127.0.0.1:" + std::to_string(road_.port()) + path;
  }
  bool LogIn() {
    platform::HttpRequest request;
    request.method = "POST";
    request.url = Url("/v1/session");
    request.headers = {{"Content-Type", "application/json"}};
    request.body = R"({"client_id":"bench","user":"bench","password":"bench"})";
    const auto reply = client_.Perform(request);
    if (reply.status == 200) token_ = nlohmann::json::parse(reply.body).at("token");
    return reply.status == 200;
  }

  const Road& road_;
  platform::HttpClient client_;
  std::string token_;
};

std::string KeyOf(int run, int i) {
  char key[33];
  std::snprintf(key, sizeof key, "%016x%016x", run, i);
  return key;
}

struct Rates {
  double accepted = 0, reported = 0;  // a second
};

// Straight to the engine, one message a request as its users post.
Rates EngineAlone(Road& road, int connections, int size) {
  ReportSink sink;
  service::HttpServerOptions options;
  options.threads = 256;
  service::HttpServer server(options, sink);
  const auto begin = Time::now();
  OnThreads(connections, [&](int thread) {
    platform::HttpClient client;
    platform::HttpRequest request;
    request.method = "POST";
    request.url = road.engine().sendsms_url();
    for (int i = thread; i < size; i += connections) {
      request.headers = {{"Content-Type", "text/plain; charset=UTF-8"},
                         {"X-Kannel-Username", "orvalo"},
                         {"X-Kannel-Password", "engine"},
                         {"X-Kannel-From", "Orvalo"},
                         {"X-Kannel-To", Number(i)},
                         {"X-Kannel-DLR-Mask", "31"},
                         {"X-Kannel-DLR-Url", "http://127.0.0.1:" + std::to_string(server.port()) +
                                                  "/r?type=%d&to=%p&detail=%A"}};
      request.body = TextOf(i);
      if (client.Perform(request).status != 202) throw std::runtime_error("the engine refused");
    }
  });
  Rates rates;
  rates.accepted = size / SecondsSince(begin);
  Await("the engine's reports", [&] { return sink.delivered >= size; });
  rates.reported = size / SecondsSince(begin);
  return rates;
}

Rates Ours(Road& road, int connections, int size, int run) {
  constexpr const char* kDelivered = "orvalo_reported_parts_total{state=\"delivered\"}";
  const auto before = road.Metric(kDelivered);
  std::deque<ServiceClient> clients;
  for (int i = 0; i < connections; ++i) clients.emplace_back(road);
  OnThreads(connections,
            [&](int thread) { clients[thread].Send(size + thread, KeyOf(run, size + thread)); });
  Await("the first reports", [&] { return road.Metric(kDelivered) >= before + connections; });
  const auto begin = Time::now();
  OnThreads(connections, [&](int thread) {
    for (int i = thread; i < size; i += connections) {
      if (clients[thread].Send(i, KeyOf(run, i)).empty()) throw std::runtime_error("refused");
    }
  });
  Rates rates;
  rates.accepted = size / SecondsSince(begin);
  Await("our reports", [&] { return road.Metric(kDelivered) >= before + connections + size; });
  rates.reported = size / SecondsSince(begin);
  return rates;
}

void Measure(int rounds, int size, int window, const std::vector<int>& all_connections) {
  Road road(window);
  int run = 0;
  for (const int connections : all_connections) {
    const int messages = std::max(200, size * connections / 16);
    std::vector<double> engine, ours, accepted_ratio, reported_ratio;
    for (int round = 0; round < rounds; ++round) {
      const auto floor = EngineAlone(road, connections, messages);
      const auto rates = Ours(road, connections, messages, ++run);
      engine.push_back(floor.accepted);
      ours.push_back(rates.accepted);
      accepted_ratio.push_back(rates.accepted / floor.accepted);
      reported_ratio.push_back(rates.reported / floor.reported);
    }
    std::printf(
        "%2d connections %7d messages  engine %7.0f/s  ours %7.0f/s  accepted ours/engine %5.2f  "
        "until all are reported %5.2f\n",
        connections, messages, Median(engine), Median(ours), Median(accepted_ratio),
        Median(reported_ratio));
    std::fflush(stdout);
  }
  if (road.Run({"check"}).status != 0) throw std::runtime_error("the ledger does not add up");
}

// What the network saw, by text.
class Seen {
 public:
  explicit Seen(test::SmppStandIn& network) {
    network.OnSubmit([this](const test::SubmittedSm& sm) {
      std::lock_guard guard(mutex_);
      ++times_[sm.bytes];
    });
  }
  int Times(const std::string& text) {
    std::lock_guard guard(mutex_);
    const auto place = times_.find(text);
    return place == times_.end() ? 0 : place->second;
  }

 private:
  std::mutex mutex_;
  std::map<std::string, int> times_;
};

std::vector<nlohmann::json> Lines(const std::string& output) {
  std::vector<nlohmann::json> lines;
  std::istringstream stream(output);
  for (std::string line; std::getline(stream, line);) lines.push_back(nlohmann::json::parse(line));
  return lines;
}

// Every message is accepted, whatever dies meanwhile: without a reply it is sent again with its
// key.
void SendAll(const Road& road, int size, std::atomic<int>& accepted) {
  constexpr int kConnections = 16;
  OnThreads(kConnections, [&](int thread) {
    ServiceClient client(road);
    for (int i = thread; i < size; i += kConnections) {
      while (client.Send(i, KeyOf(1, i)).empty()) {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
      }
      ++accepted;
    }
  });
}

void Account(Road& road, Seen& seen, int size) {
  std::map<std::string, int> by_status, doubts;
  int lost = 0, doubled = 0, wrong = 0;
  std::map<std::string, int> entries;
  std::map<std::string, std::string> texts;  // by id
  for (const auto& line : Lines(road.Run({"ledger", "--json"}).out)) {
    const auto text = line.at("text").get<std::string>();
    const int status = line.at("status"), times = seen.Times(text);
    ++entries[line.at("key").get<std::string>()];
    ++by_status[std::to_string(status)];
    texts[line.at("id")] = text;
    if (times > 1) ++doubled;
    if (times == 0 && status == 4) ++wrong;  // told as delivered, never seen
    if (times == 0 && status != 1) ++lost;   // neither seen nor in doubt
  }
  for (const auto& line : Lines(road.Run({"outbox", "list", "--json"}).out)) {
    const auto part = line.at("part").get<std::string>();
    const auto times = seen.Times(texts[part.substr(0, part.find('/'))]);
    ++doubts[line.at("state").get<std::string>() + (times > 0 ? ", seen" : ", not seen")];
  }
  std::printf("%d messages sent, %zu in the ledger, %d keys twice\n", size, entries.size(),
              static_cast<int>(std::count_if(entries.begin(), entries.end(),
                                             [](const auto& entry) { return entry.second > 1; })));
  for (const auto& [status, count] : by_status)
    std::printf("  status %s: %d\n", status.c_str(), count);
  for (const auto& [state, count] : doubts) std::printf("  open, %s: %d\n", state.c_str(), count);
  std::printf("lost %d, told as delivered and never seen %d, submitted twice to the network %d\n",
              lost, wrong, doubled);
  const auto check = road.Run({"check"});
  std::printf("%s", check.out.c_str());
}

void Kill(int kills, int size, int window, bool keeps_queue) {
  Road road(window, {.smsboxes = 1, .keeps_queue = keeps_queue, .core = "", .smsc = ""});
  Seen seen(road.network());
  std::atomic<int> accepted{0};
  std::thread sender([&] { SendAll(road, size, accepted); });
  for (int kill = 0; kill < 2 * kills; ++kill) {
    const int next = static_cast<int>(static_cast<long long>(size) * (kill + 1) / (2 * kills + 1));
    Await(
        "the next kill", [&] { return accepted >= next; }, 1'200);
    if (kill % 2 == 0) {
      road.KillService();
      road.StartService();
    } else {
      road.engine().KillAll();
      if (!road.engine().Start()) throw std::runtime_error(road.engine().Diagnosis());
    }
    std::printf("killed %s at %d\n", kill % 2 == 0 ? "the service" : "the engine", next);
    std::fflush(stdout);
  }
  sender.join();
  // At rest when the engine has nothing left: all is reported then, or in doubt.
  Await(
      "rest",
      [&] {
        std::this_thread::sleep_for(std::chrono::seconds(2));
        return road.Metric("orvalo_outbox_parts{state=\"waiting\"}") +
                   road.Metric("orvalo_outbox_parts{state=\"taken\"}") ==
               0;
      },
      1'200);
  Account(road, seen, size);
}

}  // namespace
}  // namespace orvalo::bench

int main(int argc, char** argv) {
  CLI::App app{"The road through a real SMS gateway engine"};
  int rounds = 3, size = 8'000, kills = 0, window = 5'000;
  app.add_option("--rounds", rounds)->check(CLI::Range(1, 99));
  app.add_option("--size", size, "Messages; at fewer connections fewer")
      ->check(CLI::Range(1, 1'000'000));
  app.add_option("--kills", kills, "Kill the service and the engine so often")
      ->check(CLI::Range(0, 1'000));
  app.add_option("--window", window, "The service's --kannel-window")
      ->check(CLI::Range(1, 1'000'000));
  std::vector<int> connections{1, 4, 16};
  app.add_option("--connections", connections)->check(CLI::Range(1, 64));
  bool keeps_queue = false;
  app.add_flag("--store", keeps_queue, "The engine keeps its queue on the disk, and may repeat it");
  CLI11_PARSE(app, argc, argv);
  try {
    if (kills > 0) {
      orvalo::bench::Kill(kills, size, window, keeps_queue);
    } else {
      orvalo::bench::Measure(rounds, size, window, connections);
    }
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "kannel_bench: %s\n", failure.what());
    return 1;
  }
}
