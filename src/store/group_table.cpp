#include "platform/collation.h"
#include "store/connection.h"
#include "store/contact_statements.h"
#include "store/id_counters.h"
#include "store/sms_database.h"

namespace orvalo {
namespace {

constexpr Sql kInsertGroup("INSERT INTO \"GROUP\"(GID, Cnt, Name) VALUES(?, 0, ?)");
constexpr Sql kRenameGroup("UPDATE \"GROUP\" SET Name = ?2 WHERE GID = ?1");
constexpr Sql kSelectGroupName("SELECT Name FROM \"GROUP\" WHERE GID = ?");
constexpr Sql kSelectGroups("SELECT GID, Name FROM \"GROUP\" ORDER BY GID");
constexpr Sql kCountGroupsBefore(
    "SELECT (SELECT count(*) FROM \"GROUP\" WHERE GID < ?1) FROM \"GROUP\" WHERE GID = ?1");
constexpr Sql kDeleteGroup("DELETE FROM \"GROUP\" WHERE GID = ?");
constexpr Sql kDeleteLoneContacts(
    "DELETE FROM CONTACTS WHERE CID IN (SELECT CID FROM CONTACT_GROUP_MAP WHERE GID = ?1) "
    "AND NOT EXISTS (SELECT 1 FROM CONTACT_GROUP_MAP AS other WHERE other.CID = CONTACTS.CID "
    "AND +other.GID <> ?1)");
constexpr Sql kDeleteMembers("DELETE FROM CONTACT_GROUP_MAP WHERE GID = ?");

// The unary plus keeps SQLite from walking a whole group in search of one contact.
constexpr Sql kInsertAbsentMembership(
    "INSERT INTO CONTACT_GROUP_MAP(CID, GID) SELECT ?1, ?2 WHERE NOT EXISTS "
    "(SELECT 1 FROM CONTACT_GROUP_MAP WHERE CID = ?1 AND +GID = ?2)");
constexpr Sql kSelectMembership(
    "SELECT 1 FROM CONTACT_GROUP_MAP WHERE CID = ? AND +GID = ? LIMIT 1");
constexpr Sql kSelectFirstGroup(
    "SELECT GID FROM CONTACT_GROUP_MAP WHERE CID = ? ORDER BY rowid LIMIT 1");
constexpr Sql kSelectGroupsOf("SELECT GID FROM CONTACT_GROUP_MAP WHERE CID = ? ORDER BY rowid");
constexpr Sql kCountGroupsOf("SELECT count(*) FROM CONTACT_GROUP_MAP WHERE CID = ?");
constexpr Sql kDeleteMembership(
    "DELETE FROM CONTACT_GROUP_MAP WHERE rowid = (SELECT rowid FROM CONTACT_GROUP_MAP "
    "WHERE CID = ? AND +GID = ? ORDER BY rowid LIMIT 1)");
constexpr Sql kDeleteMemberships("DELETE FROM CONTACT_GROUP_MAP WHERE CID = ?");
constexpr Sql kCountMembers("SELECT count(*) FROM CONTACT_GROUP_MAP WHERE GID = ?");
constexpr Sql kCountMembersOfAll(
    "SELECT GID, count(*) FROM CONTACT_GROUP_MAP GROUP BY GID ORDER BY GID");

template <typename... Values>
std::int32_t FirstNumber(Connection* connection, std::int32_t missing, const Sql& sql,
                         const Values&... values) {
  if (connection == nullptr) return missing;
  Query query(*connection, sql, values...);
  return query.Step() ? query.Int(0) : missing;
}

}  // namespace

// --- Groups

GroupRow SmsDatabase::AddGroup(std::string_view name) {
  GroupRow group{-1, std::string(name)};
  Connection* connection = Here();
  if (connection == nullptr) return group;
  Transaction transaction(*this);
  group.gid = NextId(*connection, kGroupIds);
  Run(*connection, kInsertGroup, group.gid, name);
  transaction.Commit();
  return group;
}

void SmsDatabase::RenameGroup(std::int32_t gid, std::string_view name) {
  if (Connection* connection = Here()) Run(*connection, kRenameGroup, gid, name);
}

std::int32_t SmsDatabase::FindOrAddGroup(std::string_view name) {
  if (Here() == nullptr) return -1;
  Transaction transaction(*this);
  std::int32_t gid = -1;
  for (const GroupRow& group : AllGroups()) {
    if (platform::EqualNoCase(group.name, name)) {
      gid = group.gid;
      break;
    }
  }
  if (gid == -1) gid = AddGroup(name).gid;
  transaction.Commit();
  return gid;
}

std::optional<std::string> SmsDatabase::GetGroupName(std::int32_t gid) {
  Connection* connection = Here();
  if (connection == nullptr) return std::nullopt;
  Query query(*connection, kSelectGroupName, gid);
  if (!query.Step()) return std::nullopt;
  return std::string(query.Text(0));
}

std::int32_t SmsDatabase::FindGroupRow(std::int32_t gid) {
  return FirstNumber(Here(), -1, kCountGroupsBefore, gid);
}

void SmsDatabase::DeleteGroup(std::int32_t gid) {
  Connection* connection = Here();
  if (connection == nullptr) return;
  Transaction transaction(*this);
  CatchUp(*connection, kContactIds);
  CatchUp(*connection, kGroupIds);
  Run(*connection, kDeleteLoneContacts, gid);
  Run(*connection, kDeleteMembers, gid);
  Run(*connection, kDeleteGroup, gid);
  transaction.Commit();
}

std::vector<GroupRow> SmsDatabase::AllGroups() {
  std::vector<GroupRow> groups;
  Connection* connection = Here();
  if (connection == nullptr) return groups;
  Query query(*connection, kSelectGroups);
  while (query.Step()) groups.push_back({query.Int(0), std::string(query.Text(1))});
  return groups;
}

// --- Membership

void SmsDatabase::AddMembership(std::int32_t gid, std::int32_t cid) {
  if (Connection* connection = Here()) Run(*connection, kInsertMembership, cid, gid);
}

void SmsDatabase::AddToGroupIfAbsent(std::int32_t cid, std::int32_t gid) {
  if (Connection* connection = Here()) Run(*connection, kInsertAbsentMembership, cid, gid);
}

bool SmsDatabase::IsMember(std::int32_t cid, std::int32_t gid) {
  return FirstNumber(Here(), 0, kSelectMembership, cid, gid) == 1;
}

std::int32_t SmsDatabase::FirstGroupOf(std::int32_t cid) {
  return FirstNumber(Here(), 0, kSelectFirstGroup, cid);
}

std::int32_t SmsDatabase::GroupCountOfContact(std::int32_t cid) {
  return FirstNumber(Here(), 0, kCountGroupsOf, cid);
}

std::int32_t SmsDatabase::MemberCount(std::int32_t gid) {
  return FirstNumber(Here(), 0, kCountMembers, gid);
}

std::vector<std::pair<std::int32_t, std::int32_t>> SmsDatabase::MemberCounts() {
  std::vector<std::pair<std::int32_t, std::int32_t>> counts;
  Connection* connection = Here();
  if (connection == nullptr) return counts;
  Query query(*connection, kCountMembersOfAll);
  while (query.Step()) counts.emplace_back(query.Int(0), query.Int(1));
  return counts;
}

std::vector<std::int32_t> SmsDatabase::GroupsOf(std::int32_t cid) {
  std::vector<std::int32_t> groups;
  Connection* connection = Here();
  if (connection == nullptr) return groups;
  Query query(*connection, kSelectGroupsOf, cid);
  while (query.Step()) groups.push_back(query.Int(0));
  return groups;
}

void SmsDatabase::RemoveFromGroup(std::int32_t cid, std::int32_t gid) {
  if (Connection* connection = Here()) Run(*connection, kDeleteMembership, cid, gid);
}

void SmsDatabase::MoveContact(std::int32_t cid, std::int32_t to_gid, std::int32_t from_gid) {
  Connection* connection = Here();
  if (connection == nullptr) return;
  Transaction transaction(*this);
  if (!IsMember(cid, to_gid)) {
    if (from_gid == 1) {
      Run(*connection, kDeleteMemberships, cid);
    } else {
      RemoveFromGroup(cid, from_gid);
    }
    AddMembership(to_gid, cid);
  }
  transaction.Commit();
}

}  // namespace orvalo
