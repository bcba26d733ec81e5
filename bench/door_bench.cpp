// What those who are logged in get from the gateway service while others attack its door, measured
// against what they get in quiet in the same run: each attack is on and off by turns, and the
// ratios are medians over the rounds. Prints a line for each attack; ends with 1 when one of them
// takes more than half of the quiet figure.
//
//   door_bench [--rounds N] [--spell MILLISECONDS]
//
// Four connections ask (balance, a message's status) and four submit, each for an account of its
// own, from 127.0.0.1. The attackers come from other addresses of this machine, whose processor
// they share with the service.

#include <CLI/CLI.hpp>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <memory>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "crowd.h"
#include "floor_client.h"
#include "support/gateway_program.h"
#include "support/scoped_variable.h"
#include "support/temporary_folder.h"
#include "timing.h"

namespace orvalo::bench {
namespace {

constexpr int kOfEachKind = 4;
constexpr double kLeast = 0.5;
constexpr char kMessage[] = R"({"to":"27821110001","text":"Hello"})";

void Pause(int milliseconds) {
  std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

// Requests answered a second.
struct Rates {
  double asked = 0, submitted = 0;
};

// Those who are logged in: each has one request after the other answered for as long as they live.
class Customers {
 public:
  Customers(const std::string& url, const std::vector<std::string>& users) {
    for (std::size_t i = 0; i < users.size(); ++i) {
      clients_.push_back(std::make_unique<FloorClient>(url, users[i]));
    }
    for (std::size_t i = 0; i < users.size(); ++i) {
      threads_.emplace_back([this, i] { Work(*clients_[i], i % 2 == 0); });
    }
  }
  ~Customers() {
    stops_ = true;
    for (auto& thread : threads_) thread.join();
  }
  Customers(const Customers&) = delete;
  Customers& operator=(const Customers&) = delete;

  Rates During(int milliseconds) {
    const int asked = asked_, submitted = submitted_;
    const double seconds = SecondsFor([&] { Pause(milliseconds); });
    return {(asked_ - asked) / seconds, (submitted_ - submitted) / seconds};
  }
  int failures() const { return failures_; }

 private:
  void Work(FloorClient& client, bool asks) {
    std::string path;
    for (int i = 0; !stops_; ++i) {
      try {
        if (path.empty() || !asks) {
          const auto reply = nlohmann::json::parse(client.Post("/v1/messages", kMessage));
          path = "/v1/messages/" + reply.at("id").get<std::string>();
        } else {
          client.Get(i % 2 == 0 ? "/v1/balance" : path);
        }
        ++(asks ? asked_ : submitted_);
      } catch (const std::exception&) {
        ++failures_;
      }
    }
  }

  std::vector<std::unique_ptr<FloorClient>> clients_;
  std::vector<std::thread> threads_;
  std::atomic<int> asked_{0}, submitted_{0}, failures_{0};
  std::atomic<bool> stops_{false};
};

std::string PostOf(const std::string& path, const std::string& headers, const std::string& body) {
  return "POST " + path + " HTTP/1.1\r\nHost: a\r\nContent-Type: application/json\r\n" + headers +
         "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
}

std::string LoginOfNobody() {
  static std::atomic<int> last = 0;
  return PostOf(
      "/v1/session", "",
      R"({"client_id":"x","user":"nobody)" + std::to_string(++last) + R"(","password":"guess"})");
}

std::string VoucherGuess(const std::string& token) {
  static std::atomic<int> last = 0;
  char number[17], key[33];
  std::snprintf(number, sizeof number, "%016d", ++last);
  std::snprintf(key, sizeof key, "f%031d", last.load());
  return PostOf("/v1/vouchers",
                "Authorization: Bearer " + token + "\r\nIdempotency-Key: " + key + "\r\n",
                std::string(R"({"number":")") + number + R"("})");
}

class DoorBench {
 public:
  DoorBench(int rounds, int spell)
      : rounds_(rounds),
        spell_(spell),
        gateway_(folder_.path(), {"--rate-limit", "100000000"}),
        port_(gateway_.port()) {
    std::vector<std::string> users;
    users.reserve(2 * kOfEachKind);
    for (int i = 0; i < 2 * kOfEachKind; ++i) users.push_back(AddAccount(std::to_string(i)));
    AddAccount("guesser");
    customers_ = std::make_unique<Customers>(gateway_.url(), users);
    customers_->During(spell_);
  }

  // False when an attack takes more than it may.
  bool Run() {
    std::printf("%-44s %19s %19s %15s\n", "", "quiet", "under attack", "ratio");
    std::printf("%-44s %9s %9s %9s %9s %7s %7s\n", "", "asked/s", "sent/s", "asked/s", "sent/s",
                "asked", "sent");
    const std::string head = "GET /v1/health HTTP/1.1\r\nHost: a\r\nX-A: ",
                      body =
                          "POST /v1/session HTTP/1.1\r\nHost: a\r\n"
                          "Content-Type: application/json\r\nContent-Length: 4000\r\n\r\n{";
    const auto loiter = [&](int count, int addresses, const std::string& words, bool trickle) {
      return [=, this]() -> std::shared_ptr<void> {
        return std::make_shared<Loiterers>(port_, count, addresses, words, trickle ? "x" : "");
      };
    };
    const auto hammer = [&](int count, int addresses, const std::function<std::string()>& next) {
      return [=, this]() -> std::shared_ptr<void> {
        return std::make_shared<Hammerers>(port_, count, addresses, next);
      };
    };
    const auto token = FloorClient(gateway_.url(), "guesser").token();
    bool good = true;
    good &= Measure("64 silent sockets of one address", loiter(64, 1, "", false));
    good &= Measure("500 silent sockets of one address", loiter(500, 1, "", false));
    good &= Measure("500 silent sockets of 5 addresses", loiter(500, 5, "", false));
    good &= Measure("500 trickling heads of 5 addresses", loiter(500, 5, head, true));
    good &= Measure("500 trickling bodies of 5 addresses", loiter(500, 5, body, true));
    good &= Measure("48 logging in as nobody, of one address", hammer(48, 1, LoginOfNobody));
    good &= Measure("48 logging in as nobody, of 48 addresses", hammer(48, 48, LoginOfNobody));
    good &= Measure("8 guessing vouchers for one account",
                    hammer(8, 1, [token] { return VoucherGuess(token); }));
    std::printf("requests of customers that failed: %d\n", customers_->failures());
    return good && customers_->failures() == 0;
  }

 private:
  std::string AddAccount(const std::string& user) {
    const test::ScopedVariable password("ORVALO_PASSWORD", "bench");
    if (test::RunGateway(
            {"account", "add", user, "--credit", "100000000", "--data", folder_.File("data")})
            .status != 0) {
      throw std::runtime_error("the gateway service took no account");
    }
    return user;
  }

  bool Measure(const char* name, const std::function<std::shared_ptr<void>()>& attack) {
    std::vector<double> quiet_asked, quiet_submitted, asked, submitted, ratio_asked,
        ratio_submitted;
    for (int round = 0; round < rounds_; ++round) {
      const auto quiet = customers_->During(spell_);
      const auto attackers = attack();
      Pause(spell_ / 2);
      const auto attacked = customers_->During(spell_);
      quiet_asked.push_back(quiet.asked);
      quiet_submitted.push_back(quiet.submitted);
      asked.push_back(attacked.asked);
      submitted.push_back(attacked.submitted);
      ratio_asked.push_back(attacked.asked / quiet.asked);
      ratio_submitted.push_back(attacked.submitted / quiet.submitted);
    }
    const double ratios[] = {Median(ratio_asked), Median(ratio_submitted)};
    std::printf("%-44s %9.0f %9.0f %9.0f %9.0f %7.2f %7.2f\n", name, Median(quiet_asked),
                Median(quiet_submitted), Median(asked), Median(submitted), ratios[0], ratios[1]);
    std::fflush(stdout);
    return ratios[0] >= kLeast && ratios[1] >= kLeast;
  }

  const int rounds_, spell_;  // milliseconds
  test::TemporaryFolder folder_;
  test::GatewayProgram gateway_;
  const int port_;
  std::unique_ptr<Customers> customers_;
};

}  // namespace
}  // namespace orvalo::bench

int main(int argc, char** argv) {
  CLI::App app("Measures the gateway service under attack against itself in quiet");
  int rounds = 3, spell = 600;
  app.add_option("--rounds", rounds, "of each attack, quiet and not")->check(CLI::Range(1, 99));
  app.add_option("--spell", spell, "milliseconds of each measure")->check(CLI::Range(100, 60'000));
  CLI11_PARSE(app, argc, argv);
  try {
    return orvalo::bench::DoorBench(rounds, spell).Run() ? 0 : 1;
  } catch (const std::exception& problem) {
    std::fprintf(stderr, "door_bench: %s\n", problem.what());
    return 1;
  }
}
