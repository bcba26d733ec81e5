#include "store/send_journal.h"

#include <array>
#include <cstdio>
#include <random>

#include "store/connection.h"
#include "store/sms_database.h"

namespace orvalo {
namespace {

constexpr int kJournalSchema = 3;  // the first that has one

constexpr Sql kOpen("INSERT INTO SENDING(ID, Key, Since) VALUES(?, ?, ?)");
constexpr Sql kOpenRecipient(
    "INSERT INTO SENDING_TO(ID, Pos, CID, Number, Entry, OwnText, Text) VALUES(?, ?, ?, ?, ?, ?, "
    "?)");
constexpr Sql kSelectEntry("SELECT Key, Since FROM SENDING WHERE ID = ?");
constexpr Sql kSelectRecipients(
    "SELECT CID, Number, Entry, OwnText, Text FROM SENDING_TO WHERE ID = ? ORDER BY Pos");
constexpr Sql kSelectAnswers(
    "SELECT Pos, Code, Words, Reply FROM SENDING_ANSWER WHERE ID = ? ORDER BY Pos");
constexpr Sql kTake(
    "UPDATE SMS SET Stat = 10 WHERE ID = ?1 AND +Stat = 0 AND "
    "EXISTS(SELECT 1 FROM SENDING WHERE SENDING.ID = ?1 AND Key = ?2)");
constexpr Sql kRenew("UPDATE SENDING SET Since = ?2 WHERE ID = ?1");
constexpr Sql kStop(
    "UPDATE SENDING SET Since = ?2 WHERE ID = ?1 AND "
    "EXISTS(SELECT 1 FROM SMS WHERE SMS.ID = ?1 AND +Stat = 10)");
constexpr Sql kRecord(
    "INSERT OR REPLACE INTO SENDING_ANSWER(ID, Pos, Code, Words, Reply) VALUES(?, ?, ?, ?, ?)");
constexpr Sql kClose("DELETE FROM SENDING WHERE ID = ?");
constexpr Sql kCloseRecipients("DELETE FROM SENDING_TO WHERE ID = ?");
constexpr Sql kCloseAnswers("DELETE FROM SENDING_ANSWER WHERE ID = ?");
constexpr Sql kSelectUnfinished(
    "SELECT SENDING.ID FROM SENDING CROSS JOIN SMS ON SMS.ID = SENDING.ID WHERE +Stat = 10 "
    "ORDER BY SENDING.ID");

}  // namespace

void SendJournal::Open(const JournalEntry& entry) {
  Connection* connection = database_.Here();
  if (connection == nullptr) return;
  SmsDatabase::Transaction transaction(database_);
  Run(*connection, kOpen, entry.id, entry.key, entry.since);
  {
    Query insert(*connection, kOpenRecipient);
    std::int32_t position = 0;
    for (const JournalRecipient& recipient : entry.recipients) {
      insert
          .Again(entry.id, position++, recipient.contact_id, recipient.number, recipient.entry,
                 recipient.has_own_text ? 1 : 0, recipient.text)
          .Execute();
    }
  }
  transaction.Commit();
}

std::optional<JournalEntry> SendJournal::Find(std::int32_t id) {
  Connection* connection = database_.Here();
  if (connection == nullptr || database_.schema_ < kJournalSchema) return std::nullopt;
  JournalEntry entry;
  entry.id = id;
  {
    Query query(*connection, kSelectEntry, id);
    if (!query.Step()) return std::nullopt;
    entry.key = query.Text(0);
    entry.since = query.Int64(1);
  }
  Query recipients(*connection, kSelectRecipients, id);
  while (recipients.Step()) {
    entry.recipients.push_back({recipients.Int(0), std::string(recipients.Text(1)),
                                std::string(recipients.Text(2)), recipients.Int(3) != 0,
                                std::string(recipients.Text(4))});
  }
  Query answers(*connection, kSelectAnswers, id);
  while (answers.Step()) {
    entry.answers.push_back({answers.Int(0), answers.Int(1), std::string(answers.Text(2)),
                             std::string(answers.Text(3))});
  }
  return entry;
}

bool SendJournal::Take(std::int32_t id, std::string_view key) {
  Connection* connection = database_.Here();
  return connection != nullptr && Run(*connection, kTake, id, key) > 0;
}

void SendJournal::Renew(std::int32_t id, std::int64_t since) {
  if (Connection* connection = database_.Here()) Run(*connection, kRenew, id, since);
}

bool SendJournal::Stop(std::int32_t id) {
  Connection* connection = database_.Here();
  if (connection == nullptr) return false;
  SmsDatabase::Transaction transaction(database_, SmsDatabase::Transaction::Reach::kDisk);
  const bool found = Run(*connection, kStop, id, kSendingStopped) > 0;
  transaction.Commit();
  return found;
}

void SendJournal::Record(std::int32_t id, std::span<const JournalAnswer> answers) {
  Connection* connection = database_.Here();
  if (connection == nullptr || answers.empty()) return;
  SmsDatabase::Transaction transaction(database_);
  {
    Query insert(*connection, kRecord);
    for (const JournalAnswer& answer : answers) {
      insert.Again(id, answer.position, answer.code, answer.words, answer.reply).Execute();
    }
  }
  transaction.Commit();
}

void SendJournal::Close(std::int32_t id) {
  if (Connection* connection = database_.Here()) EndJournalEntry(*connection, id);
}

std::vector<std::int32_t> SendJournal::Unfinished() {
  std::vector<std::int32_t> ids;
  Connection* connection = database_.Here();
  if (connection == nullptr) return ids;
  Query query(*connection, kSelectUnfinished);
  while (query.Step()) ids.push_back(query.Int(0));
  return ids;
}

void EndJournalEntry(Connection& connection, std::int32_t id) {
  if (Run(connection, kClose, id) == 0) return;
  Run(connection, kCloseRecipients, id);
  Run(connection, kCloseAnswers, id);
}

std::string DrawJournalKey() {
  std::random_device random;
  std::array<char, kJournalKeyWidth + 1> digits;
  std::snprintf(digits.data(), digits.size(), "%08x%08x%08x", random(), random(), random());
  return digits.data();
}

}  // namespace orvalo
