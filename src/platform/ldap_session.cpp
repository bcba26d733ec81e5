#include "platform/ldap_session.h"

#include <algorithm>
#include <chrono>
#include <unordered_set>
#include <utility>

#include "platform/collation.h"

namespace orvalo::platform {
namespace {

constexpr char kPeople[] = "(|(objectClass=inetOrgPerson)(objectClass=user)(objectClass=person))";
constexpr char kLists[] =
    "(objectClass=groupOfNames)(objectClass=groupOfUniqueNames)(objectClass=group)";
constexpr char kContainers[] =
    "(objectClass=organizationalUnit)(objectClass=organization)(objectClass=container)"
    "(objectClass=domain)(objectClass=dcObject)(objectClass=builtinDomain)(objectClass=locality)"
    "(objectClass=country)";

// Where a server limits what one request gets, its containers are read one by one: this deep at
// most.
constexpr int kDeepestPart = 30;
constexpr std::size_t kMostOutsideMembers = 20'000;

}  // namespace

std::unique_ptr<LdapSession> LdapSession::LogOn(LdapProfile profile, const std::string& password,
                                                LdapResult* failure) {
  std::unique_ptr<LdapSession> session(new LdapSession(std::move(profile), password));
  *failure = session->Connect();
  if (failure->end != LdapEnd::kDone) return nullptr;
  if (session->profile_.base.empty()) session->FindBase();
  return session;
}

LdapResult LdapSession::Connect() {
  connection_ = std::make_unique<LdapConnection>(profile_);
  return connection_->LogOn(password_);
}

// The server's own idea of what it serves. When it has none, reading its root will tell.
void LdapSession::FindBase() {
  LdapQuery query;
  query.attributes = {"defaultNamingContext", "namingContexts"};
  connection_->Search(query, [this](const LdapEntry& root) {
    for (const auto& [name, values] : root.attributes) {
      const bool best = EqualNoCaseAscii(name, "defaultNamingContext");
      if (!values.empty() && (best || profile_.base.empty())) profile_.base = values.front();
    }
    return true;
  });
  if (profile_.is_address && !profile_.base.empty())
    profile_.name = AddressWithBase(profile_.name, profile_.base);
}

std::unique_ptr<AddressBook> LdapSession::OpenAddressBook(std::string* problem) {
  auto book = std::make_unique<LdapIndex>(profile_.base);
  connection_->SetTimeLimit(std::chrono::seconds(profile_.time_limit_s));
  LdapResult base = ReadBase(book.get());
  if (base.end == LdapEnd::kGone) {
    base = Connect();
    connection_->SetTimeLimit(std::chrono::seconds(profile_.time_limit_s));
    if (base.end == LdapEnd::kDone) base = ReadBase(book.get());
  }
  if (base.end != LdapEnd::kDone) {
    *problem = base.text;
    return nullptr;
  }
  const bool complete = ReadBelow(profile_.base, 0, book.get());
  ReadPortions(book.get());
  ReadOutsideMembers(complete, book.get());
  book->ResolveMembers();
  return book;
}

LdapResult LdapSession::ReadBase(LdapIndex* book) {
  LdapQuery query;
  query.base = profile_.base;
  query.attributes = LdapIndex::Attributes();
  bool found = false;
  LdapResult result = connection_->Search(query, [&](const LdapEntry& entry) {
    found = true;
    return book->Add(entry);
  });
  if (result.end == LdapEnd::kDone && !found)
    return {LdapEnd::kNoSuchEntry, "The server does not show " + profile_.base};
  if (result.end != LdapEnd::kDone) result.text = profile_.base + ": " + result.text;
  return result;
}

// Everything below a container; whether it was really everything. One request reads the whole of
// it; only where the server gives no more than a part of that, each container is read by itself.
bool LdapSession::ReadBelow(const std::string& base, int level, LdapIndex* book) {
  if (connection_->IsGone()) return false;  // which was told when it went
  LdapResult result = ReadPart(base, LdapScope::kSubtree, WantedFilter(), book);
  if (result.end == LdapEnd::kLimited && level < kDeepestPart) {
    const std::vector<std::string> containers = ContainersIn(base, book);
    if (!containers.empty()) {
      result = ReadPart(base, LdapScope::kChildren, WantedFilter(), book);
      bool complete = result.end == LdapEnd::kDone;
      for (const std::string& container : containers)
        complete = ReadBelow(container, level + 1, book) && complete;
      if (result.end == LdapEnd::kDone) return complete;
    }
  }
  if (result.end == LdapEnd::kDone) return true;
  book->AddProblem(base + ": " + result.text);
  return false;
}

LdapResult LdapSession::ReadPart(const std::string& base, LdapScope scope,
                                 const std::string& filter, LdapIndex* book) {
  const LdapQuery query{base, scope, filter, LdapIndex::Attributes()};
  LdapResult result =
      connection_->Search(query, [book](const LdapEntry& entry) { return book->Add(entry); });
  if (result.end == LdapEnd::kStopped) result.text = "The directory is too large";
  return result;
}

std::vector<std::string> LdapSession::ContainersIn(const std::string& base, LdapIndex* book) {
  std::vector<std::string> names;
  const LdapQuery query{base, LdapScope::kChildren, std::string("(|") + kContainers + ")",
                        LdapIndex::Attributes()};
  connection_->Search(query, [&](const LdapEntry& entry) {
    names.emplace_back(entry.dn);
    return book->Add(entry);
  });
  return names;
}

void LdapSession::ReadPortions(LdapIndex* book) {
  if (connection_->IsGone()) return;
  for (auto portions = book->TakePortions(); !portions.empty(); portions = book->TakePortions()) {
    for (const auto& [dn, attribute] : portions) {
      const LdapQuery query{dn, LdapScope::kEntry, "(objectClass=*)", {attribute}};
      const LdapResult result = connection_->Search(query, [book](const LdapEntry& entry) {
        book->AddMembers(entry);
        return true;
      });
      if (result.end == LdapEnd::kDone) continue;
      book->AddProblem(dn + ": " + result.text);
      if (result.end == LdapEnd::kGone) return;
    }
  }
}

// Members that are not below the base, and the members of lists among them, and so on.
void LdapSession::ReadOutsideMembers(bool base_is_complete, LdapIndex* book) {
  LdapQuery query;
  query.filter = WantedFilter();
  query.attributes = LdapIndex::Attributes();
  std::unordered_set<std::string> asked;
  while (!connection_->IsGone()) {
    std::vector<std::string> names = book->UnknownMembers(base_is_complete);
    std::erase_if(names, [&](const std::string& name) { return !asked.insert(name).second; });
    if (names.empty()) return;
    if (asked.size() > kMostOutsideMembers) {
      book->AddProblem("Too many members of lists lie outside the directory's base");
      return;
    }
    const LdapResult result = connection_->ReadEntries(
        names, query, [book](const LdapEntry& entry) { return book->Add(entry); });
    if (result.end != LdapEnd::kDone) book->AddProblem("Members of lists: " + result.text);
  }
}

std::string LdapSession::WantedFilter() const {
  const std::string& own = profile_.filter;
  return "(|(&" + (own.empty() || own.starts_with('(') ? own : "(" + own + ")") + "(mobile=*)" +
         kPeople + ")" + kLists + kContainers + ")";
}

}  // namespace orvalo::platform
