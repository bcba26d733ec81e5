#pragma once
#include <string>
#include <string_view>
#include <vector>

namespace orvalo {

// One entry of the column ApiMsgID.
struct GatewayIdEntry {
  std::string id;      // the gateway's id, at most 32 bytes
  std::string number;  // the destination, at most 18 bytes; often empty
};

// Reads ApiMsgID: pieces separated by commas after a leading one. A piece "ID: <id>" or "ID:
// <32-byte id>|<number>" is an entry; other pieces are passed over.
std::vector<GatewayIdEntry> ParseGatewayIds(std::string_view api_msg_id);

// ApiMsgID without any occurrence of this entry.
std::string RemoveGatewayId(std::string api_msg_id, const GatewayIdEntry& entry);

}  // namespace orvalo
