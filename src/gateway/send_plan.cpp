#include "gateway/send_plan.h"

#include <utility>

#include "app/settings.h"
#include "gateway/recipients.h"
#include "platform/clock.h"
#include "store/message_type.h"
#include "store/sms_database.h"

namespace orvalo {
namespace {

// One flush of the disk for so many messages, or for so many recipients of them.
constexpr std::size_t kMostMessages = 500;
constexpr std::size_t kManyRecipients = 5'000;

}  // namespace

SendPlanner::SendPlanner(const EngineParts& parts, SendJournal& journal)
    : parts_(parts), journal_(journal), personaliser_(parts.texts, parts.database) {}

bool SendPlanner::IsPlain(const MessageRow& row) const {
  return GatewayTypeCode(row.type) == 0 && !personaliser_.HasFields(row.msg);
}

std::deque<PlannedMessage> SendPlanner::Plan(std::span<const std::int32_t>* ids) {
  std::deque<PlannedMessage> planned;
  std::size_t recipients = 0;
  SmsDatabase::Transaction transaction(parts_.database, SmsDatabase::Transaction::Reach::kDisk);
  while (!ids->empty() && planned.size() < kMostMessages && recipients < kManyRecipients) {
    const std::int32_t id = ids->back();
    *ids = ids->first(ids->size() - 1);
    auto row = parts_.database.GetSms(id);
    if (!row || row->stat != static_cast<std::int32_t>(SmsStatus::kPending)) continue;
    auto entry = journal_.Find(id);
    if (!entry) {
      entry = Fix(*row);
      entry->key = DrawJournalKey();
      entry->since = parts_.clock.Now();
      journal_.Open(*entry);
    } else {
      entry->since = parts_.clock.Now();
      journal_.Renew(id, entry->since);
    }
    recipients += entry->recipients.size();
    planned.push_back({std::move(*row), std::move(*entry)});
  }
  transaction.Commit();
  return planned;
}

std::optional<PlannedMessage> SendPlanner::Resume(std::int32_t id) {
  auto row = parts_.database.GetSms(id);
  auto entry = journal_.Find(id);
  if (!row || !entry) return std::nullopt;
  return PlannedMessage{std::move(*row), std::move(*entry), true};
}

JournalEntry SendPlanner::Fix(const MessageRow& row) const {
  JournalEntry entry;
  entry.id = row.id;
  const bool plain = IsPlain(row);
  const auto records =
      ExpandRecipients(row.to, parts_.settings.Text(TextSetting::kPrefix), parts_.database);
  entry.recipients.reserve(records.size());
  for (const RecipientRecord& record : records) {
    auto& recipient = entry.recipients.emplace_back();
    recipient.contact_id = record.contact_id;
    recipient.number = record.number.view();
    recipient.entry = record.entry.view();
    if (plain || record.contact_id == kTypedNumber) continue;
    recipient.text = personaliser_.Personalise(record.contact_id, row.msg);
    recipient.has_own_text = recipient.text != row.msg;
    if (!recipient.has_own_text) recipient.text.clear();
  }
  return entry;
}

}  // namespace orvalo
