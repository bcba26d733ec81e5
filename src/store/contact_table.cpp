#include <algorithm>

#include "platform/code_page.h"
#include "store/connection.h"
#include "store/contact_statements.h"
#include "store/id_counters.h"
#include "store/sms_database.h"

namespace orvalo {
namespace {

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

constexpr Sql kSelectContactsFrom(
    "SELECT CID, Name, Surname, Title, Custom, Mobile FROM CONTACTS WHERE CID >= ? ORDER BY CID");
constexpr Sql kSelectEachMember(
    "SELECT CID, Name, Surname, Title, Custom, Mobile FROM CONTACTS "
    "WHERE CID IN (SELECT CID FROM CONTACT_GROUP_MAP WHERE GID = ?) ORDER BY CID");
constexpr Sql kSelectMobiles("SELECT Mobile FROM CONTACTS");
constexpr Sql kSelectMemberIds("SELECT CID FROM CONTACT_GROUP_MAP WHERE GID = ?");

// Contacts that are stepped over rather than sought, on the way to the next one wanted.
constexpr int kStepsToNext = 8;

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

ContactView ViewContact(const Query& query) {
  return {query.Int(0), query.Text(1), query.Text(2), query.Text(3), query.Text(4), query.Text(5)};
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

void SmsDatabase::ForEachContact(std::int32_t after,
                                 const std::function<bool(const ContactView&)>& visit) {
  Connection* connection = Here();
  if (connection == nullptr) return;
  Query query(*connection, kSelectContactsFrom, std::int64_t{after} + 1);
  while (query.Step() && visit(ViewContact(query))) {
  }
}

void SmsDatabase::ForEachMember(std::int32_t gid,
                                const std::function<void(const ContactView&)>& visit) {
  Connection* connection = Here();
  if (connection == nullptr) return;
  Query query(*connection, kSelectEachMember, gid);
  while (query.Step()) visit(ViewContact(query));
}

void SmsDatabase::ForEachContactOf(std::span<const std::int32_t> cids,
                                   const std::function<void(const ContactView&)>& visit) {
  Connection* connection = Here();
  if (connection == nullptr || cids.empty()) return;
  Query query(*connection, kSelectContactsFrom, cids.front());
  bool found = query.Step();
  for (const std::int32_t cid : cids) {
    // Ids that ascend with few gaps are one walk through the table.
    int steps = 0;
    while (found && query.Int(0) < cid && steps++ < kStepsToNext) found = query.Step();
    if (!found || query.Int(0) != cid) found = query.Again(cid).Step();
    if (found && query.Int(0) == cid) visit(ViewContact(query));
  }
}

void SmsDatabase::ForEachMobile(const std::function<void(std::string_view)>& visit) {
  Connection* connection = Here();
  if (connection == nullptr) return;
  Query query(*connection, kSelectMobiles);
  while (query.Step()) visit(query.Text(0));
}

std::vector<std::int32_t> SmsDatabase::MemberIds(std::int32_t gid) {
  std::vector<std::int32_t> cids;
  Connection* connection = Here();
  if (connection == nullptr) return cids;
  Query query(*connection, kSelectMemberIds, gid);
  while (query.Step()) cids.push_back(query.Int(0));
  std::sort(cids.begin(), cids.end());  // mostly they are
  cids.erase(std::unique(cids.begin(), cids.end()), cids.end());
  return cids;
}

std::vector<ContactRow> SmsDatabase::MembersOf(std::int32_t gid) {
  Connection* connection = Here();
  if (connection == nullptr) return {};
  return ReadContacts(Query(*connection, kSelectMembers, gid));
}

}  // namespace orvalo
