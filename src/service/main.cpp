#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "platform/clock.h"
#include "platform/file.h"
#include "platform/open_file_limit.h"
#include "platform/stop_signal.h"
#include "platform/terminal.h"
#include "service/admin_commands.h"
#include "service/carrier_choice.h"
#include "service/demo_data.h"
#include "service/gateway_service.h"
#include "service/secrets.h"

namespace orvalo::service {
namespace {

constexpr std::uint64_t kLargestPem = 1u << 20;

struct ServeOptions {
  ServiceOptions service;
  CarrierChoice carrier;
  std::string listen = "127.0.0.1:8480", port_file, tls_key, tls_cert;
  bool demo = false;
};

void AddServeOptions(CLI::App& app, ServeOptions& options) {
  auto& service = options.service;
  app.add_option("--listen", options.listen, "Address and port to listen on; port 0 picks one")
      ->capture_default_str();
  app.add_option("--port-file", options.port_file,
                 "File to write the port into; the operations' goes into FILE.operations");
  app.add_option("--tls-key", options.tls_key, "PEM file with the private key");
  app.add_option("--tls-cert", options.tls_cert, "PEM file with the certificate (and its chain)");
  app.add_flag("--demo", options.demo, "Lay out the account demo/demo and a few vouchers");
  app.add_option("--rate-limit", service.rate_limit, "Requests of one account in a second")
      ->check(CLI::Range(1, 100'000'000))
      ->capture_default_str();
  app.add_option("--threads", service.http.threads, "Requests worked on at a time")
      ->check(CLI::Range(1, 1024))
      ->capture_default_str();
  app.add_option("--connections", service.http.connections, "Connections at a time")
      ->check(CLI::Range(1, 1'000'000))
      ->capture_default_str();
  app.add_option("--connections-per-address", service.http.connections_of_an_address,
                 "Connections of one address at a time")
      ->check(CLI::Range(1, 1'000'000))
      ->capture_default_str();
  app.add_option("--proxy", service.http.proxies,
                 "Numeric address of a proxy whose X-Forwarded-For tells who asks; several times");
  options.carrier.AddOptions(app);
  auto& simulation = service.simulation;
  app.add_option("--sim-delivery-seconds", simulation.delivery_seconds,
                 "Simulated network: time to the final status")
      ->check(CLI::Range(0, 1'000'000))
      ->capture_default_str();
  app.add_option("--sim-latency-ms", simulation.latency_ms,
                 "Simulated network: each submission waits this long")
      ->check(CLI::Range(0, 600'000));
  app.add_option("--sim-drop-reply", service.drop_replies,
                 "Share of submissions whose reply is lost, with the work done")
      ->check(CLI::Range(0.0, 1.0));
  app.add_option("--sim-throttle", simulation.throttle,
                 "Simulated network: submissions in a second, more are sent away")
      ->check(CLI::Range(0, 1'000'000));
  app.add_option("--sim-fail-after", simulation.fail_after,
                 "Simulated network: out of order after this many accepted recipients")
      ->check(CLI::Range(0, 1'000'000'000));
}

// The service goes on with such a key: to end would be worse for whoever relies on it.
void WarnOfAnOpenKey(const std::string& file) {
  std::error_code error;
  const auto mode = std::filesystem::status(file, error).permissions();
  if (!error && (mode & std::filesystem::perms::others_read) != std::filesystem::perms::none) {
    fmt::print(stderr,
               "orvalo-gateway: warning: every user of this machine can read the private key; "
               "chmod o-rwx {}\n",
               file);
  }
}

void CheckProxies(std::vector<std::string>& proxies) {
  for (auto& proxy : proxies) {
    const auto address = NumericAddress(proxy);
    if (!address) {
      throw UsageError(fmt::format(
          "--proxy: \"{}\" is no numeric address, such as 10.0.0.5 or ::1; one for each", proxy));
    }
    proxy = *address;
  }
}

// The system's files are as scarce as its sockets: a service that has none left can neither accept
// nor read.
void FitOpenFiles(ServiceOptions& options) {
  // The data file with its journal for each worker, and the engine's connections beside the rest.
  constexpr int kFilesOfAWorker = 3, kOthers = 64, kFewest = 16;
  int besides = kOthers + kFilesOfAWorker * (options.http.threads + options.http.slow_threads);
  if (options.kannel) besides += options.kannel->connections;
  if (options.operations) besides += options.operations->connections + options.operations->threads;
  auto& connections = options.http.connections;
  const auto wanted = static_cast<std::uint64_t>(connections) + static_cast<std::uint64_t>(besides);
  const auto allowed = platform::RaiseOpenFileLimit(wanted);
  if (allowed >= wanted) return;
  connections = std::max(static_cast<int>(allowed) - besides, kFewest);
  fmt::print(stderr,
             "orvalo-gateway: warning: {} files may be open at a time, so there will be {} "
             "connections at most; for more, raise the limit to {} (ulimit -n, LimitNOFILE=)\n",
             allowed, connections, wanted);
}

// The listening address as the HTTP server wants it, with key and certificate.
HttpServerOptions ListeningOptions(const ServeOptions& options) {
  auto http = options.service.http;
  CheckProxies(http.proxies);
  if (!SplitAddress(options.listen, http.address, http.port)) {
    throw UsageError(fmt::format("--listen: \"{}\" is no address and port, such as 127.0.0.1:8480",
                                 options.listen));
  }
  if (options.tls_key.empty() != options.tls_cert.empty()) {
    throw UsageError("--tls-key and --tls-cert belong together");
  }
  if (options.tls_key.empty()) {
    if (!IsLoopback(http.address)) {
      throw UsageError(
          fmt::format("{} can be reached from other machines, where passwords must not travel in "
                      "the clear: give --tls-key and --tls-cert, or listen on 127.0.0.1",
                      http.address));
    }
    return http;
  }
  const auto key = platform::ReadFile(options.tls_key, kLargestPem);
  const auto certificate = platform::ReadFile(options.tls_cert, kLargestPem);
  if (!key || key->empty()) {
    throw UsageError(fmt::format("--tls-key: {} cannot be read", options.tls_key));
  }
  if (!certificate || certificate->empty()) {
    throw UsageError(fmt::format("--tls-cert: {} cannot be read", options.tls_cert));
  }
  WarnOfAnOpenKey(options.tls_key);
  http.tls_key = *key;
  http.tls_certificate = *certificate;
  return http;
}

int Serve(ServeOptions options, platform::Clock& clock) {
  platform::StopSignal stop;
  auto& service_options = options.service;
  service_options.http = ListeningOptions(options);
  options.carrier.Apply(service_options);
  FitOpenFiles(service_options);
  service_options.report = [](const std::string& line) { fmt::print(stderr, "{}\n", line); };
  GatewayService service(service_options, clock);
  if (options.demo) fmt::print("{}", LayOutDemoData(service.accounts(), service.vouchers()));
  // What an earlier run left there tells the wrong port until ours is open.
  if (!options.port_file.empty()) std::remove(options.port_file.c_str());
  service.Listen();
  const auto port = std::to_string(service.port());
  const auto operations_port = std::to_string(service.operations_port());
  const bool v6 = service_options.http.address.find(':') != std::string::npos;
  fmt::print("orvalo-gateway listening on {}://{}{}{}:{}\n",
             service_options.http.has_tls() ? "https" : "http", v6 ? "[" : "",
             service_options.http.address, v6 ? "]" : "", port);
  if (service.operations_port() != 0) {
    fmt::print("operations on port {}\n", operations_port);
  }
  std::fflush(stdout);
  platform::FileError error;
  if (!options.port_file.empty() &&
      !(platform::ReplaceFile(options.port_file + ".operations", operations_port + "\n", &error) &&
        platform::ReplaceFile(options.port_file, port + "\n", &error))) {
    throw std::runtime_error("the file " + options.port_file +
                             " cannot be written: " + error.detail);
  }
  stop.Wait();
  return 0;
}

// What the command line asks for, as something to run; the subcommands' values live in here.
class CommandLine {
 public:
  CommandLine() {
    serve_.service.folder = "orvalo-gateway-data";
    app_.fallthrough();
    app_.require_subcommand(0, 1);
    app_.add_option("--data", serve_.service.folder, "Data folder")->capture_default_str();
    app_.set_config("--config", "", "File with options, one \"name = value\" a line");
    app_.set_version_flag("--version", ORVALO_VERSION);
    AddServeOptions(app_, serve_);
    AddAccountCommands();
    AddOtherCommands();
    AddOutboxCommands();
  }

  int Run(int argc, char** argv, platform::Clock& clock) {
    try {
      app_.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
      const int status = app_.exit(error);
      return status == 0 ? 0 : 2;
    }
    if (!command_) return Serve(serve_, clock);
    AdminCommands commands(serve_.service.folder, clock);
    return command_(commands);
  }

 private:
  void On(CLI::App* command, std::function<int(AdminCommands&)> run) {
    command->callback([this, run = std::move(run)] { command_ = run; });
  }

  void AddAccountCommands() {
    auto* account = app_.add_subcommand("account", "Accounts")->require_subcommand(1);
    auto* add = account->add_subcommand("add", "Open an account");
    add->add_option("USER", user_)->required();
    add->add_option("--email", email_, "For password recovery");
    add->add_option("--credit", amount_, "Its first credit")->capture_default_str();
    add->add_option("--password-file", password_file_, "Its first line; else ORVALO_PASSWORD");
    On(add, [this](auto& to) { return to.AddAccount(user_, email_, amount_, password_file_); });
    auto* password = account->add_subcommand("password", "Change a password; ends all sessions");
    password->add_option("USER", user_)->required();
    password->add_option("--password-file", password_file_, "Its first line; else ORVALO_PASSWORD");
    On(password, [this](auto& to) { return to.SetPassword(user_, password_file_); });
    auto* credit = account->add_subcommand("credit", "Put credit into an account");
    credit->add_option("USER", user_)->required();
    credit->add_option("AMOUNT", amount_)->required();
    On(credit, [this](auto& to) { return to.AddCredit(user_, amount_); });
    auto* list = account->add_subcommand("list", "Balance and credits of every account");
    list->add_flag("--json", json_, "One object a line");
    On(list, [this](auto& to) { return to.ListAccounts(json_); });
  }

  void AddOtherCommands() {
    auto* voucher = app_.add_subcommand("voucher", "Vouchers")->require_subcommand(1);
    auto* add =
        voucher->add_subcommand("add", "Add a voucher: NUMBER AMOUNT, or --generate AMOUNT");
    add->add_flag("--generate", generate_, "Draw the number");
    add->add_option("NUMBER_AND_AMOUNT", words_)->required()->expected(1, 2);
    On(add, [this](auto& to) {
      if (words_.size() != (generate_ ? 1u : 2u)) {
        throw UsageError("voucher add takes NUMBER AMOUNT, or --generate AMOUNT");
      }
      return to.AddVoucher(generate_ ? "" : words_.front(), words_.back());
    });
    On(voucher->add_subcommand("list", "All vouchers"), [](auto& to) { return to.ListVouchers(); });
    auto* price = app_.add_subcommand("price", "Prices")->require_subcommand(1);
    auto* set = price->add_subcommand("set", "The price of a part to numbers with a prefix");
    set->add_option("PREFIX", prefix_, "Digits; \"\" for all other numbers")->required();
    set->add_option("AMOUNT", amount_)->required();
    On(set, [this](auto& to) { return to.SetPrice(prefix_, amount_); });
    On(price->add_subcommand("list", "All prices"), [](auto& to) { return to.ListPrices(); });
    auto* ledger = app_.add_subcommand("ledger", "Every accepted recipient, oldest first");
    ledger->add_flag("--json", json_, "One object a line");
    On(ledger, [this](auto& to) { return to.PrintLedger(json_); });
    auto* check = app_.add_subcommand("check", "Prove that the ledger adds up");
    check->add_flag("--json", json_, "As one object");
    On(check, [this](auto& to) { return to.CheckLedger(json_); });
    auto* backup = app_.add_subcommand("backup", "Copy the whole ledger as it is now");
    backup->add_option("FILE", file_, "Not there yet")->required();
    On(backup, [this](auto& to) { return to.BackUp(file_); });
  }

  void AddOutboxCommands() {
    auto* outbox =
        app_.add_subcommand("outbox", "Parts on their way to an engine")->require_subcommand(1);
    auto* list = outbox->add_subcommand("list", "Parts that are not settled");
    list->add_flag("--doubt", doubts_only_, "Only those that a person must decide about");
    list->add_flag("--json", json_, "One object a line");
    On(list, [this](auto& to) { return to.ListOutbox(doubts_only_, json_); });
    auto* settle = outbox->add_subcommand("settle", "Decide about parts in doubt");
    settle
        ->add_option("PART... DECISION", words_,
                     "As listed, a message's id, or \"all\", several; then sent, not-sent or again")
        ->required()
        ->expected(2, 1'000'000);
    On(outbox->add_subcommand("doubt", "Put in doubt what waits: the ledger is an older copy"),
       [](auto& to) { return to.DoubtOutbox(); });
    On(settle, [this](auto& to) {
      const auto decision = words_.back();
      words_.pop_back();
      return to.SettleOutbox(words_, decision);
    });
  }

  CLI::App app_{"Orvalo's gateway service: accounts, messages and the phone network"};
  ServeOptions serve_;
  std::string user_, email_, amount_ = "0", password_file_, prefix_, file_;
  std::vector<std::string> words_;
  bool generate_ = false, json_ = false, doubts_only_ = false;
  std::function<int(AdminCommands&)> command_;
};

}  // namespace
}  // namespace orvalo::service

int main(int argc, char** argv) {
  using namespace orvalo;
  try {
    service::PrepareSecrets();
    return service::CommandLine().Run(argc, argv, platform::SystemClock());
  } catch (const service::UsageError& error) {
    fmt::print(stderr, "orvalo-gateway: {}\n", platform::PrintableLine(error.what()));
    return 2;
  } catch (const std::exception& error) {
    fmt::print(stderr, "orvalo-gateway: {}\n", platform::PrintableLine(error.what()));
    return 1;
  }
}
