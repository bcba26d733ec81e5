#pragma once
#include <cstdint>

#include "store/records.h"

namespace orvalo {

class SmsDatabase;

// The contact that was copied or cut, within the program: the desktop's clipboard has no part in
// it. Lives as long as its page; main thread. Paste throws StoreError, and nothing has changed.
class ContactClipboard {
 public:
  enum class State { kEmpty, kCopied, kCut };

  explicit ContactClipboard(SmsDatabase& database) : database_(database) {}

  // Remembers a contact and its texts. False, changing nothing, when there is no such contact.
  bool Remember(std::int32_t cid, bool cut);
  State state() const { return state_; }

  // Puts the remembered contact into a group. One that was cut becomes a new contact there, and the
  // next paste links that one; so does one that was copied and has been deleted since. Into the
  // group of every contact (`holds_all`) only a new contact needs to be put.
  void Paste(std::int32_t gid, bool holds_all);

 private:
  SmsDatabase& database_;
  State state_ = State::kEmpty;
  std::int32_t cid_ = 0;
  ContactRecord record_;
};

}  // namespace orvalo
