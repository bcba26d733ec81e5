#include "gateway/status_pass.h"

#include <algorithm>
#include <array>
#include <exception>

#include "app/log_file.h"
#include "app/settings.h"
#include "gateway/engine_notices.h"
#include "gateway/engine_requests.h"
#include "gateway/gateway_client.h"
#include "platform/clock.h"
#include "platform/code_page.h"

namespace orvalo {

namespace {

// Statuses that are followed, in the order in which they are asked for.
constexpr std::array kFollowed{SmsStatus::kUnknown, SmsStatus::kQueued,
                               SmsStatus::kDeliveredToGateway, SmsStatus::kScheduledOnServer,
                               SmsStatus::kSent};

}  // namespace

void StatusPass::QueryMessageStatus(std::int32_t id) {
  parts_.notices.ToMainWindow(kWmQuerying);
  if (!parts_.settings.Flag(FlagSetting::kWorkingOnLine)) return;
  std::lock_guard guard(pass_lock_);
  try {
    if (WalkFollowed(id) > 0) parts_.notices.TellOutbox(0);
  } catch (const std::exception& problem) {
    TellStoreRefusal(parts_, problem);
    if (parts_.log.Enabled()) {
      parts_.log.Write("CRITICAL ERROR: Catch in QueryMessageStatus");
      parts_.log.Write("%s", problem.what());
    }
    parts_.notices.TellOutbox(0);
  }
}

std::int32_t StatusPass::WalkFollowed(std::int32_t id) {
  std::int32_t replies = 0;
  for (const SmsStatus status : kFollowed) {
    if (parts_.notices.Stopping()) break;
    const std::int64_t now = parts_.clock.Now();
    const auto rows = parts_.database.FollowedRows(status, id, now);
    for (std::size_t position = rows.size(); position > 0 && !parts_.notices.Stopping();
         --position) {
      parts_.notices.ToMainWindow(kWmProgress, static_cast<std::int32_t>(position), 0);
      replies += QueryRow(rows[position - 1], status, id == kEveryMessage, now);
    }
  }
  return replies;
}

std::int32_t StatusPass::QueryRow(const SmsDatabase::FollowedSms& row, SmsStatus status,
                                  bool move_schedule, std::int64_t now) {
  Followed followed{row.id, status, row.api_msg_id, std::nullopt};
  const auto asked_at = static_cast<std::int32_t>(now);
  if (move_schedule) followed.next_interval = NextQueryInterval(row.query_time);
  const std::vector<GatewayIdEntry> entries = ParseGatewayIds(row.api_msg_id);
  SmsDatabase::QueryAnswer held;  // carries over from one entry to the next
  std::int32_t replies = 0;
  bool stored = false;
  for (std::size_t i = 0; i < entries.size(); ++i) {
    const auto reply = Ask(entries[i]);
    if (!reply) continue;
    if (reply->status) {
      held.status = StatusOfGatewayNumber(*reply->status);
      ++replies;
    }
    if (reply->charge) held.charge = *reply->charge;
    // Stored before the next question, which may take long.
    if (i == 0) {
      stored = true;
      if (!Store(&followed, held, asked_at)) return replies;
    } else {
      SplitOff(&followed, entries[i], held);
    }
  }
  if (!stored && followed.next_interval) {
    parts_.database.SetQuerySchedule(row.id, *followed.next_interval,
                                     asked_at + *followed.next_interval);
  }
  return replies;
}

void StatusPass::NoteUnanswered(const GatewayFailure& failure, const GatewayIdEntry& entry) {
  ++unanswered_.count;
  unanswered_.last = failure;
  if (!parts_.log.Enabled()) return;
  parts_.log.Write("Status query failed: Error:%d, %s API_ID:%s", static_cast<int>(failure.code),
                   failure.words.c_str(), entry.id.c_str());
}

std::optional<StatusReply> StatusPass::Ask(const GatewayIdEntry& entry) {
  std::u16string reply;
  parts_.gateway.MessageCharge(1, platform::ToWide(entry.id), &reply);
  const GatewayFailure failure = parts_.gateway.LastFailure(reply);
  highest_error_ = std::max(highest_error_, failure.code);
  if (failure.code == kGatewayOk) return ParseStatusReply(platform::FromWide(reply));
  NoteUnanswered(failure, entry);
  return std::nullopt;
}

bool StatusPass::Store(Followed* row, SmsDatabase::QueryAnswer answer, std::int32_t asked_at) {
  if (answer.status == row->status) answer.status.reset();  // nothing to write
  const bool stored =
      row->next_interval
          ? parts_.database.SetQueryAnswer(row->id, row->status, answer, *row->next_interval,
                                           asked_at + *row->next_interval)
          : parts_.database.SetQueryAnswer(row->id, row->status, answer);
  row->status = answer.status.value_or(row->status);
  return stored;
}

void StatusPass::SplitOff(Followed* row, const GatewayIdEntry& entry,
                          const SmsDatabase::QueryAnswer& answer) {
  SmsDatabase::Transaction transaction(parts_.database);
  // A copy of a row that is being edited would be sent when the edit is given up.
  if (!parts_.database.ChangeStatus(row->id, row->status, row->status)) return;
  const std::int32_t copy = parts_.database.DuplicateSms(row->id, std::nullopt);
  row->api_msg_id = RemoveGatewayId(std::move(row->api_msg_id), entry);
  parts_.database.SetApiMsgId(row->id, row->api_msg_id);
  parts_.database.SetQueryAnswer(copy, row->status, answer);
  transaction.Commit();
}

}  // namespace orvalo
