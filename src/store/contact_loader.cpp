#include "store/contact_loader.h"

#include "platform/code_page.h"
#include "store/connection.h"
#include "store/contact_statements.h"
#include "store/id_counters.h"
#include "store/sms_database.h"

namespace orvalo {

struct ContactLoader::Statements {
  explicit Statements(Connection& connection)
      : contact(connection, kInsertContact), membership(connection, kInsertMembership) {}
  Query contact;
  Query membership;
};

ContactLoader::ContactLoader(SmsDatabase& database) {
  Connection* connection = database.Here();
  if (connection == nullptr) return;
  next_id_ = NextId(*connection, kContactIds);
  statements_ = std::make_unique<Statements>(*connection);
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

}  // namespace orvalo
