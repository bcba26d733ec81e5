#include "cli/change_report.h"

#include <algorithm>

#include "cli/message_state.h"
#include "store/sms_database.h"

namespace orvalo::cli {

ChangeReport::ChangeReport(SmsDatabase& database) : database_(database) { Changes(); }

std::vector<MessageRow> ChangeReport::Changes() {
  std::vector<MessageRow> changes;
  const std::int32_t highest_before = highest_id_;
  database_.ForEachSms([&](const MessageRow& row) {
    const auto known = under_way_.find(row.id);
    const bool is_new = row.id > highest_before;
    if (!is_new && known == under_way_.end()) return true;
    if (is_new || known->second != row.stat) changes.push_back(row);
    if (IsSettled(row)) {
      under_way_.erase(row.id);
    } else {
      under_way_[row.id] = row.stat;
    }
    highest_id_ = std::max(highest_id_, row.id);
    return true;
  });
  return changes;
}

}  // namespace orvalo::cli
