#pragma once
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/ldap_profile.h"

struct ldap;
struct ldapmsg;

namespace orvalo::platform {

// An entry as it came from the server. The views live as long as the call that hands it over.
struct LdapEntry {
  struct Attribute {
    std::string_view name;  // with its options: "member;range=0-1499"
    std::vector<std::string_view> values;
  };
  std::string_view dn;
  std::vector<Attribute> attributes;
};

class LdapSocketLimits;

// How a request ended.
enum class LdapEnd {
  kDone,
  kNoSuchEntry,
  kLimited,  // the server gives no more than what came: too much, too many, too long
  kRefused,  // any other answer of the server
  kStopped,  // by whoever takes the entries
  kGone,     // no connection, no answer in time, or nothing that is LDAP
};

struct LdapResult {
  LdapEnd end = LdapEnd::kDone;
  std::string text;  // what went wrong, in words; never a secret
};

enum class LdapScope { kEntry, kChildren, kSubtree };

struct LdapQuery {
  std::string base;
  LdapScope scope = LdapScope::kEntry;
  std::string filter = "(objectClass=*)";
  std::vector<std::string> attributes;
};

// One connection to a directory server: LDAP version 3, certificates always checked, referrals and
// aliases not followed. Nothing waits longer than the profile allows. One thread.
class LdapConnection {
 public:
  // Takes an entry; false ends the search.
  using Taker = std::function<bool(const LdapEntry&)>;

  // Does not connect yet.
  explicit LdapConnection(const LdapProfile& profile);
  ~LdapConnection();
  LdapConnection(const LdapConnection&) = delete;
  LdapConnection& operator=(const LdapConnection&) = delete;

  // Connects, encrypts where the profile wants it, and binds: as the profile's name when there is
  // one and the password is not empty, else as nobody. Once.
  LdapResult LogOn(const std::string& password);

  // From now on requests end with kGone when this time has passed.
  void SetTimeLimit(std::chrono::seconds limit);

  // Whether a request has ended with kGone: all that come after it will, too.
  bool IsGone() const { return gone_; }

  // The entries in the order in which they come, in pages where the server can do so.
  LdapResult Search(const LdapQuery& query, const Taker& take);

  // The entries of these names (LdapQuery::attributes of `query`; its base and scope do not count),
  // many requests under way at a time. Names that there are not are passed over. `take` answering
  // false ends it.
  LdapResult ReadEntries(const std::vector<std::string>& names, const LdapQuery& query,
                         const Taker& take);

 private:
  struct FreeMessage {
    void operator()(ldapmsg* message) const;
  };
  using Message = std::unique_ptr<ldapmsg, FreeMessage>;

  void SetOptions();
  bool SetUpTls();
  LdapResult Start(const LdapQuery& query, const std::string* cookie, int* request);
  // The next message of a request (of any, for -1); none when `result` says why.
  Message Next(int request, LdapResult* result);
  bool Take(ldapmsg* message, const Taker& take);
  LdapResult Finish(ldapmsg* message, std::string* cookie);
  LdapResult Outcome(int code);
  LdapResult Gone(std::string text);

  ldap* handle_ = nullptr;
  std::string bind_name_;
  bool start_tls_if_secret_;
  bool start_tls_always_;
  bool tls_from_start_;
  std::string authorities_;
  std::chrono::seconds answer_time_;
  std::unique_ptr<LdapSocketLimits> limits_;  // outlives the handle
  bool gone_ = false;
  LdapEntry entry_;  // kept for its storage
};

}  // namespace orvalo::platform
