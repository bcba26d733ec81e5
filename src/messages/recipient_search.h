#pragma once
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "contacts/address_tree.h"

namespace orvalo {

class AppSettings;
class ExternalAddressBook;
class RecipientTree;
class SmsDatabase;
struct ContactRow;

// The quick search of the recipient tree: through the program's contacts, then through the external
// address book, then from the start again. Main thread.
class RecipientSearch {
 public:
  static constexpr std::size_t kSearchLength = 50;  // characters of the search field

  RecipientSearch(SmsDatabase& database, ExternalAddressBook& external, const AppSettings& settings,
                  RecipientTree& tree)
      : database_(database), external_(external), settings_(settings), tree_(tree) {}

  // The text to look for, in any case; a change makes the next search start over.
  void SetText(std::string_view text);

  // Shows the next contact or entry that matches and that the tree has a place for. False when a
  // whole round has found none. May read the external address book.
  bool FindNext();

 private:
  void Restart();
  bool FindInContacts(const std::vector<ContactRow>& contacts);
  bool FindInExternal();
  void LoadExternalIfWorthwhile();
  bool Matches(std::string_view text) const;

  SmsDatabase& database_;
  ExternalAddressBook& external_;
  const AppSettings& settings_;
  RecipientTree& tree_;
  std::string needle_;             // lower case
  std::int32_t last_contact_ = 0;  // contacts up to this one have been tried
  std::size_t tried_entries_ = 0;  // so many of the external chain have been tried
};

}  // namespace orvalo
