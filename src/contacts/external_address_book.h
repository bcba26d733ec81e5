#pragma once
#include <string>
#include <vector>

#include "contacts/address_tree.h"

namespace orvalo {

class AppSettings;

// Which external address book; the setting MAPI_AddressBook chooses.
enum class AddressBookKind { kMapi, kWab };

// Where external entries come from: the address books of the machine, as the platform reaches them.
// Main thread.
class AddressBookSource {
 public:
  virtual ~AddressBookSource() = default;
  // Adds what it finds below the tree's root, in the order read. False when there was nothing to
  // read from (the source has told the operator what is worth telling); what was read stays. May
  // throw: the caller then reports that the search failed.
  virtual bool Walk(AddressBookKind kind, AddressTree& tree) = 0;
  // What the last walk could not read, in words, for logs and terminals.
  virtual const std::vector<std::string>& Problems() const {
    static const std::vector<std::string> none;
    return none;
  }
};

// The external address book of the process: its tree, and when to read it anew. Owned by start-up;
// main thread. Without a source there is nothing to load and the tree is its root.
class ExternalAddressBook {
 public:
  // `source` may be null.
  ExternalAddressBook(const AppSettings& settings, AddressBookSource* source)
      : settings_(settings), source_(source) {}

  // Reads the chosen address book unless it is in memory already; `force` reads it in any case.
  // The choices of the entries are gone afterwards. Throws what the source throws: the tree then
  // holds what was read before.
  void LoadExternalAddressBook(bool force);

  // Whether LoadExternalAddressBook would read now.
  bool WouldLoad(bool force) const;
  // Whether a load has succeeded since the program started.
  bool IsLoaded() const { return loaded_; }

  // What the last load could not read, in words; for terminals.
  std::vector<std::string> Problems() const;

  AddressTree& tree() { return tree_; }
  const AddressTree& tree() const { return tree_; }

 private:
  AddressBookKind Chosen() const;

  const AppSettings& settings_;
  AddressBookSource* source_;
  AddressTree tree_;
  bool loaded_ = false;
  AddressBookKind in_memory_ = AddressBookKind::kWab;  // once loaded
};

}  // namespace orvalo
