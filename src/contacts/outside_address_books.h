#pragma once
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "contacts/external_address_book.h"
#include "platform/ldap_profile.h"

namespace orvalo {

class AppSettings;
class Log;
class Texts;

namespace platform {
class AddressBook;
class LdapSession;
class MessageBoxes;
}  // namespace platform

// The address books outside the program on this machine: in the place of MAPI an LDAP directory,
// in that of the Windows Address Book a folder of vCard files. docs/address-books.md is its manual.
//
// The settings Outlook_Name (an LDAP address or the name of a profile) and Outlook_Password say
// whom to log on as; after a logon Outlook_Name is the profile in use. The session lasts until
// CloseAddressBookSession, or until the settings, or the profile's file, say something else. Owned
// by start-up, main thread.
class OutsideAddressBooks : public AddressBookSource {
 public:
  // Where the platform keeps things, in the order of precedence.
  struct Places {
    std::vector<std::string> profile_files;
    std::vector<std::string> vcard_folders;
  };
  static Places PlacesOf(const std::string& data_folder);

  // `log` may be null.
  OutsideAddressBooks(AppSettings& settings, const Texts& texts, platform::MessageBoxes& boxes,
                      Log* log, Places places);
  ~OutsideAddressBooks() override;

  bool Walk(AddressBookKind kind, AddressTree& tree) override;
  const std::vector<std::string>& Problems() const override { return problems_; }

  // Logs the LDAP session off, if there is one.
  void CloseAddressBookSession();

  // Which mail client answers for the address book. Nobody routes such calls here: does nothing.
  static void EnsureMapiRouting(bool /*force*/) {}

 private:
  bool WalkDirectory(AddressTree& tree);
  bool WalkFolder(AddressTree& tree);
  void WalkBook(platform::AddressBook& book, AddressTree& tree);
  void LogOn();
  void TryProfile(const platform::LdapProfile& profile, const std::string& password, bool* refused);
  void AddProblem(std::string problem);
  void ShowCannotOpen(int text_id);

  AppSettings& settings_;
  const Texts& texts_;
  platform::MessageBoxes& boxes_;
  Log* log_;
  Places places_;
  std::vector<std::string> problems_;  // of the last walk
  std::unique_ptr<platform::LdapSession> session_;
  std::optional<platform::LdapProfile> session_profile_;  // these two as they were set, or stood
  std::string session_password_;                          // in their file, when it began
};

}  // namespace orvalo
