#include "service/admin_commands.h"

#include <fmt/format.h>

#include <cstdlib>
#include <nlohmann/json.hpp>

#include "platform/file.h"
#include "platform/terminal.h"
#include "service/accounts.h"
#include "service/database.h"
#include "service/ledger.h"
#include "service/outbox.h"
#include "service/pricing.h"
#include "service/secrets.h"
#include "service/settings.h"
#include "service/simulated_carrier.h"
#include "service/vouchers.h"

namespace orvalo::service {

using platform::PrintableLine;

namespace {

int Complain(const std::string& sentence) {
  fmt::print(stderr, "orvalo-gateway: {}\n", PrintableLine(sentence));
  return 1;
}

int ComplainOfAmount(const std::string& amount) {
  return Complain(fmt::format("\"{}\" is no amount, such as 0.8 or 100", amount));
}

std::optional<std::string> AskPassword(const std::string& file) {
  if (!file.empty()) {
    constexpr std::uint64_t kLargestPasswordFile = 4096;
    const auto text = platform::ReadFile(file, kLargestPasswordFile);
    if (!text) return std::nullopt;
    return text->substr(0, text->find_first_of("\r\n"));
  }
  if (const char* given = std::getenv("ORVALO_PASSWORD")) return given;
  const auto first = platform::AskSecret("Password: ");
  if (!first || platform::AskSecret("Again: ") != first) return std::nullopt;
  return first;
}

}  // namespace

void PrintJson(const nlohmann::json& line) {
  using Replacing = nlohmann::json::error_handler_t;
  fmt::print("{}\n", platform::PrintableJson(line.dump(-1, ' ', false, Replacing::replace)));
}

int AdminCommands::AddAccount(const std::string& user, const std::string& email,
                              const std::string& credit, const std::string& password_file) {
  const auto amount = ParseMoney(credit);
  if (!amount) return ComplainOfAmount(credit);
  const auto password = AskPassword(password_file);
  if (!password) return Complain("no password was given");
  if (const auto problem = Accounts::Problem(user, email, *password); !problem.empty()) {
    return Complain(problem);
  }
  Database database(folder_);
  if (!Accounts(database, clock_).Add(user, email, *password, *amount)) {
    return Complain(fmt::format("there is an account \"{}\" already", user));
  }
  return 0;
}

int AdminCommands::SetPassword(const std::string& user, const std::string& password_file) {
  const auto password = AskPassword(password_file);
  if (!password) return Complain("no password was given");
  if (const auto problem = Accounts::Problem(user, "", *password); !problem.empty()) {
    return Complain(problem);
  }
  Database database(folder_);
  if (!Accounts(database, clock_).SetPassword(user, *password)) {
    return Complain(fmt::format("there is no account \"{}\"", user));
  }
  return 0;
}

int AdminCommands::AddCredit(const std::string& user, const std::string& amount) {
  const auto money = ParseMoney(amount);
  if (!money) return ComplainOfAmount(amount);
  Database database(folder_);
  if (!Accounts(database, clock_).AddCredit(user, *money)) {
    return Complain(fmt::format("there is no account \"{}\"", user));
  }
  return 0;
}

int AdminCommands::ListAccounts(bool json) {
  Database database(folder_);
  for (const auto& account : Accounts(database, clock_).List()) {
    if (json) {
      const nlohmann::json line{{"user", account.user},
                                {"email", account.email},
                                {"balance", MoneyText(account.balance)},
                                {"credits", MoneyText(account.credits)}};
      PrintJson(line);
    } else {
      fmt::print("{:<20} {:>12} of {:>12}  {}\n", PrintableLine(account.user),
                 MoneyText(account.balance), MoneyText(account.credits),
                 PrintableLine(account.email));
    }
  }
  return 0;
}

int AdminCommands::AddVoucher(const std::string& number, const std::string& amount) {
  const auto money = ParseMoney(amount);
  if (!money || *money == 0) return ComplainOfAmount(amount);
  if (!number.empty() && !Vouchers::IsNumber(number)) {
    return Complain("a voucher's number has 16 digits");
  }
  Database database(folder_);
  Vouchers vouchers(database, clock_);
  auto added = number.empty() ? RandomVoucherNumber() : number;
  while (!vouchers.Add(added, *money)) {
    if (!number.empty()) return Complain(fmt::format("there is a voucher {} already", number));
    added = RandomVoucherNumber();
  }
  fmt::print("{} {}\n", added, MoneyText(*money));
  return 0;
}

int AdminCommands::ListVouchers() {
  Database database(folder_);
  for (const auto& voucher : Vouchers(database, clock_).List()) {
    fmt::print("{} {:>12}{}{}\n", voucher.number, MoneyText(voucher.amount),
               voucher.redeemed_by.empty() ? "" : "  redeemed by ",
               PrintableLine(voucher.redeemed_by));
  }
  return 0;
}

int AdminCommands::SetPrice(const std::string& prefix, const std::string& amount) {
  const auto money = ParseMoney(amount);
  if (!money) return ComplainOfAmount(amount);
  if (!Pricing::IsPrefix(prefix)) return Complain("a prefix has up to 16 digits and no \"+\"");
  Database database(folder_);
  Pricing(database).Set(prefix, *money);
  return 0;
}

int AdminCommands::ListPrices() {
  Database database(folder_);
  for (const auto& [prefix, amount] : Pricing(database).List()) {
    fmt::print("{:<16} {}\n", prefix.empty() ? "(all others)" : prefix, MoneyText(amount));
  }
  return 0;
}

int AdminCommands::PrintLedger(bool json) {
  Database database(folder_);
  SimulationOptions simulation;
  simulation.delivery_seconds = LoadDeliverySeconds(database, simulation.delivery_seconds);
  SimulatedCarrier carrier(simulation, clock_);
  const auto now = clock_.Now();
  database.Read([&](Connection& connection) {
    Ledger::ForEach(connection, [&](const Ledger::Entry& entry) {
      const auto& message = entry.message;
      // Only messages that went to an engine have parts in the outbox.
      const int status =
          static_cast<int>(outbox::StatusOf(connection, message, now)
                               .value_or(carrier.StatusOf(connection, message, now)));
      if (json) {
        const nlohmann::json line{{"id", message.id},         {"account", entry.user},
                                  {"number", message.number}, {"text", message.text},
                                  {"type", message.type},     {"unicode", message.unicode},
                                  {"sender", message.sender}, {"status", status},
                                  {"parts", message.parts},   {"accepted", message.accepted},
                                  {"due", message.due},       {"charge", MoneyText(entry.charge)},
                                  {"key", entry.key}};
        PrintJson(line);
      } else {
        fmt::print("{}  {:<16} {:<17} {:>2} {:>8}  {}\n", message.id, PrintableLine(entry.user),
                   PrintableLine(message.number), status, MoneyText(entry.charge),
                   PrintableLine(message.text));
      }
    });
  });
  return 0;
}

}  // namespace orvalo::service
