#include "store/contact_loader.h"

#include "platform/code_page.h"
#include "store/connection.h"
#include "store/contact_statements.h"
#include "store/id_counters.h"
#include "store/schema.h"
#include "store/sms_database.h"

namespace orvalo {

namespace {

constexpr std::uint64_t kManyContacts = 20'000;
constexpr Sql kCountContacts("SELECT count(*) FROM CONTACTS");

std::uint64_t Count(Connection& connection) {
  Query query(connection, kCountContacts);
  return query.Step() ? static_cast<std::uint64_t>(query.Int64(0)) : 0;
}

}  // namespace

struct ContactLoader::Statements {
  explicit Statements(Connection& connection)
      : contact(connection, kInsertContact), membership(connection, kInsertMembership) {}
  Query contact;
  Query membership;
};

ContactLoader::ContactLoader(SmsDatabase& database, std::uint64_t expected)
    : connection_(database.Here()) {
  if (connection_ == nullptr) return;
  next_id_ = NextId(*connection_, kContactIds);
  // In a long import the places in the indices lie scattered beyond what the cache holds.
  indices_dropped_ = expected >= kManyContacts && expected >= Count(*connection_);
  if (indices_dropped_) DropContactIndices(*connection_);
  statements_ = std::make_unique<Statements>(*connection_);
}

ContactLoader::~ContactLoader() = default;

std::int32_t ContactLoader::Add(const ContactView& contact, std::span<const std::int32_t> gids) {
  if (statements_ == nullptr) return -1;
  const std::int32_t cid = next_id_++;
  statements_->contact
      .Again(cid, platform::FirstCharacters(contact.name, kContactNameWidth),
             platform::FirstCharacters(contact.surname, kContactSurnameWidth),
             platform::FirstCharacters(contact.title, kContactTitleWidth),
             platform::FirstCharacters(contact.custom, kContactCustomWidth),
             platform::FirstCharacters(contact.mobile, kContactMobileWidth))
      .Execute();
  for (const std::int32_t gid : gids) statements_->membership.Again(cid, gid).Execute();
  return cid;
}

void ContactLoader::Finish() {
  statements_.reset();
  if (indices_dropped_) MakeContactIndices(*connection_);
}

}  // namespace orvalo
