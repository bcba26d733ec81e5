#include "contacts/external_address_book.h"

#include "app/settings.h"

namespace orvalo {

AddressBookKind ExternalAddressBook::Chosen() const {
  return settings_.Flag(FlagSetting::kMapiAddressBook) ? AddressBookKind::kMapi
                                                       : AddressBookKind::kWab;
}

bool ExternalAddressBook::WouldLoad(bool force) const {
  return source_ != nullptr && (force || !loaded_ || in_memory_ != Chosen());
}

std::vector<std::string> ExternalAddressBook::Problems() const {
  return source_ == nullptr ? std::vector<std::string>() : source_->Problems();
}

void ExternalAddressBook::LoadExternalAddressBook(bool force) {
  if (!WouldLoad(force)) return;
  const AddressBookKind kind = Chosen();
  tree_.Clear();
  bool read = false;
  try {
    read = source_->Walk(kind, tree_);
  } catch (...) {
    tree_.PruneAndChain();
    throw;
  }
  tree_.PruneAndChain();
  if (!read) return;
  loaded_ = true;
  in_memory_ = kind;
}

}  // namespace orvalo
