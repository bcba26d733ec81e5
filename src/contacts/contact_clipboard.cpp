#include "contacts/contact_clipboard.h"

#include "store/sms_database.h"

namespace orvalo {

bool ContactClipboard::Remember(std::int32_t cid, bool cut) {
  const auto record = database_.GetContactRecord(cid);
  if (!record) return false;
  record_ = *record;
  cid_ = cid;
  state_ = cut ? State::kCut : State::kCopied;
  return true;
}

void ContactClipboard::Paste(std::int32_t gid, bool holds_all) {
  if (state_ == State::kEmpty) return;
  if (state_ == State::kCopied && database_.GetContactRecord(cid_)) {
    if (!holds_all) database_.AddToGroupIfAbsent(cid_, gid);
    return;
  }
  record_.group_ids = {gid};
  cid_ = database_.AddContact(record_);
  state_ = State::kCopied;
}

}  // namespace orvalo
