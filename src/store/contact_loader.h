#pragma once
#include <cstdint>
#include <memory>
#include <span>

#include "store/records.h"

namespace orvalo {

class SmsDatabase;

// Adds contacts by the hundred thousand: what AddContact does, without its look around at every
// one. Lives within one Transaction of its thread, which must not add contacts in any other way
// meanwhile; on that thread only. A disk that refuses makes it throw StoreError, and the
// transaction is to be given up.
class ContactLoader {
 public:
  explicit ContactLoader(SmsDatabase& database);
  ~ContactLoader();
  ContactLoader(const ContactLoader&) = delete;
  ContactLoader& operator=(const ContactLoader&) = delete;

  // Adds a contact (its `cid` is not looked at) with one membership for each group, in this order;
  // its new id, or -1 when the database is unusable.
  std::int32_t Add(const ContactView& contact, std::span<const std::int32_t> gids);

 private:
  struct Statements;
  std::unique_ptr<Statements> statements_;  // null when the database is unusable
  std::int32_t next_id_ = 0;
};

}  // namespace orvalo
