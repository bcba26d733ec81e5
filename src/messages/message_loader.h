#pragma once
#include <cstdint>

namespace orvalo {

// Whoever takes a stored message back into the compose page; implemented by the compose logic, used
// by the outbox. Main thread.
class MessageLoader {
 public:
  virtual ~MessageLoader() = default;
  // Fills the page from the row; what the page held is gone. With `edit` the row is put into the
  // status Editing and the page's "Update >>" will change it; without, the row is left alone and
  // the page holds a copy to be queued anew. False for a row that cannot be edited because it is
  // being sent, and for an id without a row.
  virtual bool LoadMessage(std::int32_t id, bool edit) = 0;
};

}  // namespace orvalo
