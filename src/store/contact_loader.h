#pragma once
#include <cstdint>
#include <memory>
#include <span>

#include "store/records.h"

namespace orvalo {

class Connection;
class SmsDatabase;

// Adds contacts by the hundred thousand: what AddContact does, without its look around at every
// one. Lives within one Transaction of its thread, which must not add contacts in any other way
// meanwhile, nor be within a visit of the database; on that thread only. A disk that refuses makes
// it throw StoreError, and the transaction is to be given up.
class ContactLoader {
 public:
  // `expected`: about so many contacts are to come.
  ContactLoader(SmsDatabase& database, std::uint64_t expected);
  ~ContactLoader();
  ContactLoader(const ContactLoader&) = delete;
  ContactLoader& operator=(const ContactLoader&) = delete;

  // Adds a contact (its `cid` is not looked at) with one membership for each group, in this order;
  // its new id, or -1 when the database is unusable.
  std::int32_t Add(const ContactView& contact, std::span<const std::int32_t> gids);

  // Must be called before the transaction is committed, and is the last call.
  void Finish();

 private:
  struct Statements;
  Connection* connection_;  // null when the database is unusable
  bool indices_dropped_ = false;
  std::unique_ptr<Statements> statements_;  // of connection_, until Finish
  std::int32_t next_id_ = 0;
};

}  // namespace orvalo
