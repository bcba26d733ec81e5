#include <fmt/format.h>

#include <charconv>
#include <cstdio>
#include <map>
#include <nlohmann/json.hpp>

#include "platform/clock.h"
#include "platform/file.h"
#include "platform/terminal.h"
#include "service/admin_commands.h"
#include "service/ledger_check.h"
#include "service/outbox.h"
#include "service/secrets.h"

// The administrator's commands about parts on their way to an engine, and about the whole ledger.
namespace orvalo::service {

using platform::PrintableLine;

namespace {

std::string PartName(const outbox::Row& row) {
  return fmt::format("{}/{}", row.message_id, row.id.part + 1);
}

void PrintRow(const outbox::Row& row, bool as_json) {
  if (!as_json) {
    fmt::print("{:<36} {:<16} {:<17} {:<12} {}\n", PartName(row), PrintableLine(row.user),
               PrintableLine(row.number), NameOf(row.state), PrintableLine(row.reason));
    return;
  }
  const nlohmann::json line{{"part", PartName(row)},    {"account", row.user},
                            {"number", row.number},     {"state", NameOf(row.state)},
                            {"since", row.since},       {"attempts", row.attempts},
                            {"reports", row.seen},      {"price", MoneyText(row.price)},
                            {"refunded", row.refunded}, {"reason", row.reason}};
  PrintJson(line);
}

void PrintCheck(const LedgerCheck& check) {
  for (const auto& fault : check.faults) fmt::print("{}\n", PrintableLine(fault));
  fmt::print("{} accounts, {} messages, {} parts, {} refunds: {}\n", check.accounts, check.messages,
             check.parts, check.refunds,
             check.faults.empty() ? "the ledger adds up" : "THE LEDGER DOES NOT ADD UP");
}

// The parts that a name stands for: "all", a message's id, or that and "/" and the part from 1 on.
// Only those in doubt.
std::vector<outbox::PartId> InDoubt(Connection& connection, const std::string& name) {
  std::vector<outbox::PartId> parts;
  outbox::ForEach(connection, true, [&](const outbox::Row& row) {
    if (row.state != PartState::kInDoubt) return;
    if (name == "all" || name == row.message_id || name == PartName(row)) parts.push_back(row.id);
  });
  return parts;
}

const std::map<std::string, PartEvent>& Decisions() {
  static const std::map<std::string, PartEvent> decisions{{"sent", PartEvent::kDecidedSent},
                                                          {"not-sent", PartEvent::kDecidedNotSent},
                                                          {"again", PartEvent::kDecidedAgain}};
  return decisions;
}

}  // namespace

int AdminCommands::ListOutbox(bool doubts_only, bool as_json) {
  Database database(folder_);
  database.Read([&](Connection& connection) {
    outbox::ForEach(connection, true, [&](const outbox::Row& row) {
      const bool shown = doubts_only ? row.state == PartState::kInDoubt
                                     : static_cast<int>(row.state) <= kLastOpenState;
      if (shown) PrintRow(row, as_json);
    });
  });
  return 0;
}

int AdminCommands::SettleOutbox(const std::vector<std::string>& names,
                                const std::string& decision) {
  const auto chosen = Decisions().find(decision);
  if (chosen == Decisions().end()) {
    fmt::print(stderr, "orvalo-gateway: decide sent, not-sent or again, in the last place\n");
    return 2;
  }
  Database database(folder_);
  const auto now = clock_.Now();
  std::size_t settled = 0;
  std::vector<std::string> idle;
  database.Write([&](Connection& connection) {
    settled = 0;
    idle.clear();
    // All names are looked up first: a part may stand under two of them.
    std::vector<outbox::PartId> parts;
    for (const auto& name : names) {
      const auto named = InDoubt(connection, name);
      if (named.empty()) idle.push_back(name);
      parts.insert(parts.end(), named.begin(), named.end());
    }
    for (const auto& part : parts) {
      if (outbox::Happen(connection, part, chosen->second, now, "decided by a person: " + decision))
        ++settled;
    }
  });
  for (const auto& name : idle) {
    fmt::print(stderr, "orvalo-gateway: nothing of \"{}\" is in doubt\n", PrintableLine(name));
  }
  if (settled > 0) fmt::print("{}\n", settled);
  return idle.empty() ? 0 : 1;
}

int AdminCommands::DoubtOutbox() {
  Database database(folder_);
  std::int64_t doubted = 0;
  database.Write(
      [&](Connection& connection) { doubted = outbox::DoubtWaiting(connection, clock_.Now()); });
  fmt::print("{}\n", doubted);
  return 0;
}

int AdminCommands::BackUp(const std::string& file) {
  const auto complain = [&](const char* why) {
    fmt::print(stderr, "orvalo-gateway: {}: {}\n", PrintableLine(file), why);
    return 1;
  };
  if (!platform::FileSize(folder_ + "/gateway.db")) return complain("there is nothing to copy");
  if (platform::FileSize(file)) return complain("it is there already");
  if (!platform::ReplaceFile(file, "")) return complain("it cannot be written");
  try {
    {
      // One reader's view: a copy page by page would begin anew whenever the service writes.
      Connection ledger(folder_ + "/gateway.db", SQLite::OPEN_READWRITE);
      SQLite::Statement copy(ledger.database(), "VACUUM INTO ?");
      copy.bind(1, file);
      copy.executeStep();
    }
    Connection copied(file, SQLite::OPEN_READONLY);
    const auto check = orvalo::service::CheckLedger(copied);
    PrintCheck(check);
    return check.faults.empty() ? 0 : 1;
  } catch (...) {
    std::remove(file.c_str());
    throw;
  }
}

int AdminCommands::CheckLedger(bool as_json) {
  Database database(folder_);
  const auto check = database.Read(
      [](Connection& connection) { return orvalo::service::CheckLedger(connection); });
  if (as_json) {
    const nlohmann::json line{{"accounts", check.accounts},
                              {"messages", check.messages},
                              {"parts", check.parts},
                              {"refunds", check.refunds},
                              {"faults", check.faults}};
    PrintJson(line);
  } else {
    PrintCheck(check);
  }
  return check.faults.empty() ? 0 : 1;
}

}  // namespace orvalo::service
