#include "cli/message_family.h"

#include "cli/message_state.h"
#include "store/sms_database.h"

namespace orvalo::cli {

// The store is walked through only when the message has just been expanded, and after that the
// members are read by their ids: a large outbox must not be walked through at every second.
void MessageFamily::Refresh() {
  if (members_.empty()) {
    const auto row = database_.GetSms(id_);
    if (row && row->stat == static_cast<std::int32_t>(SmsStatus::kExpanded)) {
      for (const MessageRow& member : Rows()) members_.push_back(member.id);
    }
  }
  unsettled_ = 0;
  followed_.ids.clear();
  const auto look_at = [this](std::int32_t id) {
    const auto row = database_.GetSms(id);
    if (!row || IsSettled(*row)) return;
    ++unsettled_;
    if (IsFollowed(*row)) followed_.ids.push_back(id);
  };
  if (members_.empty()) look_at(id_);
  for (const std::int32_t id : members_) look_at(id);
}

std::vector<MessageRow> MessageFamily::Rows() {
  std::vector<MessageRow> rows;
  database_.ForEachSms([&](const MessageRow& row) {
    if (row.id == id_ || row.ref_id == id_) rows.push_back(row);
    return true;
  });
  return rows;
}

}  // namespace orvalo::cli
