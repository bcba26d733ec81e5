#pragma once
#include <memory>
#include <string>

#include "platform/address_book.h"
#include "platform/ldap_connection.h"
#include "platform/ldap_index.h"
#include "platform/ldap_profile.h"

namespace orvalo::platform {

// A directory server that somebody has logged on to, and through it the directory as an address
// book: organizational units and other containers as containers, people (inetOrgPerson, user,
// person) with a mobile number as mail users, groups (groupOfNames, groupOfUniqueNames, group) as
// distribution lists. One thread.
class LdapSession {
 public:
  // Null when the server cannot be used; `failure` then says why: kRefused means that it knows the
  // name not or not with this password.
  static std::unique_ptr<LdapSession> LogOn(LdapProfile profile, const std::string& password,
                                            LdapResult* failure);

  // The profile in use, with the base that was found: in its address as well, if it is one.
  const LdapProfile& Profile() const { return profile_; }

  // Reads the whole directory below the base, once again if the server has closed an idle
  // connection meanwhile. Null when the base cannot be read; `problem` then says why. What cannot
  // be read besides is missing from the book, which knows (Problems).
  std::unique_ptr<AddressBook> OpenAddressBook(std::string* problem);

 private:
  LdapSession(LdapProfile profile, std::string password)
      : profile_(std::move(profile)), password_(std::move(password)) {}

  LdapResult Connect();
  void FindBase();
  LdapResult ReadBase(LdapIndex* book);
  bool ReadBelow(const std::string& base, int level, LdapIndex* book);
  LdapResult ReadPart(const std::string& base, LdapScope scope, const std::string& filter,
                      LdapIndex* book);
  std::vector<std::string> ContainersIn(const std::string& base, LdapIndex* book);
  void ReadPortions(LdapIndex* book);
  void ReadOutsideMembers(bool base_is_complete, LdapIndex* book);
  std::string WantedFilter() const;

  LdapProfile profile_;
  std::string password_;
  std::unique_ptr<LdapConnection> connection_;
};

}  // namespace orvalo::platform
