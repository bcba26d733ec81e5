#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "gateway/account.h"
#include "gateway/batch_reply.h"
#include "gateway/gateway_ids.h"
#include "gateway/send_batch.h"
#include "gateway/status_reply.h"

namespace {

void Require(bool condition) {
  if (!condition) std::abort();
}

// Whatever a gateway answers to a chunk, no number that was not in it is recorded, and no record is
// too wide.
void RecordAndCheck(std::string_view reply) {
  std::vector<orvalo::RecipientRecord> chunk(2);
  chunk[0].number = "27821110001";
  chunk[1].number = "27821110002";
  orvalo::SendOutcome outcome;
  const auto sent = orvalo::RecordChunkReply(reply, chunk, &outcome);
  Require(sent == static_cast<std::int32_t>(outcome.successes.size()));
  const auto check = [&](const auto& list) {
    for (const auto& record : list) {
      Require(record.number.view() == chunk[0].number.view() ||
              record.number.view() == chunk[1].number.view());
    }
  };
  check(outcome.successes);
  check(outcome.failures);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view reply(reinterpret_cast<const char*>(data), size);
  RecordAndCheck(reply);
  orvalo::ParseStatusReply(reply);
  orvalo::ParseBalance(reply);
  std::string rest(reply);
  for (const auto& entry : orvalo::ParseGatewayIds(reply)) {
    Require(entry.id.size() <= 32 && entry.number.size() <= 18);
    rest = orvalo::RemoveGatewayId(rest, entry);
  }
  return 0;
}
