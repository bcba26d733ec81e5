#include "gateway/status_pass.h"

#include <algorithm>
#include <array>
#include <exception>

#include "app/log_file.h"
#include "app/settings.h"
#include "gateway/engine_notices.h"
#include "gateway/engine_requests.h"
#include "gateway/gateway_client.h"
#include "gateway/status_reply.h"
#include "platform/clock.h"
#include "platform/code_page.h"

namespace orvalo {

namespace {

// Statuses that are followed, in the order in which they are asked for.
constexpr std::array kFollowed{SmsStatus::kUnknown, SmsStatus::kQueued,
                               SmsStatus::kDeliveredToGateway, SmsStatus::kScheduledOnServer,
                               SmsStatus::kSent};

constexpr std::size_t kAnswersInOneWrite = 250;
constexpr std::int64_t kLongestUnwritten = 1000;  // milliseconds

}  // namespace

void StatusPass::QueryMessageStatus(std::int32_t id) {
  parts_.notices.ToMainWindow(kWmQuerying);
  if (!parts_.settings.Flag(FlagSetting::kWorkingOnLine)) return;
  std::lock_guard guard(pass_lock_);
  answers_.clear();
  try {
    if (WalkFollowed(id) > 0) parts_.notices.TellOutbox(0);
  } catch (const std::exception& problem) {
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
    WriteAnswers();  // the next status must see rows that have moved on to it
  }
  return replies;
}

std::int32_t StatusPass::QueryRow(const SmsDatabase::FollowedSms& row, SmsStatus status,
                                  bool move_schedule, std::int64_t now) {
  Answer answer;
  answer.id = row.id;
  answer.asked_at = static_cast<std::int32_t>(now);
  if (move_schedule) answer.next_interval = NextQueryInterval(row.query_time);
  const std::int32_t replies = QueryOneMessage(row, &answer);
  if (answer.status == status) answer.status.reset();  // nothing to write

  if (answers_.empty()) oldest_answer_tick_ = parts_.clock.Tick();
  answers_.push_back(std::move(answer));
  if (answers_.size() >= kAnswersInOneWrite ||
      parts_.clock.Tick() - oldest_answer_tick_ >= kLongestUnwritten) {
    WriteAnswers();
  }
  return replies;
}

std::int32_t StatusPass::QueryOneMessage(const SmsDatabase::FollowedSms& row, Answer* answer) {
  const std::vector<GatewayIdEntry> entries = ParseGatewayIds(row.api_msg_id);
  std::string api_msg_id = row.api_msg_id;
  Answer held;  // status and charge carry over from one entry to the next
  std::int32_t replies = 0;
  for (std::size_t i = 0; i < entries.size(); ++i) {
    std::u16string wide_reply;
    parts_.gateway.MessageCharge(1, platform::ToWide(entries[i].id), &wide_reply);
    const GatewayFailure failure = parts_.gateway.LastFailure(wide_reply);
    highest_error_ = std::max(highest_error_, failure.code);
    if (failure.code != kGatewayOk) {
      NoteUnanswered(failure, entries[i]);
      continue;
    }

    const StatusReply reply = ParseStatusReply(platform::FromWide(wide_reply));
    if (reply.status) {
      held.status = StatusOfGatewayNumber(*reply.status);
      ++replies;
    }
    if (reply.charge) held.charge = *reply.charge;
    if (i == 0) {
      answer->answered = true;
      answer->status = held.status;
      answer->charge = held.charge;
    } else {
      SplitOff(row.id, entries[i], &api_msg_id, held);
    }
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

void StatusPass::SplitOff(std::int32_t id, const GatewayIdEntry& entry, std::string* api_msg_id,
                          const Answer& answer) {
  SmsDatabase::Transaction transaction(parts_.database);
  const std::int32_t copy = parts_.database.DuplicateSms(id, std::nullopt);
  if (copy < 0) return;
  *api_msg_id = RemoveGatewayId(std::move(*api_msg_id), entry);
  parts_.database.SetApiMsgId(id, *api_msg_id);
  parts_.database.SetStatusAndCharge(copy, answer.status, answer.charge);
  transaction.Commit();
}

void StatusPass::Write(const Answer& answer) {
  const std::int32_t interval = answer.next_interval.value_or(0);
  const std::int32_t due = answer.asked_at + interval;
  if (answer.answered && answer.next_interval) {  // by far the most
    parts_.database.SetQueryAnswer(answer.id, answer.status, answer.charge, interval, due);
    return;
  }
  if (answer.answered) parts_.database.SetStatusAndCharge(answer.id, answer.status, answer.charge);
  if (answer.next_interval) parts_.database.SetQuerySchedule(answer.id, interval, due);
}

void StatusPass::WriteAnswers() {
  if (answers_.empty()) return;
  const std::vector<Answer> answers = std::move(answers_);
  answers_.clear();
  SmsDatabase::Transaction transaction(parts_.database);
  for (const Answer& answer : answers) Write(answer);
  transaction.Commit();
}

}  // namespace orvalo
