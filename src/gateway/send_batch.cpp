#include "gateway/send_batch.h"

#include <algorithm>

#include "app/log_file.h"
#include "app/settings.h"
#include "gateway/batch_reply.h"
#include "gateway/engine_notices.h"
#include "gateway/message_submissions.h"
#include "store/message_type.h"

namespace orvalo {

namespace {

constexpr std::size_t kChunkLength = 512;  // characters of joined numbers at which a chunk is sent

}  // namespace

std::int32_t SendBatch::Send(const OutgoingMessage& message, SendOutcome* outcome) {
  const std::span<const RecipientRecord> all(outcome->all);
  bool started = false;
  std::int32_t sent = 0;
  std::string numbers;
  std::size_t first = 0;
  for (std::size_t i = 0; i < all.size(); ++i) {
    numbers.append(",").append(all[i].number.view());
    const bool last = i + 1 == all.size();
    if (numbers.size() < kChunkLength && !last) continue;

    const Chunk chunk{static_cast<std::int32_t>(first), std::string_view(numbers).substr(1),
                      all.subspan(first, i + 1 - first)};
    const bool told_before = message.submissions->Knows(chunk.position);
    if (!told_before && (parts_.notices.Stopping() || outcome->no_session)) {
      outcome->waiting = message.submissions->MayHaveGoneOut();
      if (outcome->waiting) return sent;
      outcome->retries.insert(outcome->retries.end(), chunk.records.begin(), chunk.records.end());
    } else {
      if (!told_before && !started && !message.submissions->AreOnlyAsked()) {
        if (!Start(message, all.subspan(first), outcome)) return sent;
        started = true;
      }
      if (!told_before) {
        parts_.notices.ToMainWindow(kWmProgress, message.progress_index,
                                    static_cast<std::int32_t>(all.size() - i));
      }
      sent += SendChunk(chunk, message, outcome);
      if (outcome->waiting) return sent;
    }
    numbers.clear();
    first = i + 1;
  }
  if (started && sent > 0) End(message, outcome);
  return sent;
}

bool SendBatch::Start(const OutgoingMessage& message, std::span<const RecipientRecord> rest,
                      SendOutcome* outcome) {
  const std::u16string wire =
      WireText::Of(message.text, IsUnicodeType(message.type), parts_.gateway);
  step_.SetProperties(message);
  const SubmissionAnswer answer = message.submissions->StartBatch(wire);
  const std::int32_t error = answer.failure.code;
  outcome->highest_error = std::max(outcome->highest_error, error);
  outcome->unnamed_reason = Reason(answer.failure);
  if (error == kGatewayOk) {
    if (parts_.log.Enabled()) {
      parts_.log.Write("SMS batch started ok: Msg:%s API_ID:%s", message.text.c_str(),
                       answer.reply.c_str());
    }
    return true;
  }
  outcome->no_session = error == kNoSession;
  outcome->waiting = answer.open;
  if (answer.open) outcome->why_waiting = Why(answer.failure);
  if (parts_.log.Enabled()) {
    parts_.log.Write("SMS Batch start %s: Error:%s Msg:%s", answer.open ? "not answered" : "failed",
                     answer.reply.c_str(), message.text.c_str());
  }
  if (error == kGatewayUnreachable && !answer.open)
    ShowNoConnection(parts_.boxes, parts_.texts, parts_.settings, answer.failure);
  if (answer.in_doubt) {
    for (const RecipientRecord& record : rest)
      outcome->in_doubt.push_back({record, answer.failure.words});
  } else if (outcome->no_session && !outcome->waiting) {
    outcome->retries.insert(outcome->retries.end(), rest.begin(), rest.end());
  }
  return false;
}

std::int32_t SendBatch::SendChunk(const Chunk& chunk, const OutgoingMessage& message,
                                  SendOutcome* outcome) {
  const SubmissionAnswer answer = message.submissions->BatchSend(chunk.position, chunk.numbers);
  const std::int32_t error = answer.failure.code;
  outcome->highest_error = std::max(outcome->highest_error, error);
  if (parts_.log.Enabled() && !answer.told_before) {
    if (error != kGatewayOk) {
      parts_.log.Write("QuickBatchSend %s: Error:%s", answer.open ? "not answered" : "failed",
                       answer.reply.c_str());
    } else {
      parts_.log.Write("QuickBatchSend SMS sent ok: Mobile:,%.*s",
                       static_cast<int>(chunk.numbers.size()), chunk.numbers.data());
    }
  }
  outcome->no_session = error == kNoSession;
  outcome->waiting = answer.open;
  if (answer.open) outcome->why_waiting = Why(answer.failure);
  if (answer.open) return 0;
  if (answer.too_late || answer.in_doubt) {
    auto& list = answer.too_late ? outcome->failures : outcome->in_doubt;
    for (const RecipientRecord& record : chunk.records)
      list.push_back({record, answer.failure.words, answer.stopped});
    return 0;
  }
  if (outcome->no_session) {
    outcome->retries.insert(outcome->retries.end(), chunk.records.begin(), chunk.records.end());
    return 0;
  }
  outcome->unnamed_reason =
      Reason(error != kGatewayOk ? answer.failure : GatewayFailure{kNotUnderstood});
  const std::size_t before = outcome->failures.size();
  const std::int32_t sent = RecordChunkReply(answer.reply, chunk.records, outcome);
  if (IsUnreachable(error)) {  // all of the chunk for one reason, which the lines tell less well
    for (std::size_t i = before; i < outcome->failures.size(); ++i)
      outcome->failures[i].reason = outcome->unnamed_reason;
  }
  return sent;
}

void SendBatch::End(const OutgoingMessage& message, SendOutcome* outcome) {
  const SubmissionAnswer answer = message.submissions->EndBatch();
  const std::int32_t error = answer.failure.code;
  outcome->highest_error = std::max(outcome->highest_error, error);
  if (!parts_.log.Enabled()) return;
  if (error != kGatewayOk) {
    parts_.log.Write("EndBatch failed: Error:%s", answer.reply.c_str());
  } else {
    parts_.log.Write("EndBatch SMS ok");
  }
}

std::string SendBatch::Why(const GatewayFailure& failure) const {
  return FailureText(failure, parts_.texts, parts_.settings.Text(TextSetting::kComBaseUrl));
}

std::string SendBatch::Reason(const GatewayFailure& failure) const {
  if (failure.code == kGatewayOk) return {};
  return ReasonText(failure, parts_.texts, parts_.settings.Text(TextSetting::kComBaseUrl));
}

std::int32_t RecordChunkReply(std::string_view reply, std::span<const RecipientRecord> chunk,
                              SendOutcome* outcome) {
  std::int32_t sent = 0;
  for (const BatchEntry& entry : ParseBatchReply(reply)) {
    const auto match = std::find_if(chunk.begin(), chunk.end(), [&](const RecipientRecord& record) {
      return record.number.view() == entry.number;
    });
    if (match == chunk.end()) continue;
    RefusedRecipient record;
    record.contact_id = kFromBatchReply;
    record.number = entry.number;
    record.entry = match->entry.view();
    if (entry.success) {
      record.gateway_id = ",ID: " + entry.text;
      outcome->successes.push_back(record);
      ++sent;
    } else {
      record.reason = RefusalReason(entry.text);
      outcome->failures.push_back(record);
    }
  }
  return sent;
}

}  // namespace orvalo
