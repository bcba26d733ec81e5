#include "gateway/gateway_ids.h"

#include <algorithm>

#include "platform/code_page.h"

namespace orvalo {

namespace {

constexpr std::string_view kIdMark = "ID: ";
constexpr std::size_t kIdWidth = 32;
constexpr std::size_t kNumberWidth = 18;

}  // namespace

std::vector<GatewayIdEntry> ParseGatewayIds(std::string_view api_msg_id) {
  std::vector<GatewayIdEntry> entries;
  if (!api_msg_id.empty()) api_msg_id.remove_prefix(1);
  while (!api_msg_id.empty()) {
    std::string_view piece = api_msg_id.substr(0, api_msg_id.find(','));
    api_msg_id.remove_prefix(std::min(piece.size() + 1, api_msg_id.size()));
    if (!piece.starts_with(kIdMark)) continue;
    piece.remove_prefix(kIdMark.size());
    GatewayIdEntry entry;
    entry.id = platform::FirstBytes(piece, kIdWidth);
    if (piece.size() > kIdWidth && piece[kIdWidth] == '|') {
      entry.number = platform::FirstBytes(piece.substr(kIdWidth + 1), kNumberWidth);
    }
    entries.push_back(std::move(entry));
  }
  return entries;
}

std::string RemoveGatewayId(std::string api_msg_id, const GatewayIdEntry& entry) {
  std::string piece = ",ID: " + entry.id;
  if (!entry.number.empty()) piece += "|" + entry.number;
  for (std::size_t at = 0; (at = api_msg_id.find(piece, at)) != std::string::npos;)
    api_msg_id.erase(at, piece.size());
  return api_msg_id;
}

}  // namespace orvalo
