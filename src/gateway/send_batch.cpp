#include "gateway/send_batch.h"

#include <algorithm>

#include "app/log_file.h"
#include "app/settings.h"
#include "gateway/batch_reply.h"
#include "gateway/engine_notices.h"
#include "gateway/gateway_client.h"
#include "platform/code_page.h"
#include "store/message_type.h"

namespace orvalo {

namespace {

constexpr std::size_t kChunkLength = 512;  // characters of joined numbers at which a chunk is sent

}  // namespace

std::int32_t SendBatch::Send(const OutgoingMessage& message, SendOutcome* outcome) {
  if (!Start(message, outcome)) {
    if (outcome->no_session) outcome->retries = outcome->all;
    return 0;
  }

  const std::span<const RecipientRecord> all(outcome->all);
  std::int32_t sent = 0;
  std::string numbers;
  std::size_t first = 0;
  for (std::size_t i = 0; i < all.size(); ++i) {
    numbers.append(",").append(all[i].number.view());
    const bool last = i + 1 == all.size();
    if (numbers.size() < kChunkLength && !last) continue;

    const auto chunk = all.subspan(first, i + 1 - first);
    if (parts_.notices.Stopping() || outcome->no_session) {
      outcome->retries.insert(outcome->retries.end(), chunk.begin(), chunk.end());
    } else {
      parts_.notices.ToMainWindow(kWmProgress, message.progress_index,
                                  static_cast<std::int32_t>(all.size() - i));
      sent += SendChunk(std::string_view(numbers).substr(1), chunk, outcome);
    }
    numbers.clear();
    first = i + 1;
  }
  if (sent > 0) End(outcome);
  return sent;
}

bool SendBatch::Start(const OutgoingMessage& message, SendOutcome* outcome) {
  const std::u16string wire =
      WireText::Of(message.text, IsUnicodeType(message.type), parts_.gateway);
  step_.SetProperties(message);
  std::u16string wide_reply;
  parts_.gateway.StartBatch(wire, &wide_reply);
  const GatewayFailure failure = parts_.gateway.LastFailure(wide_reply);
  const std::int32_t error = failure.code;
  const std::string reply = platform::FromWide(wide_reply);
  outcome->highest_error = std::max(outcome->highest_error, error);
  outcome->unnamed_reason = Reason(failure);
  if (error == kGatewayOk) {
    if (parts_.log.Enabled()) {
      parts_.log.Write("SMS batch started ok: Msg:%s API_ID:%s", message.text.c_str(),
                       reply.c_str());
    }
    return true;
  }
  outcome->no_session = error == kNoSession;
  if (parts_.log.Enabled()) {
    parts_.log.Write("SMS Batch start failed: Error:%s Msg:%s", reply.c_str(),
                     message.text.c_str());
  }
  if (error == kGatewayUnreachable)
    ShowNoConnection(parts_.boxes, parts_.texts, parts_.settings, failure);
  return false;
}

std::int32_t SendBatch::SendChunk(std::string_view numbers, std::span<const RecipientRecord> chunk,
                                  SendOutcome* outcome) {
  std::u16string wide_reply;
  parts_.gateway.BatchSend(platform::ToWide(numbers), &wide_reply);
  const GatewayFailure failure = parts_.gateway.LastFailure(wide_reply);
  const std::int32_t error = failure.code;
  const std::string reply = platform::FromWide(wide_reply);
  outcome->highest_error = std::max(outcome->highest_error, error);
  if (parts_.log.Enabled()) {
    if (error != kGatewayOk) {
      parts_.log.Write("QuickBatchSend failed: Error:%s", reply.c_str());
    } else {
      parts_.log.Write("QuickBatchSend SMS sent ok: Mobile:,%.*s", static_cast<int>(numbers.size()),
                       numbers.data());
    }
  }
  if (error == kNoSession) {
    outcome->no_session = true;
    outcome->retries.insert(outcome->retries.end(), chunk.begin(), chunk.end());
    return 0;
  }
  outcome->unnamed_reason = Reason(error != kGatewayOk ? failure : GatewayFailure{kNotUnderstood});
  const std::size_t before = outcome->failures.size();
  const std::int32_t sent = RecordChunkReply(reply, chunk, outcome);
  if (IsUnreachable(error)) {  // all of the chunk for one reason, which the lines tell less well
    for (std::size_t i = before; i < outcome->failures.size(); ++i)
      outcome->failures[i].reason = outcome->unnamed_reason;
  }
  return sent;
}

std::string SendBatch::Reason(const GatewayFailure& failure) const {
  if (failure.code == kGatewayOk) return {};
  return ReasonText(failure, parts_.texts, parts_.settings.Text(TextSetting::kComBaseUrl));
}

void SendBatch::End(SendOutcome* outcome) {
  std::u16string wide_reply;
  parts_.gateway.EndBatch(&wide_reply);
  const std::int32_t error = parts_.gateway.LastError();
  outcome->highest_error = std::max(outcome->highest_error, error);
  if (!parts_.log.Enabled()) return;
  if (error != kGatewayOk) {
    parts_.log.Write("EndBatch failed: Error:%s", platform::FromWide(wide_reply).c_str());
  } else {
    parts_.log.Write("EndBatch SMS ok");
  }
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
