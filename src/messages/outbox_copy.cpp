#include "messages/outbox_copy.h"

#include <algorithm>
#include <string_view>

#include "app/texts.h"
#include "messages/message_texts.h"
#include "platform/clipboard.h"
#include "platform/code_page.h"
#include "platform/collation.h"
#include "store/sms_database.h"

namespace orvalo {

namespace {

constexpr int kHeadTextId = 1249;
constexpr int kMessageLabelId = 1250;
constexpr int kBinaryTextId = 1251;
constexpr int kGatewayIdLabelId = 1252;
constexpr std::string_view kGatewayIdMark = "ID: ";
constexpr std::size_t kGatewayIdWidth = 32;

// The gateway's ids of a message, joined by commas.
std::string GatewayIdsOf(std::string_view api_msg_id) {
  std::string ids;
  api_msg_id.remove_prefix(std::min<std::size_t>(1, api_msg_id.size()));
  for (bool more = !api_msg_id.empty(); more;) {
    const std::size_t end = api_msg_id.find(',');
    std::string_view piece = api_msg_id.substr(0, end);
    more = end != std::string_view::npos;
    api_msg_id.remove_prefix(more ? end + 1 : api_msg_id.size());
    if (platform::EqualNoCaseAscii(piece.substr(0, kGatewayIdMark.size()), kGatewayIdMark))
      piece.remove_prefix(kGatewayIdMark.size());
    ids += platform::FirstCharacters(piece, kGatewayIdWidth);
    if (more) ids += ',';
  }
  return ids;
}

}  // namespace

std::string MessageDetails(const MessageRow& row, const MessageTexts& fields, const Texts& texts) {
  const std::string time = fields.Time(row.time);
  std::string details = texts.Format(kHeadTextId, {time, fields.Status(row.stat), row.charge})
                            .value_or(std::string());
  details += fields.NumbersOf(row);
  details += texts.LoadOrEmpty(kMessageLabelId);
  details += GatewayTypeCode(row.type) == 0 ? row.msg : texts.LoadOrEmpty(kBinaryTextId);
  details += texts.LoadOrEmpty(kGatewayIdLabelId);
  details += GatewayIdsOf(row.api_msg_id);
  return details + "\r\n";
}

bool OutboxCopy::Copy(std::int32_t id) {
  const auto row = database_.GetSms(id);
  return row && clipboard_.SetText(MessageDetails(*row, fields_, texts_));
}

}  // namespace orvalo
