#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <sstream>
#include <thread>

#include "service/money.h"
#include "service/running_service.h"
#include "support/gateway_program.h"
#include "support/raw_server.h"

namespace orvalo::test {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

// The objects that a command prints, one a line.
std::vector<nlohmann::json> JsonLines(const std::string& text) {
  std::vector<nlohmann::json> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(nlohmann::json::parse(line));
  return lines;
}

service::Money Amount(const nlohmann::json& object, const char* name) {
  return service::ParseMoney(object.value(name, "")).value_or(-1);
}

struct Submission {
  std::string key, id;  // the id as it was told; empty while there was no reply
};

// Sends until the service no longer answers.
void SendUntilItDies(int port, std::vector<Submission>& sent, std::atomic<int>& accepted) {
  GatewayCaller demo(port, "demo");
  for (;;) {
    sent.push_back({NewKey(), ""});
    const auto reply = demo.Message("27821110001", sent.back().key);
    if (reply.status != 200) return;
    sent.back().id = reply.body.value("id", "");
    ++accepted;
  }
}

TEST(Program, LosesNothingWhenItIsKilled) {
  const TemporaryFolder folder;
  std::vector<std::vector<Submission>> sent(4);
  std::atomic<int> accepted = 0;
  {
    GatewayProgram program(folder.path(), {"--demo"});
    ASSERT_NE(program.port(), 0);
    std::vector<std::thread> threads;
    for (auto& mine : sent) {
      threads.emplace_back([&] { SendUntilItDies(program.port(), mine, accepted); });
    }
    while (accepted < 100) std::this_thread::yield();
    EXPECT_EQ(program.Stop(SIGKILL), -1);
    for (auto& thread : threads) thread.join();
  }
  GatewayProgram program(folder.path(), {"--demo"});
  GatewayCaller demo(program.port(), "demo");
  std::map<std::string, std::string> ids;  // by key
  for (const auto& mine : sent) {
    for (const auto& [key, id] : mine) {
      const auto reply = demo.Message("27821110001", key);
      EXPECT_EQ(reply.status, 200);
      ids[key] = reply.body.value("id", "");
      if (!id.empty()) {
        EXPECT_EQ(ids[key], id) << "an accepted message was lost";
      }
    }
  }
  const auto data = folder.File("data");
  service::Money charged = 0;
  for (const auto& line : JsonLines(RunGateway({"ledger", "--json", "--data", data}).out)) {
    charged += Amount(line, "charge");
    EXPECT_EQ(ids[line.value("key", "")], line.value("id", "none"));
    ids.erase(line.value("key", ""));
  }
  EXPECT_TRUE(ids.empty()) << "an id that is not in the ledger, or a key that is in it twice";
  const auto accounts = JsonLines(RunGateway({"account", "list", "--json", "--data", data}).out);
  ASSERT_EQ(accounts.size(), 1u);
  EXPECT_EQ(charged, Amount(accounts[0], "credits") - Amount(accounts[0], "balance"));
  EXPECT_EQ(program.Stop(SIGTERM), 0);
}

TEST(Program, IsAdministeredWhileItRuns) {
  const TemporaryFolder folder;
  const auto data = folder.File("data"), password = folder.File("password");
  Spill(password, "secret\nsecond line");
  GatewayProgram program(folder.path(), {});
  ASSERT_NE(program.port(), 0);
  EXPECT_THAT(Slurp(folder.File("out")), HasSubstr("orvalo-gateway listening on http://127.0.0.1:" +
                                                   std::to_string(program.port()) + "\n"));
  const struct {
    std::vector<std::string> arguments;
    int status;
    const char* says;
  } commands[] = {
      {{"account", "add", "carl", "--credit", "5", "--password-file", password}, 0, ""},
      {{"account", "add", "carl", "--password-file", password}, 1, "already"},
      {{"account", "add", "dora", "--credit", "-5", "--password-file", password}, 1, "amount"},
      {{"account", "add", "dora", "--email", "a\nb@c", "--password-file", password}, 1, "e-mail"},
      {{"account", "add", "dora", "--password-file", folder.File("none")}, 1, "password"},
      {{"account", "credit", "carl", "2.5"}, 0, ""},
      {{"account", "credit", "eve", "2.5"}, 1, "no account"},
      {{"voucher", "add", "1111222233334444", "10"}, 0, "1111222233334444 10.0"},
      {{"voucher", "add", "1111222233334444", "10"}, 1, "already"},
      {{"voucher", "add", "--generate", "3"}, 0, " 3.0"},
      {{"voucher", "add", "12", "10"}, 1, "16 digits"},
      {{"voucher", "add", "10"}, 2, "NUMBER AMOUNT"},
      {{"backup", folder.File("copy/gateway.db")}, 0, "1 accounts, 0 messages"},
      {{"backup", folder.File("copy/gateway.db")}, 1, "there already"},
      {{"backup", folder.File("none/gateway.db")}, 1, "cannot be written"},
      {{"price", "set", "27", "0.5"}, 0, ""},
      {{"price", "set", "+27", "0.5"}, 1, "prefix"},
      {{"price", "set", "0027", "0.5"}, 1, "prefix"},
      {{"price", "list"}, 0, "27               0.5"},
      {{"frobnicate"}, 2, ""},
      {{"--listen", "0.0.0.0:0"}, 2, "--tls-key"},
      {{"--listen", "nowhere"}, 2, "--listen"},
      {{"--listen", "999.0.0.1:0"}, 2, "--listen"},
      {{"--proxy", "::1", "--proxy", "10.0.0.0/8"}, 2, "--proxy: \"10.0.0.0/8\" is no numeric"},
      {{"--listen", "127.0.0.1:0", "--tls-key", password}, 2, "--tls-cert"},
      {{"--listen", "127.0.0.1:0"}, 1, "being served already"},
  };
  ASSERT_TRUE(std::filesystem::create_directory(folder.File("copy")));
  for (const auto& command : commands) {
    auto arguments = command.arguments;
    arguments.insert(arguments.end(), {"--data", data});
    const auto result = RunGateway(arguments);
    EXPECT_EQ(result.status, command.status) << testing::PrintToString(command.arguments);
    EXPECT_THAT(result.out + result.err, HasSubstr(command.says));
  }
  // No lock can be taken there, and nobody serves it.
  const auto lock = folder.File("closed/.orvalo-gateway.lock");
  ASSERT_TRUE(std::filesystem::create_directories(lock));
  EXPECT_THAT(RunGateway({"--listen", "127.0.0.1:0", "--data", folder.File("closed")}).err,
              AllOf(HasSubstr(lock + " cannot be locked by the user "),
                    HasSubstr(": Is a directory."), Not(HasSubstr("served"))));
  GatewayCaller carl(program.port(), "");
  ASSERT_TRUE(carl.LogIn("carl", "secret"));
  EXPECT_EQ(carl.Message("27821110001").status, 200);
  EXPECT_EQ(carl.Post("/v1/vouchers", {{"number", "1111222233334444"}}).body.value("balance", ""),
            "17.0");
  const std::string steering =
      "\xC2\x9B"
      "2J\x1B[0m\xE2\x80\xAE"
      "dne";
  EXPECT_EQ(carl.Post("/v1/messages", {{"to", "27821110001"}, {"text", steering}}).status, 200);
  const std::string ledger = RunGateway({"ledger", "--data", data}).out;
  const std::string lines = RunGateway({"ledger", "--json", "--data", data}).out;
  EXPECT_THAT(ledger, HasSubstr("  2J [0m\xEF\xBF\xBD"
                                "dne\n"))
      << "nothing steers the terminal";
  EXPECT_THAT(lines, HasSubstr("\\u009b2J\\u001b[0m\\u202edne"));
  EXPECT_THAT(RunGateway({"ledger", "--data", data}).out, HasSubstr("27821110001"));
  EXPECT_THAT(RunGateway({"account", "list", "--data", folder.File("copy")}).out, HasSubstr("carl"))
      << "a backup is a ledger, of the past";
  using std::filesystem::perms;
  EXPECT_EQ(std::filesystem::status(data).permissions(), perms::owner_all);
  for (const auto& entry : std::filesystem::directory_iterator(data)) {
    EXPECT_EQ(entry.status().permissions(), perms::owner_read | perms::owner_write) << entry.path();
  }
  EXPECT_EQ(program.Stop(SIGINT), 0);
}

TEST(Program, IsReadyBeforeItListens) {
  const TemporaryFolder folder;
  const auto port_file = folder.File("port");
  Spill(port_file, "9\n");  // of an earlier run
  const int port = UnusedPort();
  ChildProcess program({GatewayPath(), "--demo", "--data", folder.File("data"), "--listen",
                        "127.0.0.1:" + std::to_string(port), "--port-file", port_file},
                       folder.File("out"), folder.File("err"));
  GatewayCaller demo(port, "");
  const auto give_up = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  JsonReply reply;
  while (reply.status == 0 && std::chrono::steady_clock::now() < give_up) {
    reply = demo.Post("/v1/session", {{"client_id", ""}, {"user", "demo"}, {"password", "demo"}});
    EXPECT_TRUE(reply.status == 0 || Slurp(port_file) != "9\n");
  }
  EXPECT_EQ(reply.status, 200) << "whoever comes first is known";
}

TEST(Program, TakesNoMoreConnectionsThanItMayHaveFiles) {
  const TemporaryFolder folder;
  const auto start = [&](const std::string& limits) {
    ChildProcess program(
        {"/bin/sh", "-c", limits + " && exec \"$@\"", "sh", GatewayPath(), "--data",
         folder.File("data"), "--listen", "127.0.0.1:0", "--port-file", folder.File("port")},
        folder.File("out"), folder.File("err"));
    while (Slurp(folder.File("port")).empty() && program.IsRunning()) std::this_thread::yield();
    const auto said = Slurp(folder.File("err"));
    std::filesystem::remove(folder.File("port"));
    program.Signal(SIGTERM);
    EXPECT_EQ(program.Wait(), 0) << said;
    return said;
  };
  EXPECT_EQ(start("ulimit -S -n 100"), "") << "it may raise that";
  EXPECT_THAT(start("ulimit -n 500"), HasSubstr("500 files may be open at a time"));
}

TEST(Program, DemonstratesAgainOnTheSameFolder) {
  const TemporaryFolder folder;
  ASSERT_TRUE(std::filesystem::create_directory(folder.File("data")));
  Spill(folder.File("data/.orvalo-aB3xYz"), "of a killed write");
  for (const char* balance : {"1000.0", "999.2"}) {
    GatewayProgram program(folder.path(), {"--demo"});
    GatewayCaller demo(program.port(), "demo");
    EXPECT_EQ(demo.Balance(), balance);
    EXPECT_EQ(demo.Message("27821110001").status, 200);
    EXPECT_THAT(Slurp(folder.File("out")), HasSubstr("1234567890123456"));
    EXPECT_FALSE(std::filesystem::exists(folder.File("data/.orvalo-aB3xYz")));
    EXPECT_EQ(program.Stop(SIGTERM), 0);
  }
}

TEST(Program, SpeaksTls) {
  const TemporaryFolder folder;
  const auto key = folder.File("key.pem"), certificate = folder.File("certificate.pem");
  const auto command =
      "openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -days 2 -subj /CN=test "
      "-addext subjectAltName=IP:127.0.0.1 -keyout " +
      key + " -out " + certificate + " 2>/dev/null";
  ASSERT_EQ(std::system(command.c_str()), 0);
  GatewayProgram program(folder.path(), {"--tls-key", key, "--tls-cert", certificate});
  ASSERT_NE(program.port(), 0);
  platform::HttpClient client;
  platform::HttpRequest request;
  request.url = "https://127.0.0.1:" + std::to_string(program.port()) + "/v1/health";
  EXPECT_EQ(client.Perform(request).failure, platform::HttpFailure::kTls)
      << "nobody vouches for it";
  client.SetCertificateAuthorities(certificate);
  EXPECT_EQ(client.Perform(request).body, "{\"ok\":true}");
  EXPECT_EQ(client.Perform(request).status, 200);
  const auto handshakes = [&](const std::string& how) {
    return std::system(("openssl s_client -connect 127.0.0.1:" + std::to_string(program.port()) +
                        " " + how + " </dev/null >/dev/null 2>&1")
                           .c_str()) == 0;
  };
  EXPECT_TRUE(handshakes("-tls1_2 -cipher ECDHE-ECDSA-AES128-GCM-SHA256"));
  EXPECT_TRUE(handshakes("-tls1_3"));
  EXPECT_FALSE(handshakes("-tls1_2 -cipher ECDHE-ECDSA-AES128-SHA256")) << "no CBC";
  EXPECT_FALSE(handshakes("-tls1_1 -cipher ALL:@SECLEVEL=0"));
  EXPECT_EQ(Slurp(folder.File("err")), "");
  EXPECT_EQ(program.Stop(SIGTERM), 0);

  std::filesystem::permissions(key, std::filesystem::perms::others_read,
                               std::filesystem::perm_options::add);
  const auto again = RunGateway({"--tls-key", key, "--tls-cert", key, "--listen", "127.0.0.1:0",
                                 "--data", folder.File("data")});
  EXPECT_EQ(again.status, 1);
  EXPECT_THAT(again.err,
              AllOf(HasSubstr("can read the private key"), HasSubstr("certificate is of no use")));
}

}  // namespace
}  // namespace orvalo::test
