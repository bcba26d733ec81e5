#include "gateway/send_pass.h"

#include <algorithm>
#include <exception>
#include <unordered_map>
#include <utility>
#include <vector>

#include "app/log_file.h"
#include "app/settings.h"
#include "app/texts.h"
#include "gateway/engine_notices.h"
#include "gateway/engine_requests.h"
#include "gateway/gateway_client.h"
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

SendPass::SendPass(const EngineParts& parts, std::mutex& pass_lock)
    : parts_(parts),
      pass_lock_(pass_lock),
      personaliser_(parts.texts, parts.database),
      step_(parts_),
      batch_(parts_, step_) {}

void SendPass::SendQueuedSMSs(std::int32_t id) {
  parts_.notices.ToMainWindow(kWmSending);
  const bool online = parts_.settings.Flag(FlagSetting::kWorkingOnLine);
  if (!online && !in_hand_) return;
  Guarded([&] {
    const bool recorded = RecordInHand();
    return (online && WalkPending(id)) || recorded;
  });
}

void SendPass::Finish() {
  if (in_hand_) Guarded([this] { return RecordInHand(); });
}

void SendPass::Guarded(const std::function<bool()>& work) {
  std::lock_guard guard(pass_lock_);
  try {
    if (work()) parts_.notices.TellOutbox(0);
  } catch (const std::exception& problem) {
    TellStoreRefusal(parts_, problem);
    if (parts_.log.Enabled()) {
      parts_.log.Write("CRITICAL ERROR: Catch in SendQueuedSMSs");
      parts_.log.Write("%s", problem.what());
    }
    parts_.notices.TellOutbox(0);
  }
}

bool SendPass::RecordInHand() {
  if (!in_hand_) return false;
  RecordOutcome(*in_hand_);
  in_hand_.reset();
  return true;
}

bool SendPass::WalkPending(std::int32_t id) {
  const std::vector<std::int32_t> pending = parts_.database.PendingSms(id);
  bool any = false;
  for (std::size_t position = pending.size(); position > 0 && !parts_.notices.Stopping();
       --position) {
    MessageRow row;
    if (!TakeRow(pending[position - 1], &row)) continue;
    parts_.notices.TellOutbox(row.id);
    const bool online = SendRow(std::move(row), static_cast<std::int32_t>(position));
    any = true;
    parts_.notices.ToMainWindow(kWmBalance);
    if (!online) break;  // the rest waits for a login, untried
  }
  return any;
}

// The row may have been deleted or opened for editing since the selection was made. One flush of
// the disk a message: marks of several at once would be cheaper, but a killed run would then leave
// messages as failed that it had not begun to send.
bool SendPass::TakeRow(std::int32_t id, MessageRow* row) {
  SmsDatabase::Transaction transaction(parts_.database, SmsDatabase::Transaction::Reach::kDisk);
  if (!parts_.database.ChangeStatus(id, SmsStatus::kPending, SmsStatus::kProcessing)) return false;
  auto found = parts_.database.GetSms(id);
  transaction.Commit();
  *row = std::move(*found);
  return true;
}

// A failure on the way leaves in hand what the gateway has taken so far.
bool SendPass::SendRow(MessageRow row, std::int32_t progress_index) {
  OutgoingMessage message;
  message.type = row.type;
  message.text = row.msg;
  message.sender_id = row.sender_id;
  message.delay = row.delay;
  if (row.delay > 0) {
    message.delay =
        static_cast<std::int32_t>(std::max<std::int64_t>(row.time - parts_.clock.Now(), 0));
  }
  message.progress_index = progress_index;
  auto& in_hand = in_hand_.emplace(InHand{std::move(row), message.delay, {}});
  SendMessageRow(message, in_hand.row.to, &in_hand.outcome);
  const bool online = !in_hand.outcome.no_session;
  RecordInHand();
  return online;
}

void SendPass::SendMessageRow(const OutgoingMessage& message, std::string_view to,
                              SendOutcome* outcome) {
  outcome->all = ExpandRecipients(to, parts_.settings.Text(TextSetting::kPrefix), parts_.database);
  outcome->recipients = static_cast<std::int32_t>(outcome->all.size());
  const bool plain = GatewayTypeCode(message.type) == 0 && !personaliser_.HasFields(message.text);
  if (!plain) {
    SendPersonalised(message, outcome);
  } else if (outcome->recipients < 2) {
    SendOneByOne(message, outcome);
  } else {
    batch_.Send(message, outcome);
  }
}

void SendPass::SendOneByOne(const OutgoingMessage& message, SendOutcome* outcome) {
  const std::u16string wire =
      WireText::Of(message.text, IsUnicodeType(message.type), parts_.gateway);
  std::int32_t to_go = outcome->recipients;
  for (const RecipientRecord& record : outcome->all) {
    step_.Send(SendStep::Kind::kPlain, message, message.text, wire, record, to_go--, outcome);
  }
}

void SendPass::SendPersonalised(const OutgoingMessage& message, SendOutcome* outcome) {
  std::int32_t to_go = outcome->recipients;
  for (const RecipientRecord& record : outcome->all) {
    const std::string text = personaliser_.Personalise(record.contact_id, message.text);
    const std::u16string wire = WireText::Of(text, IsUnicodeType(message.type), parts_.gateway);
    step_.Send(SendStep::Kind::kPersonalised, message, text, wire, record, to_go--, outcome);
  }
}

void SendPass::RecordOutcome(const InHand& message) {
  const auto& [row, delay, outcome] = message;
  if (outcome.no_session && outcome.successes.empty() && outcome.failures.empty()) {
    parts_.database.ChangeStatus(row.id, SmsStatus::kProcessing, SmsStatus::kPending);
  } else if (outcome.recipients >= 2) {
    RecordChildren(row, outcome);
  } else if (outcome.recipients == 1) {
    RecordSingle(row, delay, outcome);
  } else {
    const std::string reason = parts_.texts.Load(kNoRecipientTextId);
    parts_.database.SetOutcome(row.id, SmsStatus::kProcessing,
                               {SmsStatus::kFailed, {}, 0, 0, {}, reason});
  }
}

void SendPass::RecordChildren(const MessageRow& row, const SendOutcome& outcome) {
  const std::vector<RecipientRecord> missing = Unaccounted(outcome);
  std::vector<SmsDatabase::ChildSms> children;
  children.reserve(outcome.successes.size() + outcome.failures.size() + missing.size() +
                   outcome.retries.size());
  for (const RecipientRecord& record : outcome.successes) {
    children.push_back(
        {record.entry.view(), Accepted(SmsStatus::kUnknown, record, parts_.clock.Now())});
  }
  for (const RefusedRecipient& record : outcome.failures)
    children.push_back({record.entry.view(), Refused(record, record.reason)});
  for (const RecipientRecord& record : missing)
    children.push_back({record.entry.view(), Refused(record, outcome.unnamed_reason)});
  for (const RecipientRecord& record : outcome.retries) {
    children.push_back({record.entry.view(), {SmsStatus::kPending}});
  }
  SmsDatabase::Transaction transaction(parts_.database);
  if (!parts_.database.SetExpanded(row.id, SmsStatus::kProcessing, NumbersOf(outcome))) return;
  parts_.database.AddChildren(row.id, children);
  transaction.Commit();
}

void SendPass::RecordSingle(const MessageRow& row, std::int32_t delay, const SendOutcome& outcome) {
  SmsDatabase::SmsOutcome fate{SmsStatus::kPending};
  if (!outcome.successes.empty()) {
    const SmsStatus sent = delay != 0 ? SmsStatus::kScheduledOnServer : SmsStatus::kUnknown;
    fate = Accepted(sent, outcome.successes.front(), parts_.clock.Now());
  } else if (!outcome.failures.empty() || outcome.retries.empty()) {
    const bool told = !outcome.failures.empty();
    fate = Refused(outcome.all.front(),
                   told ? std::string_view(outcome.failures.front().reason) : std::string_view());
  }
  parts_.database.SetOutcome(row.id, SmsStatus::kProcessing, fate);
}

}  // namespace orvalo
