#include "service/ledger.h"

#include "service/secrets.h"

namespace orvalo::service {
namespace {

// The columns that make an entry, in the order in which EntryFrom reads them.
#define ORVALO_ENTRY_COLUMNS \
  "message.id,number,text,type,unicode,parts,sender,ack,accepted,due,charge,key,seq"

Ledger::Entry EntryFrom(const Query& row) {
  Ledger::Entry entry;
  entry.message = {ToHex(row.Text(0)), row.Text(1),
                   row.Text(2),        static_cast<int>(row.Int(3)),
                   row.Int(4) != 0,    static_cast<int>(row.Int(5)),
                   row.Text(6),        row.Int(7) != 0,
                   row.Int(8),         row.Int(9),
                   row.Int(12),        0};
  entry.charge = row.Int(10);
  entry.key = ToHex(row.Text(11));
  return entry;
}

}  // namespace

std::string NewId(std::int64_t now) {
  auto id = RandomBytes(16);
  for (std::size_t i = 0; i < 5; ++i) id[i] = static_cast<char>(now >> (32 - 8 * i));
  return id;
}

std::vector<Ledger::Outcome> Ledger::Accept(Connection& connection, const Submission& submission,
                                            const MessageContent& content,
                                            const std::vector<std::string>& numbers) {
  Money balance = 0, total = 0;
  {
    Query row(connection, "SELECT balance FROM account WHERE id=?", submission.account);
    if (row.Step()) balance = row.Int(0);
  }
  const auto now = clock_.Now();
  std::vector<Outcome> outcomes;
  outcomes.reserve(numbers.size());
  for (const auto& given : numbers) {
    const auto number = IsPhoneNumber(given) ? PlainNumber(given) : given;
    const auto charge = Charge(connection, number, content.parts, balance - total);
    if (const auto* refusal = std::get_if<Refusal>(&charge)) {
      outcomes.emplace_back(*refusal);
      continue;
    }
    const auto id = NewId(now);
    CarriedMessage message{ToHex(id),
                           number,
                           content.text,
                           content.type,
                           content.unicode,
                           content.parts,
                           content.sender,
                           content.ack,
                           now,
                           now + content.delivery_minutes * std::int64_t{60},
                           0,
                           submission.batch};
    message.row = Insert(connection, submission, message, id, std::get<Money>(charge));
    carrier_.Record(connection, message, std::get<Money>(charge));
    total += std::get<Money>(charge);
    outcomes.emplace_back(std::move(message));
  }
  if (total > 0) {
    Query(connection, "UPDATE account SET balance=balance-? WHERE id=?", total, submission.account)
        .Run();
  }
  return outcomes;
}

std::variant<Money, Refusal> Ledger::Charge(Connection& connection, const std::string& number,
                                            int parts, Money balance) {
  if (!IsPhoneNumber(number)) return Refuse(ErrorCode::kBadNumber);
  if (!carrier_.TakesNumber(number)) return Refuse(ErrorCode::kNumberRefused);
  const auto charge = pricing_.PriceOf(connection, number) * parts;
  if (charge > balance) return Refuse(ErrorCode::kNoCredit);
  return charge;
}

std::int64_t Ledger::Insert(Connection& connection, const Submission& submission,
                            const CarriedMessage& message, std::string_view id, Money charge) {
  Query(connection,
        "INSERT INTO message(id,account,batch,number,text,type,unicode,parts,sender,ack,accepted,"
        "due,charge,key) VALUES(?,?,NULLIF(?,0),?,?,?,?,?,?,?,?,?,?,?)",
        Blob{id}, submission.account, submission.batch, message.number, message.text, message.type,
        message.unicode, message.parts, message.sender, message.ack, message.accepted, message.due,
        charge, Blob{submission.key})
      .Run();
  return connection.database().getLastInsertRowid();
}

std::optional<Ledger::Entry> Ledger::Find(Connection& connection, std::int64_t account,
                                          std::string_view id) {
  const auto bytes = FromHex(id);
  Query row(connection, "SELECT " ORVALO_ENTRY_COLUMNS " FROM message WHERE id=? AND account=?",
            Blob{bytes}, account);
  if (!row.Step()) return std::nullopt;
  return EntryFrom(row);
}

std::vector<Ledger::Entry> Ledger::Latest(Connection& connection, std::int64_t account, int count) {
  std::vector<Entry> entries;
  entries.reserve(static_cast<std::size_t>(count));
  Query rows(connection,
             "SELECT " ORVALO_ENTRY_COLUMNS
             " FROM message WHERE account=? ORDER BY accepted DESC,seq DESC LIMIT ?",
             account, count);
  while (rows.Step()) entries.push_back(EntryFrom(rows));
  return entries;
}

std::vector<Ledger::Entry> Ledger::After(Connection& connection, std::int64_t account,
                                         std::int64_t row, int count) {
  std::vector<Entry> entries;
  Query rows(connection,
             "SELECT id,number,parts,accepted,due,charge,key,seq FROM message "
             "INDEXED BY message_list WHERE account=? AND seq>? ORDER BY seq LIMIT ?",
             account, row, count);
  while (rows.Step()) {
    Entry entry;
    entry.message.id = ToHex(rows.Text(0));
    entry.message.number = rows.Text(1);
    entry.message.parts = static_cast<int>(rows.Int(2));
    entry.message.accepted = rows.Int(3);
    entry.message.due = rows.Int(4);
    entry.charge = rows.Int(5);
    entry.key = ToHex(rows.Text(6));
    entry.message.row = rows.Int(7);
    entries.push_back(std::move(entry));
  }
  return entries;
}

// The rows of one second stand in the index by their charges, so all of that second are looked at.
std::int64_t Ledger::RowBefore(Connection& connection, std::int64_t account, std::int64_t time) {
  Query row(connection,
            "SELECT min(seq) FROM message INDEXED BY message_account WHERE account=?1 AND accepted="
            "(SELECT min(accepted) FROM message INDEXED BY message_account "
            "WHERE account=?1 AND accepted>=?2)",
            account, time);
  return row.Step() && !row.IsNull(0) ? row.Int(0) - 1 : INT64_MAX;
}

void Ledger::ForEach(Connection& connection, const std::function<void(const Entry&)>& visit) {
  Query rows(connection,
             "SELECT " ORVALO_ENTRY_COLUMNS
             ",user FROM message JOIN account ON account.id=message.account ORDER BY seq");
  while (rows.Step()) {
    auto entry = EntryFrom(rows);
    entry.user = rows.Text(13);
    visit(entry);
  }
}

}  // namespace orvalo::service
