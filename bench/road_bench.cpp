// The road of messages, measured against a floor on the same work in the same run: personalised
// single sends, one text by batch, and a status pass. Prints one table line a size; the ratios are
// medians over the rounds.
//
//   road_bench [--rounds N] [--sizes 1000,10000,100000]

#include <sqlite3.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <vector>

#include "client_stack.h"
#include "floor_client.h"
#include "support/gateway_program.h"
#include "support/scoped_variable.h"
#include "support/temporary_folder.h"

namespace orvalo::bench {
namespace {

constexpr char kPersonalText[] = "Dear <<FIRSTNAME>> <<SURNAME>>, your parcel is ready.";
constexpr char kPlainText[] = "The shop opens at nine tomorrow.";
constexpr std::size_t kChunkLength = 512;
constexpr std::int64_t kPastEveryInterval = 4000;  // seconds

double Seconds(const std::function<void()>& work) {
  const auto begin = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

double Median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

// The last digit keeps clear of the numbers that the simulated network refuses.
std::string Number(int i) { return std::to_string(2782000000LL + i) + "1"; }

nlohmann::json MessageBody(const std::string& text) {
  return {{"text", text},          {"type", 0},   {"unicode", false}, {"concat", 0}, {"sender", ""},
          {"delivery_minutes", 0}, {"ack", false}};
}

// The times of both sides, round by round.
struct Times {
  std::vector<double> floor, ours;
  void Print(const char* work, int size) const {
    std::vector<double> ratios;
    for (std::size_t i = 0; i < ours.size(); ++i) ratios.push_back(floor[i] / ours[i]);
    std::printf(
        "%-14s %8d  floor %9.0f/s  ours %9.0f/s  rate/floor %5.2f  time/floor %5.2f  us each "
        "%7.1f\n",
        work, size, size / Median(floor), size / Median(ours), Median(ratios), 1 / Median(ratios),
        1e6 * Median(ours) / size);
    std::fflush(stdout);
  }
};

class RoadBench {
 public:
  RoadBench(int size, int rounds)
      : size_(size),
        rounds_(rounds),
        gateway_(WithAccount(folder_.File("gateway")),
                 {"--rate-limit", "100000000", "--sim-delivery-seconds", "1000000"}),
        floor_(gateway_.url()),
        ours_(Made(folder_.File("client")), gateway_.url()) {}

  void Run() {
    Times personal, batch, status;
    AddContacts();
    for (int round = 0; round < rounds_; ++round) {
      personal.floor.push_back(PersonalFloor());
      personal.ours.push_back(Personal());
    }
    personal.Print("personalised", size_);
    for (int round = 0; round < rounds_; ++round) {
      status.floor.push_back(StatusFloor());
      status.ours.push_back(Status());
    }
    status.Print("status", size_);
    for (int round = 0; round < rounds_; ++round) {
      batch.floor.push_back(BatchFloor(round));
      batch.ours.push_back(Batch());
    }
    batch.Print("batch", size_);
  }

 private:
  // A folder for the service, with an account that has more credit than any benchmark can spend.
  static std::string WithAccount(const std::string& folder) {
    const test::ScopedVariable password("ORVALO_PASSWORD", "bench");
    Made(folder);
    if (test::RunGateway(
            {"account", "add", "bench", "--credit", "100000000", "--data", folder + "/data"})
            .status != 0) {
      throw std::runtime_error("the gateway service took no account");
    }
    return folder;
  }

  static std::string Made(const std::string& folder) {
    std::filesystem::create_directories(folder);
    return folder;
  }

  void AddContacts() {
    SmsDatabase::Transaction transaction(ours_.database());
    for (int i = 0; i < size_; ++i) {
      const std::int32_t cid = ours_.database().AddContact(
          {"Name" + std::to_string(i), "Surname", "", "", Number(i), {1}});
      contacts_ += ",A" + std::to_string(cid);
      numbers_ += "," + Number(i);
    }
    transaction.Commit();
  }

  double PersonalFloor() {
    std::vector<std::string> bodies;
    for (int i = 0; i < size_; ++i) {
      auto body = MessageBody("Dear Name" + std::to_string(i) + " Surname, your parcel is ready.");
      body["to"] = Number(i);
      bodies.push_back(body.dump());
    }
    return Seconds([&] {
      for (const std::string& body : bodies) floor_.Post("/v1/messages", body);
    });
  }

  double Personal() {
    std::int32_t id = 0;
    const double seconds =
        Seconds([&] { id = ours_.SendAndWait({.to = contacts_, .text = kPersonalText}); });
    ids_ = GatewayIds(id);
    return seconds;
  }

  // The gateway's ids of a message's recipients; a benchmark that lost one would measure something
  // else.
  std::vector<std::string> GatewayIds(std::int32_t id) {
    std::vector<std::string> ids;
    ours_.database().ForEachSms([&](const MessageRow& row) {
      if (row.ref_id == id && row.id != id && row.api_msg_id.size() > 5)
        ids.push_back(row.api_msg_id.substr(5));
      return true;
    });
    if (static_cast<int>(ids.size()) != size_)
      throw std::runtime_error("not every recipient was sent to");
    return ids;
  }

  // Asks as often as the pass will: every row of every personalised message sent so far is
  // followed.
  double StatusFloor() {
    return Seconds([&] {
             for (int message = 0; message < rounds_; ++message) {
               for (const std::string& id : ids_) floor_.Get("/v1/messages/" + id);
             }
           }) /
           rounds_;
  }

  double Status() {
    ours_.clock().Forward(kPastEveryInterval);
    return Seconds([&] { ours_.QueryAndWait(); }) / rounds_;
  }

  double BatchFloor(int round) {
    std::vector<std::string> chunks;
    nlohmann::json numbers = nlohmann::json::array();
    std::size_t length = 0;
    for (int i = 0; i < size_; ++i) {
      numbers.push_back(Number(i));
      length += 1 + Number(i).size();
      if (length < kChunkLength && i + 1 < size_) continue;
      chunks.push_back(nlohmann::json{{"to", numbers}}.dump());
      numbers.clear();
      length = 0;
    }
    const std::string start = MessageBody(kPlainText).dump();
    return Seconds([&] {
      const auto batch =
          nlohmann::json::parse(floor_.Post("/v1/batches", start)).at("batch").get<std::string>();
      for (const std::string& chunk : chunks)
        floor_.Post("/v1/batches/" + batch + "/recipients", chunk);
      floor_.Post("/v1/batches/" + batch + "/end", "{}");
      InsertEqualRows(folder_.File("floor" + std::to_string(round) + ".db"));
    });
  }

  double Batch() {
    std::int32_t id = 0;
    const double seconds =
        Seconds([&] { id = ours_.SendAndWait({.to = numbers_, .text = kPlainText}); });
    GatewayIds(id);
    return seconds;
  }

  // As many rows as the batch makes, of the same columns and bytes, by bare SQLite in one
  // transaction.
  void InsertEqualRows(const std::string& file) const {
    sqlite3* handle = nullptr;
    sqlite3_open(file.c_str(), &handle);
    sqlite3_exec(handle,
                 "PRAGMA journal_mode=WAL; PRAGMA synchronous=NORMAL;"
                 "CREATE TABLE SMS(ID INTEGER PRIMARY KEY, Time INTEGER, Stat INTEGER, Type "
                 "INTEGER, RefID INTEGER,"
                 "\"To\" TEXT, ToInfo TEXT, Msg TEXT, ApiMsgID TEXT, SavedStat INTEGER, SenderID "
                 "TEXT, Delay INTEGER,"
                 "QueryTime INTEGER, StatQryTm INTEGER, Charge TEXT);"
                 "CREATE INDEX FOLLOWED ON SMS(Stat, StatQryTm) WHERE QueryTime >= 1; BEGIN",
                 nullptr, nullptr, nullptr);
    sqlite3_stmt* insert = nullptr;
    sqlite3_prepare_v2(
        handle, "INSERT INTO SMS VALUES(?,1000000000,11,0,1,?,?,?,?,0,'',0,60,1000000060,'?')", -1,
        &insert, nullptr);
    const std::string api_id = ",ID: 0123456789abcdef0123456789abcdef";
    for (int i = 0; i < size_; ++i) {
      const std::string number = Number(i);
      sqlite3_bind_int(insert, 1, i + 1);
      sqlite3_bind_text(insert, 2, number.data(), static_cast<int>(number.size()), SQLITE_STATIC);
      sqlite3_bind_text(insert, 3, number.data(), static_cast<int>(number.size()), SQLITE_STATIC);
      sqlite3_bind_text(insert, 4, kPlainText, -1, SQLITE_STATIC);
      sqlite3_bind_text(insert, 5, api_id.data(), static_cast<int>(api_id.size()), SQLITE_STATIC);
      if (sqlite3_step(insert) != SQLITE_DONE)
        throw std::runtime_error("the floor's insert failed");
      sqlite3_reset(insert);
    }
    sqlite3_finalize(insert);
    sqlite3_exec(handle, "COMMIT", nullptr, nullptr, nullptr);
    sqlite3_close(handle);
  }

  int size_;
  int rounds_;
  test::TemporaryFolder folder_;
  test::GatewayProgram gateway_;
  FloorClient floor_;
  ClientStack ours_;
  std::string contacts_;  // recipient strings
  std::string numbers_;
  std::vector<std::string> ids_;
};

}  // namespace
}  // namespace orvalo::bench

int main(int argc, char** argv) {
  CLI::App app("Measures the road of messages against its floor");
  int rounds = 3;
  std::vector<int> sizes{1000, 10000, 100000};
  app.add_option("--rounds", rounds, "rounds of each work, interleaved with the floor")
      ->check(CLI::Range(1, 5));
  app.add_option("--sizes", sizes, "recipients")->delimiter(',')->check(CLI::Range(1, 1000000));
  CLI11_PARSE(app, argc, argv);
  try {
    for (const int size : sizes) orvalo::bench::RoadBench(size, rounds).Run();
  } catch (const std::exception& problem) {
    std::fprintf(stderr, "road_bench: %s\n", problem.what());
    return 1;
  }
  return 0;
}
