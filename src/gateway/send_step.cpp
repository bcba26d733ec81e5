#include "gateway/send_step.h"

#include <algorithm>

#include "app/log_file.h"
#include "app/settings.h"
#include "app/texts.h"
#include "gateway/engine_notices.h"
#include "gateway/gateway_client.h"
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
                    const std::u16string& wire, const RecipientRecord& record, std::int32_t to_go,
                    SendOutcome* outcome) {
  if (outcome->no_session) {
    outcome->retries.push_back(record);
    return;
  }
  parts_.notices.ToMainWindow(kWmProgress, message.progress_index, to_go);
  SetProperties(message);

  std::u16string wide_reply;
  const std::string number(record.number.view());
  parts_.gateway.Send(1, wire, platform::ToWide(number), &wide_reply);
  const GatewayFailure failure = parts_.gateway.LastFailure(wide_reply);
  const std::int32_t error = failure.code;
  const std::string reply = platform::FromWide(wide_reply);
  outcome->highest_error = std::max(outcome->highest_error, error);

  const std::string address = parts_.settings.Text(TextSetting::kComBaseUrl);
  const bool personalised = kind == Kind::kPersonalised;
  if (error != kGatewayOk) {
    if (error == kGatewayUnreachable) {
      ShowNoConnection(parts_.boxes, parts_.texts, parts_.settings, failure);
    }
    if (parts_.log.Enabled()) {
      parts_.log.Write("%s failed: Error:%s Mobile:%s Msg:%.*s",
                       personalised ? "ComplexSMS" : "SMS", reply.c_str(), number.c_str(),
                       static_cast<int>(text.size()), text.data());
    }
    if (error == kNoSession) {
      outcome->no_session = true;
      outcome->retries.push_back(record);
    } else {
      outcome->failures.push_back({record, ReasonText(failure, parts_.texts, address)});
    }
    return;
  }
  RecipientRecord sent = record;
  sent.gateway_id = "," + reply;
  outcome->successes.push_back(sent);
  if (parts_.log.Enabled()) {
    parts_.log.Write("%s sent ok: Mobile:%s Msg:%.*s API_ID:%s",
                     personalised ? "ComplexSMS" : "SMS", number.c_str(),
                     static_cast<int>(text.size()), text.data(), reply.c_str());
  }
}

}  // namespace orvalo
