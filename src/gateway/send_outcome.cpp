#include "gateway/send_outcome.h"

#include <string>
#include <unordered_map>
#include <vector>

#include "app/texts.h"
#include "platform/clock.h"
#include "store/sms_database.h"

namespace orvalo {

namespace {

constexpr std::int32_t kFirstQueryInterval = 60;  // seconds
constexpr int kNoRecipientTextId = 2266;

// Recipients that no list accounts for, counted by number, since a number may be given twice.
std::vector<RecipientRecord> Unaccounted(const SendOutcome& outcome) {
  std::unordered_map<std::string_view, std::int32_t> accounted;
  const auto count = [&](const auto& list) {
    for (const RecipientRecord& record : list) ++accounted[record.number.view()];
  };
  count(outcome.successes);
  count(outcome.failures);
  count(outcome.in_doubt);
  count(outcome.retries);
  std::vector<RecipientRecord> missing;
  for (const RecipientRecord& record : outcome.all) {
    if (const auto found = accounted.find(record.number.view());
        found != accounted.end() && found->second > 0) {
      --found->second;
    } else {
      missing.push_back(record);
    }
  }
  return missing;
}

SmsDatabase::SmsOutcome Accepted(SmsStatus status, const RecipientRecord& record,
                                 std::int64_t now) {
  return {status, record.gateway_id.view(), kFirstQueryInterval,
          static_cast<std::int32_t>(now + kFirstQueryInterval), record.number.view()};
}

SmsDatabase::SmsOutcome Refused(const RecipientRecord& record, std::string_view reason) {
  return {SmsStatus::kFailed, {}, 0, 0, record.number.view(), reason};
}

SmsDatabase::SmsOutcome Refused(const RefusedRecipient& record) {
  const SmsStatus status = record.stopped ? SmsStatus::kCancelled : SmsStatus::kFailed;
  return {status, {}, 0, 0, record.number.view(), record.reason};
}

// Nothing follows it: there is no id to ask for.
SmsDatabase::SmsOutcome InDoubt(const RefusedRecipient& record) {
  return {SmsStatus::kUnknown, {}, 0, 0, record.number.view(), record.reason};
}

// Every number that the message has gone to, in the order of its recipients.
std::string NumbersOf(const SendOutcome& outcome) {
  std::string numbers;
  for (const RecipientRecord& record : outcome.all) {
    if (!numbers.empty()) numbers += ',';
    numbers += record.number.view();
  }
  return numbers;
}

}  // namespace

void OutcomeRecorder::Record(const MessageRow& row, std::int32_t delay,
                             const SendOutcome& outcome) {
  SmsDatabase::Transaction transaction(parts_.database);
  if (outcome.recipients >= 2) {
    RecordChildren(row, outcome);
  } else if (outcome.recipients == 1) {
    RecordSingle(row, delay, outcome);
  } else {
    const std::string reason = parts_.texts.Load(kNoRecipientTextId);
    parts_.database.SetOutcome(row.id, SmsStatus::kProcessing,
                               {SmsStatus::kFailed, {}, 0, 0, {}, reason});
  }
  journal_.Close(row.id);
  transaction.Commit();
}

void OutcomeRecorder::RecordChildren(const MessageRow& row, const SendOutcome& outcome) {
  const std::vector<RecipientRecord> missing = Unaccounted(outcome);
  std::vector<SmsDatabase::ChildSms> children;
  children.reserve(outcome.successes.size() + outcome.failures.size() + missing.size() +
                   outcome.in_doubt.size() + outcome.retries.size());
  for (const RecipientRecord& record : outcome.successes) {
    children.push_back(
        {record.entry.view(), Accepted(SmsStatus::kUnknown, record, parts_.clock.Now())});
  }
  for (const RefusedRecipient& record : outcome.failures)
    children.push_back({record.entry.view(), Refused(record)});
  for (const RecipientRecord& record : missing)
    children.push_back({record.entry.view(), Refused(record, outcome.unnamed_reason)});
  for (const RefusedRecipient& record : outcome.in_doubt)
    children.push_back({record.entry.view(), InDoubt(record)});
  for (const RecipientRecord& record : outcome.retries) {
    children.push_back({record.entry.view(), {SmsStatus::kPending}});
  }
  if (parts_.database.SetExpanded(row.id, SmsStatus::kProcessing, NumbersOf(outcome)))
    parts_.database.AddChildren(row.id, children);
}

void OutcomeRecorder::RecordSingle(const MessageRow& row, std::int32_t delay,
                                   const SendOutcome& outcome) {
  SmsDatabase::SmsOutcome fate{SmsStatus::kPending};
  if (!outcome.successes.empty()) {
    const SmsStatus sent = delay != 0 ? SmsStatus::kScheduledOnServer : SmsStatus::kUnknown;
    fate = Accepted(sent, outcome.successes.front(), parts_.clock.Now());
  } else if (!outcome.in_doubt.empty()) {
    fate = InDoubt(outcome.in_doubt.front());
  } else if (!outcome.failures.empty() || outcome.retries.empty()) {
    fate = outcome.failures.empty() ? Refused(outcome.all.front(), {})
                                    : Refused(outcome.failures.front());
  }
  parts_.database.SetOutcome(row.id, SmsStatus::kProcessing, fate);
}

}  // namespace orvalo
