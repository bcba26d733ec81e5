#include "cli/message_family.h"

#include "cli/message_state.h"
#include "store/sms_database.h"

namespace orvalo::cli {

// The store is walked through only when a message has just been expanded, and after that the
// members are read by their ids: a large outbox must not be walked through at every second.
void MessageFamily::Refresh() {
  std::set<std::int32_t> fresh;
  for (const std::int32_t id : heads_) {
    if (expanded_.count(id) != 0) continue;
    const auto row = database_.GetSms(id);
    if (row && row->stat == static_cast<std::int32_t>(SmsStatus::kExpanded)) fresh.insert(id);
  }
  if (!fresh.empty()) {
    for (const MessageRow& row : Rows()) {
      if (heads_.count(row.id) == 0 && fresh.count(row.ref_id) != 0) members_.push_back(row.id);
    }
    expanded_.merge(fresh);
  }
  unsettled_ = 0;
  followed_.ids.clear();
  for (const std::int32_t id : heads_) {
    if (expanded_.count(id) == 0) LookAt(id);
  }
  for (const std::int32_t id : members_) LookAt(id);
}

void MessageFamily::LookAt(std::int32_t id) {
  const auto row = database_.GetSms(id);
  if (!row || IsSettled(*row)) return;
  ++unsettled_;
  if (IsFollowed(*row)) followed_.ids.push_back(id);
}

std::vector<MessageRow> MessageFamily::Rows() {
  std::vector<MessageRow> rows;
  database_.ForEachSms([&](const MessageRow& row) {
    if (heads_.count(row.id) != 0 || heads_.count(row.ref_id) != 0) rows.push_back(row);
    return true;
  });
  return rows;
}

}  // namespace orvalo::cli
