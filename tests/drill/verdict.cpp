#include "drill/verdict.h"

#include <nlohmann/json.hpp>
#include <string_view>
#include <unordered_map>

#include "app/texts.h"
#include "store/sms_database.h"
#include "support/fake_clock.h"

namespace orvalo::test {
namespace {

constexpr std::size_t kMostExamples = 20;

struct OutboxRow {
  std::int32_t id = 0, status = 0;
  std::string gateway_id, reason;
};

using Ledger = std::unordered_multimap<std::string, std::string>;  // number → id
using Outbox = std::unordered_multimap<std::string, OutboxRow>;    // number → row

Ledger ReadLedger(const GatewayProgram& service) {
  Ledger ledger;
  for (const std::string& line : service.Ledger()) {
    const auto entry = nlohmann::json::parse(line);
    ledger.emplace(entry.at("number").get<std::string>(), entry.at("id").get<std::string>());
  }
  return ledger;
}

Outbox ReadOutbox(const std::string& folder) {
  Outbox outbox;
  const Texts texts;
  const FakeClock clock;
  SmsDatabase database(folder, texts, clock, /*read_only=*/true);
  database.ForEachSms([&](const MessageRow& row) {
    if (row.stat == static_cast<std::int32_t>(SmsStatus::kExpanded)) return true;
    outbox.emplace(row.number, OutboxRow{row.id, row.stat, row.api_msg_id, row.reason});
    return true;
  });
  return outbox;
}

class Judgement {
 public:
  Judgement(Ledger ledger, Outbox outbox)
      : ledger_(std::move(ledger)), outbox_(std::move(outbox)) {}

  void Hear(const ExpectedRecipient& recipient) {
    ++verdict_.recipients;
    const std::size_t first = ledger_.count(recipient.number);
    const std::size_t accepted = first + ledger_.count(recipient.other);
    const std::string& number = first > 0 ? recipient.number : recipient.other;
    if (accepted == 0) {
      Note(&verdict_.lost, "lost", recipient.number);
    } else if (accepted > 1) {
      Note(&verdict_.doubled, "doubled", recipient.number);
    } else {
      Compare(number, ledger_.find(number)->second);
    }
    ledger_.erase(recipient.number);
    ledger_.erase(recipient.other);
  }

  Verdict End() {
    for (const auto& [number, id] : ledger_) Note(&verdict_.doubled, "not asked for", number);
    return std::move(verdict_);
  }

 private:
  void Compare(const std::string& number, const std::string& id) {
    const auto row = outbox_.find(number);
    if (row == outbox_.end()) {
      Note(&verdict_.misreported, "accepted, without a row", number);
    } else if (row->second.status == static_cast<std::int32_t>(SmsStatus::kFailed)) {
      Note(&verdict_.wrongly_failed, "wrongly Failed", number);
    } else if (row->second.gateway_id.empty()) {
      Note(&verdict_.in_doubt, "in doubt", number);
    } else if (row->second.gateway_id != ",ID: " + id || outbox_.count(number) > 1) {
      Note(&verdict_.misreported, "accepted as " + id + ", another id or several rows", number);
    }
  }

  void Note(int* count, const std::string& what, const std::string& number) {
    ++*count;
    if (verdict_.examples.size() >= kMostExamples) return;
    std::string line = number + ": " + what;
    const auto [begin, end] = outbox_.equal_range(number);
    for (auto row = begin; row != end; ++row) {
      line += "; row " + std::to_string(row->second.id) + " status " +
              std::to_string(row->second.status) + row->second.gateway_id + " " +
              row->second.reason;
    }
    verdict_.examples.push_back(std::move(line));
  }

  Ledger ledger_;
  Outbox outbox_;
  Verdict verdict_;
};

}  // namespace

Verdict Judge(const std::vector<ExpectedRecipient>& expected, const GatewayProgram& service,
              const std::string& client_folder) {
  Judgement judgement(ReadLedger(service), ReadOutbox(client_folder));
  for (const ExpectedRecipient& recipient : expected) judgement.Hear(recipient);
  return judgement.End();
}

}  // namespace orvalo::test
