#include "platform/code_page.h"
#include "store/connection.h"
#include "store/id_counters.h"
#include "store/sms_database.h"

namespace orvalo {
namespace {

constexpr Sql kInsertContact(
    "INSERT INTO CONTACTS(CID, Name, Surname, Title, Custom, Mobile) VALUES(?, ?, ?, ?, ?, ?)");
constexpr Sql kUpdateContact(
    "UPDATE CONTACTS SET Name = ?2, Surname = ?3, Title = ?4, Custom = ?5, Mobile = ?6 "
    "WHERE CID = ?1");
constexpr Sql kDeleteContact("DELETE FROM CONTACTS WHERE CID = ?");
constexpr Sql kDeleteContactWithoutGroup(
    "DELETE FROM CONTACTS WHERE CID = ?1 "
    "AND NOT EXISTS (SELECT 1 FROM CONTACT_GROUP_MAP WHERE CID = ?1)");
constexpr Sql kLeaveAllGroups("DELETE FROM CONTACT_GROUP_MAP WHERE CID = ?");
constexpr Sql kContactExists("SELECT 1 FROM CONTACTS WHERE CID = ?");
constexpr Sql kMobileExists("SELECT 1 FROM CONTACTS WHERE Mobile = ? LIMIT 1");
constexpr Sql kSelectContact(
    "SELECT CID, Name, Surname, Title, Custom, Mobile FROM CONTACTS WHERE CID = ?");
constexpr Sql kSelectContacts(
    "SELECT CID, Name, Surname, Title, Custom, Mobile FROM CONTACTS ORDER BY CID");
constexpr Sql kSelectMembers(
    "SELECT CONTACTS.CID, Name, Surname, Title, Custom, Mobile FROM CONTACT_GROUP_MAP AS map "
    "CROSS JOIN CONTACTS ON CONTACTS.CID = map.CID WHERE map.GID = ? ORDER BY map.rowid");

// A contact's texts, cut to the widths of their columns.
struct ContactTexts {
  explicit ContactTexts(const ContactRecord& contact)
      : name(platform::FirstCharacters(contact.name, kContactNameWidth)),
        surname(platform::FirstCharacters(contact.surname, kContactSurnameWidth)),
        title(platform::FirstCharacters(contact.title, kContactTitleWidth)),
        custom(platform::FirstCharacters(contact.custom, kContactCustomWidth)),
        mobile(platform::FirstCharacters(contact.mobile, kContactMobileWidth)) {}
  std::string_view name, surname, title, custom, mobile;
};

ContactRow ReadContact(const Query& query) {
  ContactRow row;
  row.cid = query.Int(0);
  row.name = query.Text(1);
  row.surname = query.Text(2);
  row.title = query.Text(3);
  row.custom = query.Text(4);
  row.mobile = query.Text(5);
  return row;
}

std::optional<ContactRow> FindContact(Connection* connection, std::int32_t cid) {
  if (connection == nullptr) return std::nullopt;
  Query query(*connection, kSelectContact, cid);
  if (!query.Step()) return std::nullopt;
  return ReadContact(query);
}

std::vector<ContactRow> ReadContacts(Query&& query) {
  std::vector<ContactRow> rows;
  while (query.Step()) rows.push_back(ReadContact(query));
  return rows;
}

}  // namespace

std::int32_t SmsDatabase::AddContact(const ContactRecord& contact) {
  Connection* connection = Here();
  if (connection == nullptr) return -1;
  Transaction transaction(*this);
  const std::int32_t cid = NextId(*connection, kContactIds);
  const ContactTexts texts(contact);
  Run(*connection, kInsertContact, cid, texts.name, texts.surname, texts.title, texts.custom,
      texts.mobile);
  for (const std::int32_t gid : contact.group_ids) AddMembership(gid, cid);
  transaction.Commit();
  return cid;
}

void SmsDatabase::UpdateContact(std::int32_t cid, const ContactRecord& contact) {
  Connection* connection = Here();
  if (connection == nullptr) return;
  Transaction transaction(*this);
  const ContactTexts texts(contact);
  if (Run(*connection, kUpdateContact, cid, texts.name, texts.surname, texts.title, texts.custom,
          texts.mobile) > 0) {
    Run(*connection, kLeaveAllGroups, cid);
    for (const std::int32_t gid : contact.group_ids) AddMembership(gid, cid);
  }
  transaction.Commit();
}

void SmsDatabase::DeleteContact(std::int32_t cid, bool all, std::int32_t gid) {
  Connection* connection = Here();
  if (connection == nullptr) return;
  Transaction transaction(*this);
  if (Query(*connection, kContactExists, cid).Step()) {
    CatchUp(*connection, kContactIds);
    if (all) {
      Run(*connection, kDeleteContact, cid);
      Run(*connection, kLeaveAllGroups, cid);
    } else {
      RemoveFromGroup(cid, gid);
      Run(*connection, kDeleteContactWithoutGroup, cid);
    }
  }
  transaction.Commit();
}

std::optional<ContactRecord> SmsDatabase::GetContactRecord(std::int32_t cid) {
  auto row = FindContact(Here(), cid);
  if (!row) return std::nullopt;
  return ContactRecord{std::move(row->name),   std::move(row->surname), std::move(row->title),
                       std::move(row->custom), std::move(row->mobile),  {}};
}

std::optional<std::string> SmsDatabase::GetContactMobile(std::int32_t cid) {
  auto row = FindContact(Here(), cid);
  if (!row) return std::nullopt;
  return std::move(row->mobile);
}

std::optional<std::string> SmsDatabase::ContactDisplayName(std::int32_t cid) {
  const auto row = FindContact(Here(), cid);
  if (!row) return std::nullopt;
  return row->name + " " + row->surname;
}

bool SmsDatabase::ContactExistsWithMobile(std::string_view mobile) {
  Connection* connection = Here();
  return connection != nullptr && Query(*connection, kMobileExists, mobile).Step();
}

std::vector<ContactRow> SmsDatabase::AllContacts() {
  Connection* connection = Here();
  if (connection == nullptr) return {};
  return ReadContacts(Query(*connection, kSelectContacts));
}

std::vector<ContactRow> SmsDatabase::MembersOf(std::int32_t gid) {
  Connection* connection = Here();
  if (connection == nullptr) return {};
  return ReadContacts(Query(*connection, kSelectMembers, gid));
}

}  // namespace orvalo
