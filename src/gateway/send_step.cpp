#include "gateway/send_step.h"

#include <algorithm>

#include "app/log_file.h"
#include "app/settings.h"
#include "app/texts.h"
#include "gateway/engine_notices.h"
#include "gateway/gateway_client.h"
#include "gateway/message_submissions.h"
#include "platform/code_page.h"
#include "platform/message_box.h"
#include "store/message_type.h"

namespace orvalo {

namespace {

constexpr std::int32_t kConcatenatedParts = 3;

}  // namespace

void ShowNoConnection(platform::MessageBoxes& boxes, const Texts& texts,
                      const AppSettings& settings, const GatewayFailure& failure) {
  const std::string why = ObstacleText(failure, texts, settings.Text(TextSetting::kComBaseUrl));
  boxes.Show(texts.Load(1027) + (why.empty() ? "" : "\r\n\r\n" + why), texts.Load(1028),
             platform::BoxIcon::kStop);
}

std::u16string WireText::Of(std::string_view text, bool unicode, GatewayClient& gateway) {
  std::u16string wire = platform::ToWide(text);
  if (!unicode) return wire;
  std::u16string encoded;
  const bool replaced =
      platform::Succeeded(gateway.EncodeUnicode(wire, &encoded)) && !encoded.empty();
  return replaced ? encoded : wire;
}

void SendStep::SetProperties(const OutgoingMessage& message) {
  GatewayClient& gateway = parts_.gateway;
  gateway.SetConcatenation(parts_.settings.Flag(FlagSetting::kSpanSms) ? kConcatenatedParts : 0);
  gateway.SetMessageType(GatewayTypeCode(message.type));
  gateway.SetSender(platform::ToWide(message.sender_id));
  gateway.SetUnicode(IsUnicodeType(message.type));
  gateway.SetDeliveryAcknowledgement(parts_.settings.Flag(FlagSetting::kDeliveryAcks));
  gateway.SetDeliveryTime(message.delay / 60);
}

void SendStep::Send(Kind kind, const OutgoingMessage& message, std::string_view text,
                    const std::u16string& wire, const RecipientRecord& record,
                    std::int32_t position, SendOutcome* outcome) {
  if (outcome->waiting) return;
  MessageSubmissions& submissions = *message.submissions;
  const bool told_before = submissions.Knows(position);
  if (!told_before && (outcome->no_session || parts_.notices.Stopping())) {
    outcome->waiting = submissions.MayHaveGoneOut();
    if (!outcome->waiting) outcome->retries.push_back(record);
    return;
  }
  const std::string number(record.number.view());
  if (!told_before) {
    parts_.notices.ToMainWindow(kWmProgress, message.progress_index,
                                outcome->recipients - position);
    SetProperties(message);
  }
  const SubmissionAnswer answer = submissions.Send(position, wire, number);
  const std::int32_t error = answer.failure.code;
  const std::string& reply = answer.reply;
  outcome->highest_error = std::max(outcome->highest_error, error);

  const std::string address = parts_.settings.Text(TextSetting::kComBaseUrl);
  const char* const name = kind == Kind::kPersonalised ? "ComplexSMS" : "SMS";
  const bool log = parts_.log.Enabled() && !told_before;
  if (error != kGatewayOk) {
    if (error == kGatewayUnreachable && !answer.open) {
      ShowNoConnection(parts_.boxes, parts_.texts, parts_.settings, answer.failure);
    }
    if (log) {
      parts_.log.Write("%s %s: Error:%s Mobile:%s Msg:%.*s", name,
                       answer.open ? "not answered" : "failed", reply.c_str(), number.c_str(),
                       static_cast<int>(text.size()), text.data());
    }
    outcome->no_session = error == kNoSession;
    outcome->waiting = answer.open;
    if (answer.open) outcome->why_waiting = FailureText(answer.failure, parts_.texts, address);
    if (answer.open) return;
    if (answer.in_doubt) {
      outcome->in_doubt.push_back({record, answer.failure.words});
      return;
    }
    if (outcome->no_session) {
      outcome->retries.push_back(record);
    } else {
      outcome->failures.push_back({record,
                                   answer.too_late
                                       ? answer.failure.words
                                       : ReasonText(answer.failure, parts_.texts, address),
                                   answer.stopped});
    }
    return;
  }
  RecipientRecord sent = record;
  sent.gateway_id = "," + reply;
  outcome->successes.push_back(sent);
  if (log) {
    parts_.log.Write("%s sent ok: Mobile:%s Msg:%.*s API_ID:%s", name, number.c_str(),
                     static_cast<int>(text.size()), text.data(), reply.c_str());
  }
}

}  // namespace orvalo
