#pragma once
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvalo::platform {

// How to reach a directory, and what of it is the address book.
struct LdapProfile {
  std::string name;         // as the operator knows it: the profile's name, or the whole address
  std::string server;       // "ldap://host:389", "ldaps://host:636" or "ldapi://%2fpath"
  std::string base;         // the entry below which everything lies; empty: the server is asked
  std::string bind_name;    // whom to log on as; empty: nobody in particular
  std::string filter;       // which people are wanted, as an LDAP filter; empty: all
  std::string authorities;  // a file of certificates to trust instead of the system's; may be empty
  // StartTLS on an "ldap://" server. Unsaid: when a password is to be sent to another machine.
  std::optional<bool> start_tls;
  int timeout_s = 15;       // for the connection and for each answer
  int time_limit_s = 120;   // for the whole address book
  bool is_address = false;  // typed as an address, not taken from a file

  bool NeedsStartTls(bool has_password) const;
  bool operator==(const LdapProfile& other) const = default;
};

// The profile that an LDAP address (RFC 4516) spells out:
//   ldap://host[:port]/base??? filter ?extensions, the extensions (separated by commas) being
//   "bindname=" with a name whose special characters are written %xx, and "StartTLS".
// Nothing when it is none; `problem` then says why.
std::optional<LdapProfile> ParseLdapAddress(std::string_view address, std::string* problem);

// The address with another base.
std::string AddressWithBase(const std::string& address, const std::string& base);

// The profiles that are written down in files: sections "[name]" with "key = value" lines, as
// docs/address-books.md describes. Read anew at every call; of several files the earlier counts.
// One that stands there and cannot be read might say anything: there are no profiles then.
class LdapProfiles {
 public:
  explicit LdapProfiles(std::vector<std::string> files) : files_(std::move(files)) {}

  // By an address, or by name without regard to case. Nothing when there is none, or none that can
  // be used; `problem` then says why.
  std::optional<LdapProfile> Find(std::string_view name, std::string* problem) const;
  // The first profile that says "default = yes", else the first of all.
  std::optional<LdapProfile> Default(std::string* problem) const;

 private:
  struct Section;
  std::optional<std::vector<Section>> Sections(std::string* problem) const;

  std::vector<std::string> files_;
};

}  // namespace orvalo::platform
